#include <qltkit/Tracking/Calibrator.h>

#include <qltkit/Error.h>

#include "Tracking/CalibrationFit.h"

#include <algorithm>
#include <cmath>

namespace qltkit
{
namespace
{

using Step = Calibrator::Step;

constexpr double REST_SECONDS = 6.0;
constexpr double SIDE_SECONDS = 1.5;
constexpr double SETTLING_SECONDS = 0.5; // from the last motion to the first sample that counts
constexpr double MEAN_SECONDS = 0.25;
constexpr double MAX_GAP_SECONDS = 0.1;
constexpr double MAX_TURN_SECONDS = 60.0;
constexpr double MAX_SIDE_ANGLE_COSINE = 0.866; // 30 degrees
constexpr double MIN_TURN_COSINE = 0.707;       // 45 degrees
constexpr unsigned SATURATED_GYROSCOPE = 7u << ImuSample::GYROSCOPE_BITS;

// A person may hold a side still by hand, so the rates there may be larger than at rest.
constexpr double REST_RATE = 0.035; // rad/s
constexpr double SIDE_RATE = 0.1;   // rad/s
constexpr double MAX_BIAS = 0.2;    // rad/s; more is a turn
constexpr double MAX_ACCELERATION = 0.6;

bool IsFinite(const Vector3& v) { return std::isfinite(Dot(v, v)); }

std::optional<HeadsetSide> SideUp(const Vector3& acceleration)
{
    const double least = MAX_SIDE_ANGLE_COSINE * Length(acceleration);
    for (int axis = 0; axis < 3; ++axis)
    {
        if (std::abs(acceleration[axis]) > least)
        {
            return static_cast<HeadsetSide>(2 * axis + (acceleration[axis] < 0.0 ? 1 : 0));
        }
    }
    return std::nullopt;
}

} // namespace

class Calibrator::Impl
{
public:
    void Add(const ImuSample& sample)
    {
        if (!IsFinite(sample.gyroscope) || !IsFinite(sample.accelerometer) || step == Step::Done)
        {
            return;
        }
        const auto stepUs = static_cast<std::int32_t>(sample.timeUs - mTimeUs);
        const double seconds = stepUs / 1e6;
        if (mStarted && stepUs >= 0 && stepUs <= MAX_GAP_SECONDS * 1e6)
        {
            if (stepUs > 0)
            {
                Follow(sample, seconds);
            }
        }
        else
        {
            Begin(sample); // also after a long gap and a restart of the device's clock
        }
        mTimeUs = sample.timeUs;
    }

    Progress GetProgress() const
    {
        Progress progress;
        progress.step = step;
        progress.isStill = mStillSeconds > SETTLING_SECONDS;
        progress.sides = mSides;
        progress.up = SideUp(mMeanAcceleration);
        const auto done = static_cast<double>(std::count(mSides.begin(), mSides.end(), true));
        double seconds = std::min(mSeconds, REST_SECONDS);
        if (step != Step::Rest)
        {
            const bool isNew = progress.up && !mSides[static_cast<std::size_t>(*progress.up)];
            seconds = REST_SECONDS + done * SIDE_SECONDS +
                      (isNew ? std::min(mSeconds, SIDE_SECONDS) : 0.0);
        }
        progress.share = seconds / (REST_SECONDS + 6.0 * SIDE_SECONDS);
        return progress;
    }

    CalibrationResult GetResult() const
    {
        if (step != Step::Done)
        {
            throw Error("the calibration is not done yet");
        }
        CalibrationResult result = FitCalibration(mPoses, mTurns);
        result.calibration.celsius = mCelsius;
        return result;
    }

    Step step = Step::Rest;

private:
    void Begin(const ImuSample& sample)
    {
        mStarted = true;
        mMeanRate = sample.gyroscope;
        mMeanAcceleration = sample.accelerometer;
        mTurnIsUsable = false;
        Move();
    }

    /// The headset has moved, so the means start again.
    void Move()
    {
        mStillSeconds = 0.0;
        mSeconds = 0.0;
        mRates = {};
        mAccelerations = {};
    }

