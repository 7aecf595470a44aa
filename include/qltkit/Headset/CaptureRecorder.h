#pragma once

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/ReportTap.h>

#include <atomic>

namespace qltkit
{

/// Writes what a ReportTap shows it into a capture: every report, and the events of the connection.
/// "connected" stands before the first report and before the first report after a loss, and "lost"
/// stands at each loss. It never delays the tracker.
///
/// The tap calls OnReport and OnLost on its thread.
class QLTKIT_API CaptureRecorder final : public ReportSink
{
public:
    /// The writer must outlive this. Its clock should be the clock of the tap.
    explicit CaptureRecorder(CaptureWriter& writer)
        : mWriter(writer)
    {
    }

    ~CaptureRecorder() override;

    void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) override;
    void OnLost(std::int64_t hostNs) override;

    /// After this call losses are ignored, because the caller itself ends the reads. Any thread.
    void Close() { mClosed = true; }

private:
    CaptureWriter& mWriter;
    std::atomic<bool> mClosed{false};
    bool mIsConnected = false;
};

} // namespace qltkit
