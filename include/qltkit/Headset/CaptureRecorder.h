#pragma once

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/ReportTap.h>

#include <atomic>

namespace qltkit
{

/// Writes the reports of a ReportTap into a capture, together with the events of the connection.
/// The event "connected" comes before the first report, and before the first report after a loss.
/// The event "lost" comes at each loss. It never delays the tracker.
///
///     qltkit::CaptureWriter writer("walk.mcap");
///     qltkit::CaptureRecorder recorder(writer);
///     qltkit::ReportTap tap(host, clock, recorder);
///
/// The tap calls OnReport and OnLost on its thread.
class QLTKIT_API CaptureRecorder final : public ReportSink
{
public:
    /// Records into `writer`, which must outlive this. The writer and the tap should use the same
    /// clock.
    explicit CaptureRecorder(CaptureWriter& writer)
        : mWriter(writer)
    {
    }

    ~CaptureRecorder() override;

    /// Adds the report, after the event "connected" where it is due. `hostNs` is in nanoseconds.
    void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) override;

    /// Adds the event "lost", unless the connection was already lost or Close has been called.
    void OnLost(std::int64_t hostNs) override;

    /// After this call losses are ignored, because the caller itself ends the reads. Any thread.
    void Close() { mClosed = true; }

private:
    CaptureWriter& mWriter;
    std::atomic<bool> mClosed{false};
    bool mIsConnected = false;
};

} // namespace qltkit
