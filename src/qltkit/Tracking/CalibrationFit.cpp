#include "Tracking/CalibrationFit.h"

#include <qltkit/Error.h>

#include "Tracking/Angles.h"
#include "Tracking/GaussNewton.h"

#include <algorithm>

namespace qltkit
{
namespace
{

constexpr double GRAVITY = 9.80665;

// The expected sizes of the errors of a turn's end and of the gyroscope's scale. So an axis about
// which nobody turned keeps its scale.
constexpr double TURN_DEVIATION = 0.003; // radians
constexpr double SCALE_DEVIATION = 0.05;

// A result beyond these limits is not a property of a sensor.
constexpr double MAX_SCALE_ERROR = 0.2;
constexpr double MAX_BIAS = 4.0;          // m/s^2
constexpr double MAX_GRAVITY_ERROR = 0.1; // m/s^2
constexpr double MAX_TILT = 0.07;         // radians
constexpr double MAX_RATE = 0.035;        // rad/s

Vector3 Direction(const Vector3& v) { return v * (1.0 / Length(v)); }

Vector3 AccelerationOf(const StillPose& pose, const Calibration& c)
{
    ImuSample sample;
    sample.accelerometer = pose.acceleration;
    return Calibrated(sample, c).accelerometer;
}

/// Returns the vertical in the axes of the body at the end of a turn, by the gyroscope and the
/// vertical at its beginning.
Vector3 UpAfter(const RecordedTurn& turn, const Vector3& upBefore, const Calibration& c)
{
    Rotation turned;
    ImuSample sample;
    for (const RecordedTurn::Part& part : turn.parts)
    {
        sample.gyroscope = part.rate;
        turned = turned * RotationBy(Calibrated(sample, c).gyroscope * part.seconds);
    }
    return Rotate(Normalized(turned).Conjugate(), upBefore);
}

/// Fits the accelerometer: its magnitude is gravity in each pose.
void FitAccelerometer(const std::vector<StillPose>& poses, Calibration& c)
{
    const auto set = [&c](const std::array<double, 6>& x)
    {
        c.accelerometerBias = {x[0] * GRAVITY, x[1] * GRAVITY, x[2] * GRAVITY};
        c.accelerometerScale = {x[3], x[4], x[5]};
    };
    set(LeastSquares<6>({0.0, 0.0, 0.0, 1.0, 1.0, 1.0},
                        [&](const std::array<double, 6>& x)
                        {
                            set(x);
                            std::vector<double> residuals;
                            for (const StillPose& pose : poses)
                            {
                                const double length = Length(AccelerationOf(pose, c));
                                residuals.push_back(length / GRAVITY - 1.0);
                            }
                            return residuals;
                        }));
}

/// Fits the scale of the gyroscope: each turn ends at the accelerometer's vertical.
void FitGyroscope(const std::vector<StillPose>& poses, const std::vector<RecordedTurn>& turns,
                  Calibration& c)
{
    const auto set = [&c](const std::array<double, 3>& x) {
        c.gyroscopeScale = {x[0], x[1], x[2]};
    };
    set(LeastSquares<3>({1.0, 1.0, 1.0},
                        [&](const std::array<double, 3>& x)
                        {
                            set(x);
                            std::vector<double> residuals;
                            for (const RecordedTurn& turn : turns)
                            {
                                const Vector3 from = AccelerationOf(poses[turn.from], c);
                                const Vector3 to = AccelerationOf(poses[turn.to], c);
                                const Vector3 off =
                                    (UpAfter(turn, Direction(from), c) - Direction(to)) *
                                    (1.0 / TURN_DEVIATION);
                                residuals.insert(residuals.end(), {off.x, off.y, off.z});
                            }
                            for (const double scale : x)
                            {
                                residuals.push_back((scale - 1.0) / SCALE_DEVIATION);
                            }
                            return residuals;
                        }));
}

class MeanSquare
{
public:
    void Add(double value)
    {
        mSum += value * value;
        mCount += 1.0;
    }

    double Root() const { return mCount > 0.0 ? std::sqrt(mSum / mCount) : 0.0; }

private:
    double mSum = 0.0;
    double mCount = 0.0;
};

/// Returns the errors with a calibration. `rateBias` is the bias of the gyroscope for the angular
/// velocity at rest.
CalibrationErrors ErrorsWith(const Calibration& c, const Vector3& rateBias,
                             const std::vector<StillPose>& poses,
                             const std::vector<RecordedTurn>& turns)
{
    MeanSquare rate;
    MeanSquare gravity;
    MeanSquare tilt;
    for (std::size_t i = 0; i < poses.size(); ++i)
    {
        gravity.Add(Length(AccelerationOf(poses[i], c)) - GRAVITY);
        if (i > 0) // the first pose gave the bias itself
        {
            rate.Add(Length(poses[i].rate - rateBias));
        }
    }
    for (const RecordedTurn& turn : turns)
    {
        const Vector3 up = UpAfter(turn, Direction(AccelerationOf(poses[turn.from], c)), c);
        const Vector3 seen = Direction(AccelerationOf(poses[turn.to], c));
        tilt.Add(std::atan2(Length(Cross(up, seen)), Dot(up, seen)));
    }
    return {rate.Root(), gravity.Root(), tilt.Root()};
}

bool IsPlausible(const Calibration& c, const CalibrationErrors& after)
{
    bool isPlausible = after.gravity < MAX_GRAVITY_ERROR && after.tilt < MAX_TILT &&
                       after.rate < MAX_RATE && Length(c.accelerometerBias) < MAX_BIAS;
    for (int axis = 0; axis < 3; ++axis)
    {
        isPlausible = isPlausible && std::abs(c.accelerometerScale[axis] - 1.0) < MAX_SCALE_ERROR &&
                      std::abs(c.gyroscopeScale[axis] - 1.0) < MAX_SCALE_ERROR;
    }
    return isPlausible;
}

} // namespace

CalibrationResult FitCalibration(const std::vector<StillPose>& poses,
                                 const std::vector<RecordedTurn>& turns)
{
    CalibrationResult result;
    Calibration plain;
    plain.gyroscopeBias = poses.front().rate; // so that a long turn does not hide the other errors
    result.before = ErrorsWith(plain, {}, poses, turns);
    result.calibration.gyroscopeBias = poses.front().rate;
    FitAccelerometer(poses, result.calibration);
    FitGyroscope(poses, turns, result.calibration);
    result.after = ErrorsWith(result.calibration, result.calibration.gyroscopeBias, poses, turns);
    if (!IsPlausible(result.calibration, result.after))
    {
        throw Error("the sides contradict each other: the headset was moved while it should have "
                    "been still, or a sensor is faulty; calibrate it again");
    }
    return result;
}

} // namespace qltkit