    void Follow(const ImuSample& sample, double seconds)
    {
        Record(sample, seconds);
        const double share = seconds / (MEAN_SECONDS + seconds);
        mMeanRate += (sample.gyroscope - mMeanRate) * share;
        mMeanAcceleration += (sample.accelerometer - mMeanAcceleration) * share;
        if (!IsStill(sample))
        {
            Move();
            return;
        }
        mStillSeconds += seconds;
        if (mStillSeconds > SETTLING_SECONDS)
        {
            mRates += sample.gyroscope * seconds;
            mAccelerations += sample.accelerometer * seconds;
            mSeconds += seconds;
            TakePose(sample);
        }
    }

    bool IsStill(const ImuSample& sample) const
    {
        const bool rests = step == Step::Rest;
        const double most = rests ? REST_RATE : SIDE_RATE;
        const double turn = Length(rests ? mMeanRate : mMeanRate - mPoses.front().rate);
        return Length(sample.gyroscope - mMeanRate) < most && turn < (rests ? MAX_BIAS : most) &&
               Length(sample.accelerometer - mMeanAcceleration) < MAX_ACCELERATION;
    }

    /// Keeps the motion since the last pose.
    void Record(const ImuSample& sample, double seconds)
    {
        mTurnSeconds += seconds;
        mTurnIsUsable = mTurnIsUsable && mTurnSeconds < MAX_TURN_SECONDS &&
                        (sample.saturated & SATURATED_GYROSCOPE) == 0;
        if (mTurnIsUsable)
        {
            mTurn.parts.push_back({sample.gyroscope, seconds});
        }
    }

    void TakePose(const ImuSample& sample)
    {
        const StillPose pose = {mAccelerations * (1.0 / mSeconds), mRates * (1.0 / mSeconds)};
        if (step == Step::Rest)
        {
            if (mSeconds >= REST_SECONDS)
            {
                mCelsius = sample.temperature;
                step = Step::Sides;
                Keep(pose);
            }
            return;
        }
        const std::optional<HeadsetSide> up = SideUp(pose.acceleration);
        if (mSeconds < SIDE_SECONDS || !up || mSides[static_cast<std::size_t>(*up)])
        {
            return;
        }
        mSides[static_cast<std::size_t>(*up)] = true;
        Keep(pose);
        if (std::find(mSides.begin(), mSides.end(), false) == mSides.end())
        {
            step = Step::Done;
        }
    }

    void Keep(const StillPose& pose)
    {
        const std::size_t index = mPoses.size();
        mPoses.push_back(pose);
        if (mTurnIsUsable && index > 0)
        {
            const Vector3& before = mPoses[index - 1].acceleration;
            const double cosine =
                Dot(before, pose.acceleration) / (Length(before) * Length(pose.acceleration));
            if (cosine < MIN_TURN_COSINE)
            {
                mTurn.to = index;
                mTurns.push_back(std::move(mTurn));
            }
        }
        mTurn = {};
        mTurn.from = index;
        mTurnSeconds = 0.0;
        mTurnIsUsable = true;
        Move();
    }

    bool mStarted = false;
    std::uint32_t mTimeUs = 0;
    Vector3 mMeanRate; // low-passed
    Vector3 mMeanAcceleration;
    double mStillSeconds = 0.0;
    double mSeconds = 0.0; // the length of the sums below
    Vector3 mRates;
    Vector3 mAccelerations;
    std::array<bool, 6> mSides{};
    std::vector<StillPose> mPoses;
    std::vector<RecordedTurn> mTurns;
    RecordedTurn mTurn; // since the last pose
    double mTurnSeconds = 0.0;
    bool mTurnIsUsable = false;
    double mCelsius = 0.0;
};

Calibrator::Calibrator()
    : mImpl(std::make_unique<Impl>())
{
}

Calibrator::~Calibrator() = default;

void Calibrator::Add(const ImuSample& sample) { mImpl->Add(sample); }

Calibrator::Progress Calibrator::GetProgress() const { return mImpl->GetProgress(); }

CalibrationResult Calibrator::GetResult() const { return mImpl->GetResult(); }

} // namespace qltkit
