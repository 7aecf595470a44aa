#pragma once

#include <qltkit/Capture/OutputFile.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/ReportTap.h>

#include <atomic>
#include <cstddef>
#include <string>

namespace qltkit
{

/// Writes every report that a ReportTap shows it into a recording, as LoadRecording reads it. Each
/// report goes to the system at once, so a recorder that is killed loses none before it; the file
/// has a temporary name until Close, see OutputFile. A slow disk delays the tracker: use a
/// CaptureWriter where that matters.
///
/// Reports and Failed are for any thread. Call Close when the tracker has stopped.
class QLTKIT_API ReportRecorder final : public ReportSink
{
public:
    /// Error when the file cannot be created.
    explicit ReportRecorder(const std::string& path);
    ~ReportRecorder() override;

    void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) override;

    /// Does nothing: a recording holds reports only.
    void OnLost(std::int64_t hostNs) override;

    /// How many reports the system has taken.
    std::size_t Reports() const { return mReports; }

    /// Whether a report could not be written, for example on a full disk. Later reports are left
    /// out.
    bool Failed() const { return mFailed; }

    /// Completes the file. Error when a report could not be written.
    void Close();

private:
    OutputFile mFile;
    std::atomic<std::size_t> mReports{0};
    std::atomic<bool> mFailed{false};
};

} // namespace qltkit
