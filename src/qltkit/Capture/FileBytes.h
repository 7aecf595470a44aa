#pragma once

#include "Capture/Crc32.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace qltkit
{

/// The path in UTF-8, for messages.
std::string TextOf(const std::filesystem::path& path);

/// Reads bytes of a file at any offset. The file may be larger than the memory. One thread at a
/// time.
class FileBytes
{
public:
    /// Throws Error when the file cannot be opened.
    explicit FileBytes(const std::filesystem::path& path);

    /// The size when the file was opened. Bytes that a writer adds later are not read.
    std::uint64_t Size() const { return mSize; }

    const std::string& Name() const { return mName; }

    /// Replaces `bytes` with `count` bytes from `offset`. They must be inside the file. Throws
    /// Error when they cannot be read.
    void Read(std::uint64_t offset, std::uint64_t count, std::string& bytes);

    /// Adds the bytes from `begin` to `end` to `crc`.
    void AddTo(Crc32& crc, std::uint64_t begin, std::uint64_t end);

    /// The bytes from `offset` to the end of the block in memory. There is at least one. The view
    /// is valid until the next call.
    std::string_view Block(std::uint64_t offset);

private:
    void ReadFile(std::uint64_t offset, std::uint64_t count, std::string& bytes);

    std::string mName;
    std::ifstream mFile;
    std::uint64_t mSize = 0;
    std::string mBlock;
    std::uint64_t mBlockOffset = 0;
};

} // namespace qltkit
