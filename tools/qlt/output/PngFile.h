// Pictures as PNG files.
#pragma once

#include <vector>

class OutputFile;

/// Pixels of so many channels, a byte each: 1 grey, 3 red, green and blue. The first row is the
/// upper one. Completes the file; std::runtime_error when it cannot be written.
void WritePng(OutputFile& file, int width, int height, int channels,
              const std::vector<unsigned char>& pixels);
