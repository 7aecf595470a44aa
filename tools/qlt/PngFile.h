// Pictures as PNG files.
#pragma once

#include <string>
#include <vector>

/// Pixels of so many channels, a byte each: 1 grey, 3 red, green and blue. The first row is the
/// upper one. std::runtime_error when the file cannot be written.
void WritePng(const std::string& path, int width, int height, int channels,
              const std::vector<unsigned char>& pixels);
