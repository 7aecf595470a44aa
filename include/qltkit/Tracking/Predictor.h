#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/OrientationEstimator.h>
#include <qltkit/Tracking/PredictionTerms.h>

#include <array>
#include <cstdint>

namespace qltkit
{

/// The whole state of a predictor as a plain record. Copy its bytes to save it.
struct PredictorState
{
    static constexpr std::uint32_t VERSION = 1;

    static constexpr std::size_t HORIZONS = PredictionTerms::HORIZONS;
    static constexpr std::size_t TERMS = 3;
    static constexpr std::size_t PAST = 32;

    using Weights = std::array<double, TERMS>;

    /// A moment, and the predictions that were made at it.
    struct Moment
    {
        std::uint64_t timeUs = 0;
        std::uint32_t jumps = 0;
        Rotation orientation;
        std::array<Vector3, TERMS> terms;
        std::array<Vector3, HORIZONS> predicted; // rotation vectors
    };

    /// The learned data of one horizon.
    struct Horizon
    {
        Weights weights{};
        std::array<Weights, TERMS> squares{}; // of the terms with each other
        Weights products{};                   // of the terms with the measured turn
        std::uint32_t next = 0;               // index of the moment that is compared next
        std::uint64_t compared = 0;
        double errorSum = 0.0;    // sum of squared errors over all comparisons
        double recentError = 0.0; // mean of squared errors over the last seconds
    };

    std::uint32_t version = VERSION;
    bool started = false;
    std::uint64_t timeUs = 0;
    std::uint32_t jumps = 0;
    Rotation orientation;
    Vector3 rate;
    Vector3 acceleration;      // low-passed derivative of the rate
    Vector3 smooth;            // the acceleration, low-passed again
    double roughSquare = 0.0;  // recent mean square of `acceleration` minus `smooth`
    double smoothSquare = 0.0; // recent mean square of `smooth`
    std::uint32_t moments = 0; // number of moments so far; `past` holds the last ones
    std::array<Moment, PAST> past{};
    std::array<Horizon, HORIZONS> horizons{};
};

/// A moment of a motion, for use without the kit's estimator.
struct PredictorInput
{
    std::uint64_t timeUs = 0; // the device's clock without its wrap
    std::uint32_t jumps = 0;  // number of corrections that changed the orientation without a motion
    bool settled = true;      // true when the predictor may learn from the orientation
    Rotation orientation;     // body to world
    Vector3 rate;             // about the body's axes, rad/s
};

/// Predicts the orientation of the head for the next milliseconds. docs/tracking.md explains the
/// method.
///
/// The predicted turn is a weighted sum of the angular velocity and two angular accelerations. One
/// of the accelerations is smoothed more than the other. The predictor learns the weights from the
/// motion so far. At rest the weights return to cautious values.
///
/// A predictor is a plain value: it reads no clock, allocates nothing and has no lock. One thread
/// at a time may use an object.
class QLTKIT_API Predictor
{
public:
    /// The longest prediction in seconds. Longer times are clamped to it.
    static constexpr double MAX_AHEAD_SECONDS = PredictionTerms::AHEAD_SECONDS.back();

    /// Starts with the cautious weights.
    Predictor();

    /// Takes the estimator's state. Call it after every sample that the estimator has used.
    void Add(const OrientationEstimator& estimator);

    /// Takes the next moment of another motion. A moment with the same time as the last one is
    /// ignored.
    void Add(const PredictorInput& input);

    /// The predicted rotation from body to world, `seconds` after the last sample. For a time of
    /// zero or less it is the last orientation.
    Rotation Predict(double seconds) const;

    /// The terms that Predict uses together with the orientation and the angular velocity of the
    /// last sample.
    PredictionTerms GetTerms() const;

    /// The error of predictions for `seconds` ahead, as a root mean square in radians. GetError
    /// covers all samples so far, and GetRecentError covers about the last five seconds. Between
    /// the horizons of 20, 50 and 100 ms the error is interpolated. It is zero before the first
    /// comparison.
    double GetError(double seconds) const { return GetErrors().At(seconds); }
    double GetRecentError(double seconds) const { return GetRecentErrors().At(seconds); }

    /// The same errors at the horizons.
    PredictionErrors GetErrors() const;
    PredictionErrors GetRecentErrors() const;

    /// The whole state. A program may save or inspect it.
    const PredictorState& GetState() const { return mState; }

    /// Continues from a saved state. A state of another version changes nothing, and the result is
    /// false.
    bool Restore(const PredictorState& state);

private:
    void FollowMotion(const PredictorInput& input, double seconds);
    void Compare(std::size_t horizon);
    void Remember();

    PredictorState mState;
};

} // namespace qltkit
