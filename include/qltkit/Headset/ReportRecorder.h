#pragma once

#include <qltkit/Capture/OutputFile.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/ReportTap.h>

#include <atomic>
#include <cstddef>
#include <string>

namespace qltkit
{

/// Writes every report that a ReportTap shows it into a recording, as LoadRecording reads it.
///
///     qltkit::ReportRecorder recorder("walk.bin");
///     qltkit::ReportTap tap(qlt::UsbHost::System(), qlt::Clock::System(), recorder);
///     qlt::Hmd hmd(tap);
///
/// Each report goes to the system at once, so a recorder that is killed loses none before it. The
/// file has a temporary name until Close; see OutputFile. A slow disk delays the tracker: use a
/// CaptureWriter where that matters.
///
/// Any thread may call Reports and Failed. Call Close when the tracker has stopped.
class QLTKIT_API ReportRecorder final : public ReportSink
{
public:
    /// Creates the file. Throws Error when it cannot be created.
    explicit ReportRecorder(const std::string& path);

    /// Discards a file that was not closed.
    ~ReportRecorder() override;

    /// Writes the report. The tap calls it on the thread that reads.
    void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) override;

    /// Does nothing: a recording contains reports only.
    void OnLost(std::int64_t hostNs) override;

    /// The number of reports that the system has taken.
    std::size_t Reports() const { return mReports; }

    /// True when a report could not be written, for example on a full disk. Later reports are left
    /// out.
    bool Failed() const { return mFailed; }

    /// Completes the file. Throws Error when a report could not be written. A second call does
    /// nothing.
    void Close();

private:
    OutputFile mFile;
    std::atomic<std::size_t> mReports{0};
    std::atomic<bool> mFailed{false};
};

} // namespace qltkit
