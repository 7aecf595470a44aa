// Writes PNG files.
#pragma once

#include <vector>

class OutputFile;

/// Writes a picture and completes the file. `channels` is 1 for grey and 3 for red, green and blue,
/// with one byte each. The first row is the top row. Throws std::runtime_error when the file cannot
/// be written.
void WritePng(OutputFile& file, int width, int height, int channels,
              const std::vector<unsigned char>& pixels);
