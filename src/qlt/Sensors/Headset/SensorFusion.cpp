#include <qlt/Sensors/SensorFusion.h>

#include "Math/AxisRotation.h"
#include "Math/FloatMath.h"

#include <cfloat>

namespace qlt
{
namespace
{

/// The fraction of the tilt error that one step corrects.
constexpr float TILT_GAIN = -0.001f;

} // namespace

struct SensorFusion::State
{
    explicit State(Clock& source)
        : mLastTime(source.NowNs())
        , clock(source)
    {
    }

    Quaternion mQuaternion = Quaternion::Identity;
    Vec3 mLastAngularVelocity;
    std::int64_t mLastTime;
    Clock& clock;
};

SensorFusion::SensorFusion()
    : SensorFusion(Clock::System())
{
}

SensorFusion::SensorFusion(Clock& clock)
    : mState(std::make_unique<State>(clock))
{
}

SensorFusion::~SensorFusion() = default;

void SensorFusion::Fuse(const Vec3& accelerometer, const Vec3& gyroscope,
                        const Vec3& /*magnetometer*/, float /*dt*/)
{
    State& state = *mState;

    // Use the trapezoidal rule: the mean of two samples times the time between them.
    const Vec3 omega = (gyroscope + state.mLastAngularVelocity) / 2.0f;
    const std::int64_t now = state.clock.NowNs();
    const auto elapsed =
        static_cast<float>(static_cast<double>(now - state.mLastTime) / 1000000000.0);
    Quaternion predicted = state.mQuaternion * AxisRotation(elapsed * omega.Length(), omega);
    predicted.Normalize();

    // The tilt is the angle between the measured up vector and the world's. The axis is Y_AXIS x g.
    const Vec3 g = Quaternion::Rotate(predicted, accelerometer);
    const float tilt = Acos(g.Dot(Vec3::Y_AXIS) / g.Length());
    const Vec3 axis(g.z(), 0.0f, -g.x());
    state.mQuaternion = AxisRotation(tilt * TILT_GAIN, axis) * predicted;
    state.mQuaternion.Normalize();

    state.mLastAngularVelocity = gyroscope;
    state.mLastTime = now;
}

const Quaternion& SensorFusion::GetQuaternion() const { return mState->mQuaternion; }

Quaternion SensorFusion::GetPredictedQuaternion(float /*dt*/) const
{
    const State& state = *mState;
    const auto speed = static_cast<double>(state.mLastAngularVelocity.Length());
    Quaternion result = state.mQuaternion;
    // Do not write `speed <= FLT_EPSILON`, because a NaN speed must leave the orientation as it is.
    if (!(speed > static_cast<double>(FLT_EPSILON)))
    {
        return result;
    }
    const double ms = static_cast<double>(state.clock.NowNs() - state.mLastTime) / 1000000.0;
    const auto angle = static_cast<float>(ms / 1000.0 * speed);
    result = result * AxisRotation(angle, state.mLastAngularVelocity);
    result.Normalize();
    return result;
}

void SensorFusion::Reset() { mState->mQuaternion = Quaternion::Identity; }

} // namespace qlt
