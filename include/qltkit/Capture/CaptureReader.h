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

/// A fault that the reader has found in the file.
struct CaptureProblem
{
    std::uint64_t offset = 0; // the first damaged or missing byte, as far as it is known
    std::string text;         // a sentence with the offset
};

/// Reads captures and other uncompressed MCAP files that contain reports. It gives one item after
/// another, in the order of the file. It needs little memory, even for large or forged files.
///
/// A truncated file is read up to its last whole record. A damaged byte costs the chunk that
/// contains it, which is at most one second of the capture. Problems reports both after the reader
/// has reached them.
///
/// One thread at a time.
class QLTKIT_API CaptureReader
{
public:
    /// Opens the file and reads up to the first item, so Metadata already has the records before
    /// that item. Throws Error when the file cannot be read, when it is empty or no MCAP file, and
    /// when it begins with a compressed chunk.
    explicit CaptureReader(const std::filesystem::path& path);
    ~CaptureReader();

    CaptureReader(const CaptureReader&) = delete;
    CaptureReader& operator=(const CaptureReader&) = delete;

    /// Reads the next item. Returns false at the end. The views of the item are valid until the
    /// next call. Throws Error when the file cannot be read, and when the next chunk is compressed.
    bool Next(CaptureItem& item);

    /// The metadata records so far by name. A later record replaces an earlier one of the same
    /// name. The record "capture" contains the metadata that its writer got, the versions, the
    /// system and the relation of the clocks.
    const std::map<std::string, std::map<std::string, std::string>>& Metadata() const noexcept;

    /// Problems returns the first hundred faults found so far, and ProblemCount returns their total
    /// number. If there is none after the last item, every checksum of the file is correct.
    const std::vector<CaptureProblem>& Problems() const noexcept;
    std::size_t ProblemCount() const noexcept;

    /// The size of the file and the current position in bytes, for a progress bar.
    std::uint64_t Size() const noexcept;
    std::uint64_t Position() const noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
