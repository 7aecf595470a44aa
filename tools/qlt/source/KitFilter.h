// The kit's estimator as a filter for the reports of a tracker.
#pragma once

#include <qlt/Math/Quaternion.h>
#include <qltkit/Headset/ReportTap.h>
#include <qltkit/Tracking/OrientationEstimator.h>

/// Only the thread that reads the reports uses an object.
class KitFilter final : public qltkit::ReportSink
{
public:
    void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) override;
    void OnLost(std::int64_t) override {}

    /// Returns the orientation after the last report, with the heading that ResetYaw has chosen.
    qlt::Quaternion Orientation() const;

    /// Makes the current heading the forward direction.
    void ResetYaw();

private:
    qltkit::OrientationEstimator mEstimator;
    qltkit::Rotation mForward; // turns the world about its vertical
};
