// The file that a command records reports into.
#pragma once

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Headset/ReportTap.h>

#include <cstdint>
#include <memory>
#include <string>

/// Takes the reports of a tap. Close completes the file; without Close, no file stays.
class ReportFile
{
public:
    virtual ~ReportFile() = default;

    virtual qltkit::ReportSink& Sink() = 0;

    /// How many reports the file has taken. Any thread.
    virtual std::uint64_t Reports() const = 0;

    /// Whether a write has failed for good, so that recording on makes no sense. Any thread.
    virtual bool HasFailed() const = 0;

    /// Why the system takes no data at present, although it may do so later. Any thread.
    virtual std::string Trouble() const { return {}; }

    /// The tracker is about to stop, so its last read may fail.
    virtual void EndReads() {}

    /// Completes the file and returns a sentence that describes it. Throws std::runtime_error when
    /// data could not be written.
    virtual std::string Close() = 0;

    /// The capture, for events, texts and frames. Null for a file of nothing but reports.
    virtual qltkit::CaptureWriter* Capture() { return nullptr; }
};

/// Returns a sentence that refuses the name, unless it ends in .mcap (a capture) or .bin (nothing
/// but reports).
std::string RefuseReportFile(const std::string& path);

/// Creates the file. Throws std::runtime_error when it cannot be created.
std::unique_ptr<ReportFile> CreateReportFile(const std::string& path,
                                             const qltkit::CaptureOptions& options);
