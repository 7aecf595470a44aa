#include "source/KitFilter.h"

#include <qltkit/Tracking/ImuSample.h>

#include <cmath>

void KitFilter::OnReport(const qlt::SensorReport& report, std::int64_t)
{
    mEstimator.Add(qltkit::ReadImuSample(report));
}

qlt::Quaternion KitFilter::Orientation() const
{
    const qltkit::Rotation q = mForward * mEstimator.GetOrientation();
    return {static_cast<float>(q.w), static_cast<float>(q.x), static_cast<float>(q.y),
            static_cast<float>(q.z)};
}

void KitFilter::ResetYaw()
{
    // Use the axis through the ears, because it has a heading even when the head looks straight up.
    const qltkit::Vector3 right = qltkit::Rotate(mEstimator.GetOrientation(), {1.0, 0.0, 0.0});
    mForward = qltkit::RotationBy({0.0, std::atan2(right.z, right.x), 0.0});
}
