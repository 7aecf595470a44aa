#include <qltkit/Tracking/Predictor.h>

#include <algorithm>
#include <type_traits>

namespace qltkit
{
namespace
{

using Weights = PredictorState::Weights;
using Moment = PredictorState::Moment;
using Horizon = PredictorState::Horizon;

static_assert(std::is_trivially_copyable_v<PredictorState>, "its bytes are saved");

constexpr std::size_t TERMS = PredictorState::TERMS;

constexpr std::uint64_t MOMENT_US = 4900; // one in five samples with some jitter
constexpr std::uint64_t AHEAD_US[] = {20000, 50000, 100000};
constexpr std::uint64_t LATE_US = 5000; // a later sample is not compared
constexpr double GAP_SECONDS = 0.05;    // slopes are not computed over a longer step

constexpr double ACCELERATION_SECONDS = 0.003;
constexpr double SMOOTH_SECONDS = 0.010;

// When fast changes exceed the smooth acceleration (knocks, vibration, noise at rest), the
// accelerations predict little.
constexpr double ROUGH_SECONDS = 0.05;
constexpr double ROUGH_SHARE = 0.5;
constexpr double LEAST_SQUARE = 0.01; // (rad/s^2)^2

// Learning: MEMORY_SECONDS is the duration of the memory. CAUTION is the strength of the cautious
// weights, as a number of squares of a typical rate and acceleration. At rest the cautious weights
// win.
constexpr double MEMORY_SECONDS = 10.0;
constexpr double CAUTION = 200.0;
constexpr double TYPICAL_RATE = 0.2;         // rad/s
constexpr double TYPICAL_ACCELERATION = 2.0; // rad/s^2
constexpr Weights CAUTIOUS[] = {{1.0, 0.7, 0.0}, {1.0, 0.5, 0.0}, {1.0, 0.35, 0.0}};

constexpr double RECENT_SECONDS = 5.0;

double Seconds(std::uint64_t us) { return static_cast<double>(us) * 1e-6; }

/// The terms of a predicted turn: the rate and both accelerations.
std::array<Vector3, TERMS> TermsOf(const PredictorState& state)
{
    const double roughness = state.roughSquare / (state.smoothSquare + LEAST_SQUARE);
    const double trust = 1.0 / (1.0 + ROUGH_SHARE * roughness);
    return {state.rate, state.acceleration * trust, state.smooth * trust};
}

/// The predicted turn in `seconds`.
Vector3 Turn(const std::array<Vector3, TERMS>& terms, const Weights& weights, double seconds)
{
    const double half = 0.5 * seconds;
    return (terms[0] * weights[0] + (terms[1] * weights[1] + terms[2] * weights[2]) * half) *
           seconds;
}

double Determinant(const std::array<Weights, TERMS>& m)
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

/// Solves the least squares with a pull towards the cautious weights.
void Solve(Horizon& horizon, const Weights& cautious, double ahead)
{
    std::array<Weights, TERMS> squares = horizon.squares;
    Weights products = horizon.products;
    const double acceleration = 0.5 * ahead * TYPICAL_ACCELERATION;
    const double pull[] = {CAUTION * TYPICAL_RATE * TYPICAL_RATE,
                           CAUTION * acceleration * acceleration,
                           CAUTION * acceleration * acceleration};
    for (std::size_t i = 0; i < TERMS; ++i)
    {
        squares[i][i] += pull[i];
        products[i] += pull[i] * cautious[i];
    }
    const double determinant = Determinant(squares);
    for (std::size_t i = 0; i < TERMS; ++i)
    {
        std::array<Weights, TERMS> replaced = squares;
        for (std::size_t row = 0; row < TERMS; ++row)
        {
            replaced[row][i] = products[row];
        }
        horizon.weights[i] = Determinant(replaced) / determinant;
    }
}

/// Learns from a comparison. `came` is the mean rate of the measured turn.
void Learn(Horizon& horizon, const Moment& moment, const Vector3& came, double seconds)
{
    const double half = 0.5 * seconds;
    const std::array<Vector3, TERMS> terms = {moment.terms[0], moment.terms[1] * half,
                                              moment.terms[2] * half};
    constexpr double KEEP = 1.0 - 0.005 / MEMORY_SECONDS;
    for (std::size_t i = 0; i < TERMS; ++i)
    {
        for (std::size_t j = 0; j < TERMS; ++j)
        {
            horizon.squares[i][j] = KEEP * horizon.squares[i][j] + Dot(terms[i], terms[j]);
        }
        horizon.products[i] = KEEP * horizon.products[i] + Dot(terms[i], came);
    }
}

} // namespace

Predictor::Predictor()
{
    for (std::size_t i = 0; i < PredictorState::HORIZONS; ++i)
    {
        mState.horizons[i].weights = CAUTIOUS[i];
    }
}

void Predictor::Add(const OrientationEstimator& estimator)
{
    const OrientationState& state = estimator.GetState();
    if (state.phase != OrientationState::Phase::Empty)
    {
        Add({state.elapsedUs, state.jumps, state.phase == OrientationState::Phase::Tracking,
             estimator.GetOrientation(), estimator.GetAngularVelocity()});
    }
}

void Predictor::Add(const PredictorInput& input)
{
    if (mState.started && input.timeUs == mState.timeUs)
    {
        return;
    }
    FollowMotion(input, Seconds(input.timeUs - mState.timeUs));
    mState.timeUs = input.timeUs;
    mState.jumps = input.jumps;
    for (std::size_t i = 0; i < PredictorState::HORIZONS; ++i)
    {
        Compare(i);
    }
    const Moment& last = mState.past[(mState.moments - 1) % PredictorState::PAST];
    if (input.settled && (mState.moments == 0 || mState.timeUs - last.timeUs >= MOMENT_US))
    {
        Remember();
    }
}

void Predictor::FollowMotion(const PredictorInput& input, double seconds)
{
    const Vector3& rate = input.rate;
    if (!mState.started || seconds > GAP_SECONDS)
    {
        mState.acceleration = mState.smooth = {};
        mState.smoothSquare = mState.roughSquare = 0.0;
    }
    else
    {
        const Vector3 slope = (rate - mState.rate) * (1.0 / seconds);
        mState.acceleration +=
            (slope - mState.acceleration) * (seconds / (ACCELERATION_SECONDS + seconds));
        mState.smooth +=
            (mState.acceleration - mState.smooth) * (seconds / (SMOOTH_SECONDS + seconds));
        const Vector3 rough = mState.acceleration - mState.smooth;
        const double share = seconds / (ROUGH_SECONDS + seconds);
        mState.roughSquare += (Dot(rough, rough) - mState.roughSquare) * share;
        mState.smoothSquare += (Dot(mState.smooth, mState.smooth) - mState.smoothSquare) * share;
    }
    mState.started = true;
    mState.rate = rate;
    mState.orientation = input.orientation;
}

/// Compares all moments for which the horizon has passed.
void Predictor::Compare(std::size_t index)
{
    Horizon& horizon = mState.horizons[index];
    bool learned = false;
    for (; horizon.next != mState.moments; ++horizon.next)
    {
        const Moment& moment = mState.past[horizon.next % PredictorState::PAST];
        const std::uint64_t passed = mState.timeUs - moment.timeUs;
        if (passed + 500 < AHEAD_US[index]) // rounds to the nearest sample
        {
            break;
        }
        if (passed > AHEAD_US[index] + LATE_US)
        {
            continue;
        }
        const Rotation turn = moment.orientation.Conjugate() * mState.orientation;
        const Vector3 error =
            RotationVector(RotationBy(moment.predicted[index]).Conjugate() * turn);
        const double square = Dot(error, error);
        ++horizon.compared;
        horizon.errorSum += square;
        const double share =
            std::max(1.0 / static_cast<double>(horizon.compared), 0.005 / RECENT_SECONDS);
        horizon.recentError += (square - horizon.recentError) * share;
        if (moment.jumps == mState.jumps)
        {
            const double seconds = Seconds(passed);
            Learn(horizon, moment, RotationVector(turn) * (1.0 / seconds), seconds);
            learned = true;
        }
    }
    if (learned)
    {
        Solve(horizon, CAUTIOUS[index], Seconds(AHEAD_US[index]));
    }
}

void Predictor::Remember()
{
    Moment& moment = mState.past[mState.moments++ % PredictorState::PAST];
    moment.timeUs = mState.timeUs;
    moment.jumps = mState.jumps;
    moment.orientation = mState.orientation;
    moment.terms = TermsOf(mState);
    for (std::size_t i = 0; i < PredictorState::HORIZONS; ++i)
    {
        moment.predicted[i] = Turn(moment.terms, mState.horizons[i].weights, Seconds(AHEAD_US[i]));
    }
}

PredictionTerms Predictor::GetTerms() const
{
    const std::array<Vector3, TERMS> terms = TermsOf(mState);
    PredictionTerms prediction;
    const auto bend = [&terms](double ofRough, double ofSmooth)
    {
        const Vector3 v = (terms[1] * ofRough + terms[2] * ofSmooth) * 0.5;
        return qlt::Vec3(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
    };
    prediction.bend[0] = bend(1.0, 0.0);
    for (std::size_t i = 0; i < PredictorState::HORIZONS; ++i)
    {
        const Weights& weights = mState.horizons[i].weights;
        prediction.lasting[i] = static_cast<float>(weights[0]);
        prediction.bend[i + 1] = bend(weights[1], weights[2]);
    }
    return prediction;
}

Rotation Predictor::Predict(double seconds) const
{
    const Vector3& rate = mState.rate;
    const qlt::Vec3 turn =
        GetTerms().Turn(qlt::Vec3(static_cast<float>(rate.x), static_cast<float>(rate.y),
                                  static_cast<float>(rate.z)),
                        seconds);
    return Normalized(mState.orientation * RotationBy({turn.x(), turn.y(), turn.z()}));
}

PredictionErrors Predictor::GetErrors() const
{
    PredictionErrors errors;
    for (std::size_t i = 0; i < PredictorState::HORIZONS; ++i)
    {
        const Horizon& h = mState.horizons[i];
        errors.radians[i] =
            h.compared > 0 ? std::sqrt(h.errorSum / static_cast<double>(h.compared)) : 0.0;
    }
    return errors;
}

PredictionErrors Predictor::GetRecentErrors() const
{
    PredictionErrors errors;
    for (std::size_t i = 0; i < PredictorState::HORIZONS; ++i)
    {
        errors.radians[i] = std::sqrt(mState.horizons[i].recentError);
    }
    return errors;
}

bool Predictor::Restore(const PredictorState& state)
{
    if (state.version != PredictorState::VERSION)
    {
        return false;
    }
    mState = state;
    return true;
}

} // namespace qltkit
