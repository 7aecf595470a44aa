// Writes a capture: an MCAP file with what a headset sent, when, and what happened meanwhile.
//
// Adding never waits: not for the disk, not for a lock, not for the system. A ring takes the
// reports, a list takes everything else, and a thread of the writer's own writes both down. What
// finds the ring or the list full is left out, counted, and the capture says so.
//
// The file has a temporary name beside its own until Close ("walk.part.mcap" for "walk.mcap"). Each
// second all of it goes to the system: what a killed process leaves is a capture that can be read,
// and lacks at most the last second. While the disk is full, the writer keeps what it has and tries
// again. A pipe or a device is written under its own name at once.
//
// Any thread may add at any time. Flush and Close are for one thread that may wait.
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

struct CaptureOptions
{
    /// Written into the capture as they are: where the reports come from, identifiers, versions.
    std::map<std::string, std::string> metadata;

    /// How many reports the ring holds, at least; 32 seconds of a headset's.
    std::size_t ringReports = 32768;

    /// How many bytes of events, texts and frames may wait to be written.
    std::size_t waitingBytes = std::size_t{64} << 20;

    /// Gives the host times. Must outlive the writer.
    qlt::Clock* clock = &qlt::Clock::System();

    /// The Unix time, nanoseconds, of the clock at the writer's construction; the system's if not
    /// given. Later steps of the system's time do not show in a capture.
    std::optional<std::uint64_t> wallTimeNs;
};

class QLTKIT_API CaptureWriter
{
public:
    /// Replaces a file of that name, at Close. Error when none can be created there.
    explicit CaptureWriter(const std::filesystem::path& path, const CaptureOptions& options = {});

    /// Closes. A failure is not told: call Close.
    ~CaptureWriter();

    CaptureWriter(const CaptureWriter&) = delete;
    CaptureWriter& operator=(const CaptureWriter&) = delete;

    /// Adds the 64 bytes of a report that has just been read, or was read at `hostTimeNs` of the
    /// clock. Neither allocates nor calls the system.
    void AddReport(const std::uint8_t* report) noexcept;
    void AddReport(const std::uint8_t* report, std::int64_t hostTimeNs) noexcept;

    /// Adds an event ("connected", "lost", "resync"), which stands behind the reports that the same
    /// thread has added. After "connected" the publish times start anew from the log time.
    void AddEvent(std::string_view name, std::string_view detail = {}) noexcept;
    void AddEvent(std::string_view name, std::string_view detail, std::int64_t hostTimeNs) noexcept;

    /// Adds a line that the library has printed.
    void AddText(CaptureLevel level, std::string_view text) noexcept;
    void AddText(CaptureLevel level, std::string_view text, std::int64_t hostTimeNs) noexcept;

    /// Adds a copy of a frame. Error when its pixels are not step * height bytes, or more than 4
    /// MiB.
    void AddFrame(const CaptureFrame& frame);
    void AddFrame(const CaptureFrame& frame, std::int64_t hostTimeNs);

    /// Hands all that has been added to the system; waits for it. False when the system did not
    /// take it, for now: Failure tells why.
    bool Flush();

    /// Writes the rest and the index, and gives the file its name. Error when not all could be
    /// written; the text says where the file is and what it lacks. What is added later is lost. A
    /// second call does nothing.
    void Close();

    /// Reports that the capture has taken, in the ring or on their way to the disk.
    std::uint64_t Reports() const noexcept;

    /// Reports that the system has taken.
    std::uint64_t WrittenReports() const noexcept;

    /// Reports, and events with texts and frames, that found no room.
    std::uint64_t DroppedReports() const noexcept;
    std::uint64_t DroppedOthers() const noexcept;

    /// Why the system does not take what is written; empty while it does.
    std::string Failure() const;

    /// Where the file is until Close.
    const std::filesystem::path& TemporaryPath() const noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
