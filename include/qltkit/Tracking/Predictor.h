// Where the head will be in some milliseconds. docs/tracking.md explains the method.
//
// The turn ahead is a sum of the rate and of two angular accelerations, one of them smoothed more.
// Their weights are learned from how the head has moved so far, and fall back to cautious ones at
// rest. A pure value, as the estimator is.
#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/OrientationEstimator.h>
#include <qltkit/Tracking/PredictionTerms.h>

#include <array>
#include <cstdint>

namespace qltkit
{

/// All that the predictor knows, as a plain record.
struct PredictorState
{
    static constexpr std::uint32_t VERSION = 1;

    static constexpr std::size_t HORIZONS = PredictionTerms::HORIZONS;
    static constexpr std::size_t TERMS = 3;
    static constexpr std::size_t PAST = 32;

    using Weights = std::array<double, TERMS>;

    /// A moment and what was predicted then.
    struct Moment
    {
        std::uint64_t timeUs = 0;
        std::uint32_t jumps = 0;
        Rotation orientation;
        std::array<Vector3, TERMS> terms;
        std::array<Vector3, HORIZONS> predicted; // rotation vectors
    };

    /// What is learned for one horizon.
    struct Horizon
    {
        Weights weights{};
        std::array<Weights, TERMS> squares{}; // of the terms
        Weights products{};                   // of the terms with what came
        std::uint32_t next = 0; // the moment that is compared next, counted as `moments`
        std::uint64_t compared = 0;
        double errorSum = 0.0;    // of squares, over all that was compared
        double recentError = 0.0; // mean of squares over the last seconds
    };

    std::uint32_t version = VERSION;
    bool started = false;
    std::uint64_t timeUs = 0;
    std::uint32_t jumps = 0;
    Rotation orientation;
    Vector3 rate;
    Vector3 acceleration;      // low-passed slope of the rate
    Vector3 smooth;            // low-passed again
    double roughSquare = 0.0;  // recent mean square of their difference
    double smoothSquare = 0.0; // and of the smooth one
    std::uint32_t moments = 0; // stored so far; the last ones are in `past`
    std::array<Moment, PAST> past{};
    std::array<Horizon, HORIZONS> horizons{};
};

/// A moment of a motion, for a predictor without the kit's estimator.
struct PredictorInput
{
    std::uint64_t timeUs = 0; // of the device's clock, without a wrap
    std::uint32_t jumps = 0;  // changes of the orientation so far that no motion explains
    bool settled = true;      // the orientation is worth learning from
    Rotation orientation;     // body to world
    Vector3 rate;             // about the body's axes, rad/s
};

class QLTKIT_API Predictor
{
public:
    /// The longest time that is predicted; longer ones are cut to it.
    static constexpr double MAX_AHEAD_SECONDS = PredictionTerms::AHEAD_SECONDS.back();

    Predictor();

    /// Takes the estimator's state. Call it after every sample that the estimator has used.
    void Add(const OrientationEstimator& estimator);

    /// Takes the next moment of another motion; one of the same time as the last is left out.
    void Add(const PredictorInput& input);

    /// Body to world, `seconds` after the last sample; a time of zero or less gives the estimate.
    Rotation Predict(double seconds) const;

    /// All that Predict needs besides the orientation and the rate of the last sample.
    PredictionTerms GetTerms() const;

    /// The angle between what was predicted for `seconds` ahead and what then came, as the root of
    /// the mean square in radians: over all samples so far, or over about the last five seconds.
    /// Between the horizons of 20, 50 and 100 ms it is interpolated. Zero before anything came.
    double GetError(double seconds) const { return GetErrors().At(seconds); }
    double GetRecentError(double seconds) const { return GetRecentErrors().At(seconds); }

    /// The same for the horizons.
    PredictionErrors GetErrors() const;
    PredictionErrors GetRecentErrors() const;

    const PredictorState& GetState() const { return mState; }

    /// Continues from a saved state; false, and nothing changes, when it has another version.
    bool Restore(const PredictorState& state);

private:
    void FollowMotion(const PredictorInput& input, double seconds);
    void Compare(std::size_t horizon);
    void Remember();

    PredictorState mState;
};

} // namespace qltkit
