// A file into which a command records reports.
#pragma once

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Headset/ReportTap.h>

#include <cstdint>
#include <memory>
#include <string>

/// Takes the reports of a tap. Close completes the file. Without Close, the file is removed.
class ReportFile
{
public:
    virtual ~ReportFile() = default;

    virtual qltkit::ReportSink& Sink() = 0;

    /// The number of reports that the file has taken. Any thread.
    virtual std::uint64_t Reports() const = 0;

    /// True when writing has failed permanently, so the recording should end. Any thread.
    virtual bool HasFailed() const = 0;

    /// The reason why the system takes no data at present. It may take data later. Any thread.
    virtual std::string Trouble() const { return {}; }

    /// Call it before the tracker stops, because its last read may fail.
    virtual void EndReads() {}

    /// Completes the file and returns a sentence that describes it. Throws std::runtime_error when
    /// data could not be written.
    virtual std::string Close() = 0;

    /// The capture, to add events, texts and frames. Null for a file that contains only reports.
    virtual qltkit::CaptureWriter* Capture() { return nullptr; }
};

/// True for the name of a capture.
bool IsCaptureName(const std::string& path);

/// Returns a sentence that refuses the name, unless it ends in .mcap (a capture) or .bin (only
/// reports).
std::string RefuseReportFile(const std::string& path);

/// Creates the file. Throws std::runtime_error when it cannot be created.
std::unique_ptr<ReportFile> CreateReportFile(const std::string& path,
                                             const qltkit::CaptureOptions& options);
