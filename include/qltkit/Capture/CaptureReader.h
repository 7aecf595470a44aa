// Reads captures and other uncompressed MCAP files with reports in them, one item after another, in
// the order of the file. It needs little memory, whatever the file's size or lengths in it say.
//
// A file that is cut off is read up to its last whole record. A damaged byte costs the chunk that
// it is in, at most a second of the capture. Problems tells of both, once reading has met them.
//
// One thread at a time.
#pragma once

#include <qltkit/Capture/CaptureItem.h>
#include <qltkit/Export.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <vector>

namespace qltkit
{

struct CaptureProblem
{
    std::uint64_t offset = 0; // of the first byte that is damaged or missing, as far as is known
    std::string text;         // a sentence with the offset
};

class QLTKIT_API CaptureReader
{
public:
    /// Reads to the first item, so that the metadata before it is known. Error when the file cannot
    /// be read, is empty or no MCAP file, or begins with a compressed chunk.
    explicit CaptureReader(const std::filesystem::path& path);
    ~CaptureReader();

    CaptureReader(const CaptureReader&) = delete;
    CaptureReader& operator=(const CaptureReader&) = delete;

    /// The next item; false at the end. Its views are valid until the next call. Error when the
    /// file cannot be read, or the next chunk is compressed.
    bool Next(CaptureItem& item);

    /// The metadata records so far, by name; later ones of a name replace earlier ones. "capture"
    /// has what its writer was given, the versions, the system and the mapping of the clocks.
    const std::map<std::string, std::map<std::string, std::string>>& Metadata() const noexcept;

    /// What has been found wrong so far, the first hundred; and how many there are. After the last
    /// item, none means that each checksum of the file is right.
    const std::vector<CaptureProblem>& Problems() const noexcept;
    std::size_t ProblemCount() const noexcept;

    /// For a progress bar, bytes.
    std::uint64_t Size() const noexcept;
    std::uint64_t Position() const noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
