#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/Calibration.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace qltkit
{

/// A side of the headset, as its wearer names it. The order is that of the axes: +x, -x, +y, -y,
/// +z, -z.
enum class HeadsetSide : std::size_t
{
    Right,
    Left,
    Top,
    Bottom,
    Back,
    Front,
};

/// The errors of a headset in a calibration, as root mean squares.
struct CalibrationErrors
{
    /// The angular velocity that the gyroscope shows at rest, in rad/s.
    double rate = 0.0;

    /// The difference between the acceleration at rest and gravity, in m/s^2.
    double gravity = 0.0;

    /// The angle between the vertical of the accelerometer and the vertical that the gyroscope
    /// gives after a turn from one side to another, in radians. The bias of the gyroscope is never
    /// part of it.
    double tilt = 0.0;
};

/// The result of a Calibrator: the calibration, and the errors without it and with it.
struct CalibrationResult
{
    /// The calibration. Its unit is empty.
    Calibration calibration;

    /// The errors without the calibration.
    CalibrationErrors before;

    /// The errors with the calibration.
    CalibrationErrors after;
};

/// Calibrates a headset from its samples. A person first leaves it at rest, and then turns each of
/// its six sides up, in any order. The Calibrator notices by itself when the headset is still.
///
/// The rest gives the bias of the gyroscope. The sides give the bias and the scale of the
/// accelerometer, because its magnitude must be gravity on each side. The turns between the sides
/// give the scale of the gyroscope, because they must end at the vertical of the accelerometer.
///
/// One thread at a time may use an object.
class QLTKIT_API Calibrator
{
public:
    /// The instruction that the person follows now.
    enum class Step
    {
        /// Leave the headset at rest.
        Rest,

        /// Turn the missing sides up.
        Sides,

        /// Nothing more.
        Done,
    };

    /// The state of the calibration.
    struct Progress
    {
        /// The current step.
        Step step = Step::Rest;

        /// True while the headset is still enough.
        bool isStill = false;

        /// The finished share of the whole calibration, from 0 to 1.
        double share = 0.0;

        /// The side that points up within 30 degrees.
        std::optional<HeadsetSide> up;

        /// The sides that are finished, indexed by HeadsetSide.
        std::array<bool, 6> sides{};
    };

    Calibrator();
    ~Calibrator();

    Calibrator(const Calibrator&) = delete;
    Calibrator& operator=(const Calibrator&) = delete;

    /// Takes the next sample. Samples after the end of the calibration change nothing. A sample
    /// that is not finite or whose time did not increase is ignored.
    void Add(const ImuSample& sample);

    /// Returns the state after the last sample.
    Progress GetProgress() const;

    /// Computes the result, which takes up to a second. Throws Error when the calibration is not
    /// done, and when the measurements contradict each other.
    CalibrationResult GetResult() const;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
