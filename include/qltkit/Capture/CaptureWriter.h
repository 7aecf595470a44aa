#pragma once

#include <qltkit/Capture/CaptureItem.h>
#include <qltkit/Export.h>

#include <qlt/Runtime/Clock.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>

namespace qltkit
{

/// The options of a CaptureWriter.
struct CaptureOptions
{
    /// Text that the capture stores unchanged, for example the source of the reports, identifiers
    /// and versions.
    std::map<std::string, std::string> metadata;

    /// The smallest number of reports that the ring can hold. The ring has the next power of two
    /// and needs about 80 bytes for each report. The default is 32 seconds of a headset's reports.
    std::size_t ringReports = 32768;

    /// The largest number of bytes of events, texts and frames that may wait to be written.
    std::size_t waitingBytes = std::size_t{64} << 20;

    /// The clock of the host times. It must outlive the writer.
    qlt::Clock* clock = &qlt::Clock::System();

    /// The Unix time in nanoseconds at the construction of the writer. Without a value the writer
    /// takes the system's time. Later changes of the system's time do not affect the capture.
    std::optional<std::uint64_t> wallTimeNs;
};

/// Writes a capture: an MCAP file with the reports of a headset, their times, and the events, texts
/// and frames that came with them.
///
///     qltkit::CaptureOptions options;
///     options.metadata["source"] = "headset";
///     qltkit::CaptureWriter writer("walk.mcap", options);
///     writer.AddEvent("connected");
///     writer.AddReport(report.data()); // for each report, on the thread that reads it
///     writer.Close();                  // throws when something is missing
///
/// Adding never waits for the disk, for a lock or for the system. A ring takes the reports, a list
/// takes everything else, and a thread of the writer stores both in the file. When the ring or the
/// list is full, the item is dropped and counted, and the capture records the number.
///
/// Until Close the file has a temporary name in the same folder ("walk.part.mcap" for "walk.mcap").
/// The writer gives all data to the system each second. So a killed process leaves a readable
/// capture that lacks at most the last second. While the disk is full, the writer keeps its data
/// and tries again. A pipe or a device is written under its own name at once.
///
/// Any thread may add at any time, also several threads at once. One thread at a time may call
/// Flush and Close, which wait for the disk.
class QLTKIT_API CaptureWriter
{
public:
    /// Creates the temporary file and starts the thread of the writer. At Close the file replaces
    /// an existing file at `path`. Throws Error when the temporary file cannot be created or
    /// written and when `path` is a folder, and std::system_error when the system starts no thread.
    explicit CaptureWriter(const std::filesystem::path& path, const CaptureOptions& options = {});

    /// Closes the file as Close does, but reports no failure. To learn of a failure, call Close
    /// before the destruction.
    ~CaptureWriter();

    CaptureWriter(const CaptureWriter&) = delete;
    CaptureWriter& operator=(const CaptureWriter&) = delete;

    /// Adds the 64 bytes of a report with the clock's current time. The call does not allocate and
    /// makes no system call, except to read the clock.
    void AddReport(const std::uint8_t* report) noexcept;

    /// Adds the 64 bytes of a report that arrived at `hostTimeNs`, in nanoseconds of the clock.
    void AddReport(const std::uint8_t* report, std::int64_t hostTimeNs) noexcept;

    /// Adds an event ("connected", "lost", "resync") with the clock's current time. Both texts are
    /// UTF-8. The event stands after the reports that the same thread has added before. After
    /// "connected" the publish times restart from the log time.
    void AddEvent(std::string_view name, std::string_view detail = {}) noexcept;

    /// Adds an event of the time `hostTimeNs`, in nanoseconds of the clock.
    void AddEvent(std::string_view name, std::string_view detail, std::int64_t hostTimeNs) noexcept;

    /// Adds a line that the library has printed, with the clock's current time. A handler of
    /// qlt::SetLogHandler may call it.
    void AddText(CaptureLevel level, std::string_view text) noexcept;

    /// Adds a line of the time `hostTimeNs`, in nanoseconds of the clock.
    void AddText(CaptureLevel level, std::string_view text, std::int64_t hostTimeNs) noexcept;

    /// Adds a copy of a frame with the clock's current time. Throws Error when the size of the
    /// pixels is not step * height bytes, or when it exceeds 4 MiB.
    void AddFrame(const CaptureFrame& frame);

    /// Adds a copy of a frame of the time `hostTimeNs`, in nanoseconds of the clock. Throws as
    /// above.
    void AddFrame(const CaptureFrame& frame, std::int64_t hostTimeNs);

    /// Gives all added data to the system and waits until that is done. Returns false when the
    /// system does not take it at present; Failure then gives the reason. After Close it does
    /// nothing.
    bool Flush();

    /// Writes the remaining data and the index, and gives the file its final name. Throws Error
    /// when some data could not be written; the text says where the file is and which data it
    /// lacks. Data that is added later is lost. A second call does nothing.
    void Close();

    /// Ends the capture without a file: it removes the temporary file and keeps an existing file at
    /// the path. After Close it does nothing.
    void Discard();

    /// The number of reports that the capture has accepted. Some of them may not be on the disk
    /// yet.
    std::uint64_t Reports() const noexcept;

    /// The number of reports that the system has taken.
    std::uint64_t WrittenReports() const noexcept;

    /// The number of reports that were dropped because the ring was full.
    std::uint64_t DroppedReports() const noexcept;

    /// The number of events, texts and frames that were dropped because there was no room.
    std::uint64_t DroppedOthers() const noexcept;

    /// The reason why the system does not take data at present. Empty while it does. Any thread.
    std::string Failure() const;

    /// The path of the file until Close. For a pipe or a device it is the path of the constructor.
    const std::filesystem::path& TemporaryPath() const noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
