#pragma once

#include <qlt/Sensors/TrackerListener.h>
#include <qltkit/Headset/ReportTap.h>
#include <qltkit/Tracking/Calibration.h>
#include <qltkit/Tracking/HeadTracker.h>
#include <qltkit/Tracking/OrientationEstimator.h>
#include <qltkit/Tracking/Predictor.h>

#include "Tracking/EventLine.h"
#include "Tracking/PoseHistory.h"
#include "Tracking/ReportTimer.h"

#include <atomic>

namespace qltkit
{

/// Makes poses and events from the reports of the headset.
///
/// Threads: one thread, which reads the reports, unless an operation says otherwise.
class PoseWriter final : public ReportSink, public qlt::TrackerListener
{
public:
    /// `history` and `events` must outlive this object. Throws Error when the calibration in
    /// `options` cannot be used.
    PoseWriter(const HeadTrackerOptions& options, PoseHistory& history, EventLine& events)
        : mFilter(options.filter)
        , mSink(options.sink)
        , mCalibration(CalibrationOf(options))
        , mHistory(history)
        , mEvents(events)
    {
    }

    void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) override;
    void OnLost(std::int64_t hostNs) override;

    /// The core raises these events for each report after OnReport has returned.
    void OnGyroscopeEvent(const qlt::Vec3& angularVelocity, float time) override;
    void OnOrientationEvent(const qlt::Quaternion& orientation, float time) override;

    /// The errors of predictions over all reports, and over the last seconds. Any thread.
    PredictionErrors GetErrors() const { return ReadErrors().all; }
    PredictionErrors GetRecentErrors() const { return ReadErrors().recent; }

    /// After this call the tracker itself makes reads fail, so OnLost ignores them. Any thread.
    void Close() { mClosed = true; }

private:
    enum class Link
    {
        New,
        Up,
        Down,
    };

    struct Errors
    {
        PredictionErrors all;
        PredictionErrors recent;
    };

    static Calibration CalibrationOf(const HeadTrackerOptions& options);
    Errors ReadErrors() const;
    void Publish(const qlt::Quaternion& orientation, const qlt::Vec3& rate);
    bool Follow(std::uint32_t sequence, std::uint32_t deviceUs, std::int64_t hostNs);

    const PoseFilter mFilter;
    ReportSink* const mSink;
    const Calibration mCalibration; // corrects nothing without a file
    PoseHistory& mHistory;
    EventLine& mEvents;
    std::atomic<bool> mClosed{false};
    ReportTimer mTimer;
    Link mLink = Link::New;
    std::uint32_t mDeviceUs = 0; // the device time of the last report
    bool mFresh = false;         // the last report did not repeat the one before
    qlt::Vec3 mCoreRate;         // the rate of the last report
    PoseRecord mRecord;          // the record of the last report
    OrientationEstimator mEstimator;
    Predictor mPredictor;
    SeqlockRing<Errors, 4> mErrors;
};

} // namespace qltkit
