#include "output/PngFile.h"

#include "output/OutputFile.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

void WritePng(OutputFile& file, int width, int height, int channels,
              const std::vector<unsigned char>& pixels)
{
    const auto write = [](void* context, void* data, int size)
    {
        static_cast<OutputFile*>(context)->Write(
            std::string(static_cast<const char*>(data), static_cast<std::size_t>(size)));
    };
    stbi_write_png_to_func(write, &file, width, height, channels, pixels.data(), width * channels);
    file.Close();
}
