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

/// A fault that the reader has found in the file. The reader goes on after it.
struct CaptureProblem
{
    /// The position of the first damaged or missing byte in the file, as far as it is known.
    std::uint64_t offset = 0;

    /// A sentence with the position, without a full stop.
    std::string text;
};

/// Reads captures and other uncompressed MCAP files that contain reports. It gives one item after
/// another, in the order of the file. It needs little memory, even for large or forged files.
///
///     qltkit::CaptureReader reader("walk.mcap");
///     qltkit::CaptureItem item;
///     while (reader.Next(item))
///     {
///         if (item.kind == qltkit::CaptureItem::Kind::Report)
///         {
///             Use(item.report, item.hostTimeNs);
///         }
///     }
///     const bool isWhole = reader.ProblemCount() == 0;
///
/// A truncated file is read up to its last whole record. A damaged byte costs the chunk that
/// contains it, which is at most one second of the capture. Problems reports both after the reader
/// has reached them.
///
/// One thread at a time may use a reader.
class QLTKIT_API CaptureReader
{
public:
    /// Opens the file and reads up to the first item, so Metadata already has the records before
    /// that item. Throws Error when the file cannot be read, when it is empty or no MCAP file, and
    /// when it begins with a compressed chunk.
    explicit CaptureReader(const std::filesystem::path& path);

    /// Closes the file.
    ~CaptureReader();

    CaptureReader(const CaptureReader&) = delete;
    CaptureReader& operator=(const CaptureReader&) = delete;

    /// Reads the next item into `item`. Returns false at the end of the file. The views of the item
    /// are valid until the next call. Throws Error when the file cannot be read, and when the next
    /// chunk is compressed.
    bool Next(CaptureItem& item);

    /// The metadata records so far by name. A later record replaces an earlier one of the same
    /// name. The record "capture" contains the metadata that its writer got, the versions, the
    /// system and the relation of the clocks. At most 1 MiB of metadata is kept; more of it is a
    /// problem of the file.
    const std::map<std::string, std::map<std::string, std::string>>& Metadata() const noexcept;

    /// The first hundred faults found so far, in the order of discovery. If there is none after the
    /// last item, every checksum of the file is correct.
    const std::vector<CaptureProblem>& Problems() const noexcept;

    /// The number of all faults found so far, which may be larger than the size of Problems.
    std::size_t ProblemCount() const noexcept;

    /// The size of the file in bytes, for a progress bar.
    std::uint64_t Size() const noexcept;

    /// The current position in the file in bytes, for a progress bar.
    std::uint64_t Position() const noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
