#include "Tracking/StateCheck.h"

#include <type_traits>

namespace qltkit
{

static_assert(std::is_trivially_copyable_v<OrientationState>, "its bytes are saved");

bool IsSound(const OrientationState& s)
{
    const Rotation& q = s.orientation;
    double sum = s.shaking + s.excursion + s.levelSeconds + s.step.seconds + s.step.rateSquares +
                 s.step.accelerationSquares + s.rest.wander + s.rest.variance + s.rest.seconds +
                 s.temperature.celsius + s.velocity[0] + s.velocity[1] + s.position[0] +
                 s.position[1];
    for (const Vector3& v :
         {s.bias, s.gyroscope, s.accelerometer, s.gyroscopeSlope, s.accelerometerSlope,
          s.step.rows[0], s.step.rows[1], s.step.rows[2], s.step.gyroscope, s.levelSum, s.levelTurn,
          s.meanAcceleration, s.rest.rate, s.rest.slowRate, s.rest.acceleration, s.rest.bias,
          s.temperature.slope, s.temperature.variance, s.temperature.biasCovariance})
    {
        sum += Dot(v, {1.0, 1.0, 1.0});
    }
    bool sound = s.version == OrientationState::VERSION &&
                 s.phase <= OrientationState::Phase::Tracking &&
                 std::fabs(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z - 1.0) < 1e-6;
    for (std::size_t i = 0; i < ErrorIndex::COUNT; ++i)
    {
        sound = sound && s.covariance[i][i] >= 0.0;
        for (const double p : s.covariance[i])
        {
            sum += p;
        }
    }
    for (const SaturatedStretch& stretch : s.stretches)
    {
        sum += stretch.limit + stretch.seconds + stretch.after + stretch.slope +
               Dot(stretch.direction, {1.0, 1.0, 1.0});
    }
    return sound && std::isfinite(sum);
}

} // namespace qltkit
