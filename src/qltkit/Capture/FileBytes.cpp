#include "Capture/FileBytes.h"

#include <qltkit/Error.h>

#include <algorithm>

namespace qltkit
{

namespace
{

constexpr std::uint64_t BLOCK_SIZE = 64 * 1024;

} // namespace

std::string TextOf(const std::filesystem::path& path) { return path.u8string(); }

FileBytes::FileBytes(const std::filesystem::path& path)
    : mName(TextOf(path))
{
    // The stream gets no buffer, because every seek would discard its content.
    mFile.rdbuf()->pubsetbuf(nullptr, 0);
    mFile.open(path, std::ios::binary | std::ios::ate);
    const std::streamoff end = mFile.is_open() ? std::streamoff(mFile.tellg()) : -1;
    std::error_code ignored;
    if (end < 0 || !std::filesystem::is_regular_file(path, ignored))
    {
        throw Error("cannot read " + mName);
    }
    mSize = static_cast<std::uint64_t>(end);
}

void FileBytes::Read(std::uint64_t offset, std::uint64_t count, std::string& bytes)
{
    if (count >= BLOCK_SIZE)
    {
        ReadFile(offset, count, bytes);
        return;
    }
    bytes.clear();
    while (bytes.size() < count)
    {
        const std::string_view block = Block(offset + bytes.size());
        bytes += block.substr(0, static_cast<std::size_t>(count) - bytes.size());
    }
}

void FileBytes::AddTo(Crc32& crc, std::uint64_t begin, std::uint64_t end)
{
    while (begin < end)
    {
        const std::string_view block = Block(begin);
        const std::string_view part = block.substr(
            0, static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, block.size())));
        crc.Update(part);
        begin += part.size();
    }
}

std::string_view FileBytes::Block(std::uint64_t offset)
{
    if (offset < mBlockOffset || offset - mBlockOffset >= mBlock.size())
    {
        const std::uint64_t begin = offset / BLOCK_SIZE * BLOCK_SIZE;
        ReadFile(begin, std::min(BLOCK_SIZE, mSize - begin), mBlock);
        mBlockOffset = begin;
    }
    return std::string_view(mBlock).substr(static_cast<std::size_t>(offset - mBlockOffset));
}

void FileBytes::ReadFile(std::uint64_t offset, std::uint64_t count, std::string& bytes)
{
    bytes.resize(static_cast<std::size_t>(count));
    mFile.clear();
    mFile.seekg(static_cast<std::streamoff>(offset));
    mFile.read(bytes.data(), static_cast<std::streamsize>(count));
    if (mFile.gcount() != static_cast<std::streamsize>(count))
    {
        throw Error("cannot read " + mName + " at byte " + std::to_string(offset));
    }
}

} // namespace qltkit
