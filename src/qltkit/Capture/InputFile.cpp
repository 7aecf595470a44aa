#include <qltkit/Capture/InputFile.h>

#include <qltkit/Error.h>

#include "Capture/InputBlocks.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

namespace qltkit
{

namespace
{

[[noreturn]] void Fail(const std::string& path, const std::string& reason)
{
    throw Error("cannot read " + path + ": " + reason);
}

/// A device is refused, because reading it may never end and may change its state.
bool IsDevice(const std::string& path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_fifo(status) &&
           !fs::is_directory(status);
}

} // namespace

void ReadBlocks(const std::string& path, const std::function<void(std::string_view)>& take)
{
    std::error_code error;
    if (IsDevice(path))
    {
        Fail(path, "it is a device");
    }
    if (std::filesystem::is_directory(path, error))
    {
        Fail(path, "it is a folder");
    }
    const auto close = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"), close);
    if (file == nullptr)
    {
        Fail(path, std::generic_category().message(errno));
    }
    std::array<char, INPUT_BLOCK_SIZE> block{};
    for (std::size_t size = 1; size != 0;)
    {
        size = std::fread(block.data(), 1, block.size(), file.get());
        take({block.data(), size});
    }
    if (std::ferror(file.get()) != 0)
    {
        Fail(path, std::generic_category().message(errno));
    }
}

std::string ReadInput(const std::string& path)
{
    std::string bytes;
    ReadBlocks(path, [&bytes](std::string_view block) { bytes += block; });
    return bytes;
}

} // namespace qltkit
