#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/OrientationEstimator.h>
#include <qltkit/Tracking/PredictionTerms.h>

#include <array>
#include <cstdint>

namespace qltkit
{

/// The whole state of a predictor as a plain record. Copy its bytes to save it, and give it to
/// Predictor::Restore to continue.
struct PredictorState
{
    /// The number of the record's format. A record with another number cannot be continued.
    static constexpr std::uint32_t VERSION = 1;

    /// The number of times ahead for which the predictor learns weights.
    static constexpr std::size_t HORIZONS = PredictionTerms::HORIZONS;

    /// The number of terms: the angular velocity, and two angular accelerations.
    static constexpr std::size_t TERMS = 3;

    /// The number of past moments that the predictor remembers, one each 5 ms.
    static constexpr std::size_t PAST = 32;

    /// One weight for each term.
    using Weights = std::array<double, TERMS>;

    /// A moment, and the predictions that were made at it.
    struct Moment
    {
        /// The time of the moment in microseconds.
        std::uint64_t timeUs = 0;

        /// The number of jumps of the orientation until this moment.
        std::uint32_t jumps = 0;

        /// The rotation from body to world at this moment.
        Rotation orientation;

        /// The terms at this moment.
        std::array<Vector3, TERMS> terms;

        /// The predicted turn for each horizon, as a rotation vector in radians.
        std::array<Vector3, HORIZONS> predicted;
    };

    /// The learned data of one horizon.
    struct Horizon
    {
        /// The current weights of the terms.
        Weights weights{};

        /// The products of the terms with each other, summed over the last seconds.
        std::array<Weights, TERMS> squares{};

        /// The products of the terms with the measured turn, summed likewise.
        Weights products{};

        /// The index of the moment that is compared next.
        std::uint32_t next = 0;

        /// The number of comparisons.
        std::uint64_t compared = 0;

        /// The sum of squared errors over all comparisons.
        double errorSum = 0.0;

        /// The mean of squared errors over the last seconds.
        double recentError = 0.0;
    };

    /// The format of this record.
    std::uint32_t version = VERSION;

    /// False until the first moment.
    bool started = false;

    /// The time of the last moment in microseconds.
    std::uint64_t timeUs = 0;

    /// The number of jumps of the orientation so far.
    std::uint32_t jumps = 0;

    /// The last orientation from body to world.
    Rotation orientation;

    /// The last angular velocity about the body's axes in rad/s.
    Vector3 rate;

    /// The derivative of the rate, low-passed, in rad/s^2.
    Vector3 acceleration;

    /// The acceleration, low-passed again.
    Vector3 smooth;

    /// The recent mean square of `acceleration` minus `smooth`. Knocks and noise make it large.
    double roughSquare = 0.0;

    /// The recent mean square of `smooth`.
    double smoothSquare = 0.0;

    /// The number of moments so far. `past` holds the last ones.
    std::uint32_t moments = 0;

    /// The remembered moments; moment n is at n modulo PAST.
    std::array<Moment, PAST> past{};

    /// The learned data of each horizon.
    std::array<Horizon, HORIZONS> horizons{};
};

/// A moment of a motion, for use without the kit's estimator. A plain value.
struct PredictorInput
{
    /// The device's clock in microseconds without its wrap.
    std::uint64_t timeUs = 0;

    /// The number of corrections that have changed the orientation without a motion. The predictor
    /// does not learn across such a correction.
    std::uint32_t jumps = 0;

    /// True when the predictor may learn from the orientation.
    bool settled = true;

    /// The rotation from body to world.
    Rotation orientation;

    /// The angular velocity about the body's axes in rad/s.
    Vector3 rate;
};

/// Predicts the orientation of the head for the next milliseconds. docs/tracking.md explains the
/// method.
///
///     qltkit::OrientationEstimator estimator;
///     qltkit::Predictor predictor;
///     if (estimator.Add(sample))
///     {
///         predictor.Add(estimator);
///     }
///     const qltkit::Rotation soon = predictor.Predict(0.02);
///
/// The predicted turn is a weighted sum of the angular velocity and two angular accelerations. One
/// of the accelerations is smoothed more than the other. The predictor learns the weights from the
/// motion so far. At rest the weights return to cautious values.
///
/// A predictor is a plain value: it reads no clock, allocates nothing and has no lock. One thread
/// at a time may use an object. The same inputs give the same bits on every system.
class QLTKIT_API Predictor
{
public:
    /// The longest prediction in seconds. Longer times are clamped to it.
    static constexpr double MAX_AHEAD_SECONDS = PredictionTerms::AHEAD_SECONDS.back();

    /// Starts with the cautious weights: the whole angular velocity and a part of the less smoothed
    /// acceleration.
    Predictor();

    /// Takes the estimator's state. Call it after every sample that the estimator has used. An
    /// estimator without a usable sample changes nothing.
    void Add(const OrientationEstimator& estimator);

    /// Takes the next moment of another motion. A moment with the same time as the last one is
    /// ignored. After a gap of more than 50 ms the accelerations restart from zero.
    void Add(const PredictorInput& input);

    /// The predicted rotation from body to world, `seconds` after the last sample. For a time of
    /// zero or less it is the last orientation. A time above MAX_AHEAD_SECONDS counts as
    /// MAX_AHEAD_SECONDS.
    Rotation Predict(double seconds) const;

    /// The terms that Predict uses together with the orientation and the angular velocity of the
    /// last sample.
    PredictionTerms GetTerms() const;

    /// The error of predictions for `seconds` ahead over all samples so far, as a root mean square
    /// in radians. Between the horizons of 20, 50 and 100 ms the error is interpolated. It is zero
    /// before the first comparison.
    double GetError(double seconds) const { return GetErrors().At(seconds); }

    /// The same error over about the last five seconds.
    double GetRecentError(double seconds) const { return GetRecentErrors().At(seconds); }

    /// The errors over all samples so far, at the horizons.
    PredictionErrors GetErrors() const;

    /// The errors over about the last five seconds, at the horizons.
    PredictionErrors GetRecentErrors() const;

    /// The whole state. A program may save or inspect it. The reference follows later samples.
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
