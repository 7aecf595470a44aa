#include <qltkit/Tracking/Comparison.h>

#include <qltkit/Error.h>
#include <qltkit/Tracking/Predictor.h>

#include "Tracking/Angles.h"
#include "Tracking/Envelope.h"
#include "Tracking/Peaks.h"
#include "Tracking/PredictionCheck.h"
#include "Tracking/TruthCheck.h"

#include <algorithm>

namespace qltkit
{
namespace
{

constexpr std::int64_t SETTLING_US = 5000000;
// The least length of an interval, which has two points.
constexpr double LEAST_PAIR_SECONDS = 0.004;
constexpr double HOLD_SECONDS = 0.05;
constexpr std::size_t WORST_OF_A_TRACK = 5;
constexpr Vector3 GRAVITY{0.0, 9.80665, 0.0};

void Check(const ComparisonInput& input)
{
    const std::size_t reports = input.reports.size();
    if (input.timesUs.size() != reports || input.core.size() != reports)
    {
        throw Error("a comparison needs a time and an orientation of the core for each report");
    }
    if (!std::is_sorted(input.timesUs.begin(), input.timesUs.end()))
    {
        throw Error("the times of a comparison fall");
    }
    const auto isBefore = [](const auto& a, const auto& b) { return a.report < b.report; };
    if (!std::is_sorted(input.truth.begin(), input.truth.end(), isBefore))
    {
        throw Error("the rows of the truth are not in the order of their reports");
    }
    if (!input.truth.empty() && input.truth.back().report >= reports)
    {
        throw Error("the truth is of a longer recording: it has a row for report " +
                    std::to_string(input.truth.back().report) + " of " + std::to_string(reports));
    }
}

/// The state of one of the two filters during the comparison.
struct Filter
{
    TruthCheck truth;
    PredictionCheck ahead20{20000};
    PredictionCheck ahead50{50000};
    Rotation before; // the orientation after the report before
    TruthCheck::Errors errors;

    Comparison::Figures Figures() const
    {
        return {truth.InclinationRms(), truth.InclinationMost(), truth.DriftPerMinute(),
                ahead20.Rms(), ahead50.Rms()};
    }
};

class Comparer
{
public:
    Comparer(const ComparisonInput& input, std::size_t mostPoints)
        : mInput(input)
        , mLagUs(std::llround(input.lagSeconds * 1e6))
    {
        if (!input.reports.empty())
        {
            result.seconds = Seconds(input.timesUs.back() - input.timesUs.front());
        }
        const auto mostPairs = static_cast<double>(std::max<std::size_t>(mostPoints / 2, 1));
        const double pairSeconds = std::max(LEAST_PAIR_SECONDS, result.seconds / mostPairs);
        const auto pairs = static_cast<std::size_t>(std::ceil(result.seconds / pairSeconds));
        result.stepSeconds = pairSeconds / 2.0;
        result.hasTruth = std::any_of(input.truth.begin(), input.truth.end(),
                                      [](const auto& row) { return row.valid; });
        mApartSeconds = std::max(0.005, result.seconds / 1000.0);
        mEnvelopes.fill(
            Envelope(input.reports.empty() ? 0 : std::max<std::size_t>(pairs, 1), pairSeconds));
    }

    void Take(std::size_t i)
    {
        const std::int64_t timeUs = mInput.timesUs[i] - mInput.timesUs.front();
        const ImuSample sample = ReadImuSample(mInput.reports[i]);
        if (mEstimator.Add(sample))
        {
            mPredictor.Add(mEstimator);
        }
        const qlt::Quaternion& q = mInput.core[i];
        const Rotation core = Normalized({q.w(), q.x(), q.y(), q.z()});
        const Rotation kit = mEstimator.GetOrientation();
        MarkStretches(sample, timeUs);
        CompareWithTruth(timeUs, core, kit);
        CompareHeadings(timeUs, core, kit);
        ComparePredictions(timeUs, core, kit);
        CompareEstimates(timeUs, sample, core, kit);
        mCore.before = core;
        mKit.before = kit;
        mBeforeUs = timeUs;
        mSequence = sample.sequence;
        mStarted = true;
    }

    void Finish()
    {
        for (std::size_t track = 0; track < Comparison::TRACKS; ++track)
        {
            result.tracks[track] = mEnvelopes[track].Points(HOLD_SECONDS);
        }
        for (const auto& stretches : mStretches)
        {
            result.stretches.insert(result.stretches.end(), stretches.begin(), stretches.end());
        }
        for (const auto track :
             {Comparison::InclinationKit, Comparison::InclinationCore, Comparison::Difference,
              Comparison::PredictionKit, Comparison::PredictionCore})
        {
            if (track == Comparison::Difference && result.hasTruth)
            {
                continue; // the errors of the filters say more
            }
            for (const Peak& peak : mPeaks[track].Largest(WORST_OF_A_TRACK))
            {
                result.worst.push_back({track, peak.seconds, peak.value});
            }
        }
        result.core = mCore.Figures();
        result.kit = mKit.Figures();
        result.differenceRms = std::sqrt(mDifferenceSquares / mDifferences);
        result.counts = mEstimator.GetState().counts;
    }

    Comparison result;

private:
    static double Seconds(std::int64_t us) { return static_cast<double>(us) / 1e6; }

    void Add(Comparison::Track track, std::int64_t timeUs, double value)
    {
        mEnvelopes[track].Add(Seconds(timeUs), value);
    }

    /// Adds an error to its curve and to the candidates for the worst moments.
    void AddError(Comparison::Track track, std::int64_t timeUs, double value)
    {
        Add(track, timeUs, value);
        if (timeUs >= SETTLING_US)
        {
            mPeaks[track].Add(Seconds(timeUs), value);
        }
    }

    void Mark(Comparison::Mark mark, std::int64_t fromUs, std::int64_t toUs)
    {
        auto& stretches = mStretches[static_cast<std::size_t>(mark)];
        if (stretches.empty() || Seconds(fromUs) > stretches.back().toSeconds + mApartSeconds)
        {
            stretches.push_back({mark, Seconds(fromUs), Seconds(toUs)});
        }
        stretches.back().toSeconds = Seconds(toUs);
    }

    void MarkStretches(const ImuSample& sample, std::int64_t timeUs)
    {
        constexpr unsigned AXES = 7;
        if ((sample.saturated & AXES << ImuSample::GYROSCOPE_BITS) != 0)
        {
            Mark(Comparison::Mark::SaturatedGyroscope, mBeforeUs, timeUs);
        }
        if ((sample.saturated & AXES << ImuSample::ACCELEROMETER_BITS) != 0)
        {
            Mark(Comparison::Mark::SaturatedAccelerometer, mBeforeUs, timeUs);
        }
        const auto step = static_cast<std::int32_t>(sample.sequence - mSequence);
        if (mStarted && (step > 1 || timeUs - mBeforeUs > LONGEST_STEP_US))
        {
            Mark(Comparison::Mark::Lost, mBeforeUs, timeUs);
        }
    }

    std::int64_t TruthTimeUs(std::size_t row) const
    {
        return mInput.timesUs[mInput.truth[row].report] - mInput.timesUs.front();
    }

    /// Compares both filters with the rows of the truth until this time.
    void CompareWithTruth(std::int64_t timeUs, const Rotation& core, const Rotation& kit)
    {
        for (; mNextTruth < mInput.truth.size(); ++mNextTruth)
        {
            const auto& row = mInput.truth[mNextTruth];
            const std::int64_t dueUs = TruthTimeUs(mNextTruth) + mLagUs;
            if (dueUs > timeUs)
            {
                break;
            }
            const bool isNear = dueUs == timeUs || (mStarted && dueUs >= mBeforeUs &&
                                                    timeUs - mBeforeUs <= LONGEST_STEP_US);
            if (row.valid && isNear)
            {
                const bool counts = TruthTimeUs(mNextTruth) >= TruthTimeUs(0) + SETTLING_US;
                const auto compare = [&](Filter& filter, const Rotation& now)
                {
                    const Rotation then =
                        Between(mBeforeUs, filter.before, timeUs, now, static_cast<double>(dueUs));
                    filter.errors =
                        filter.truth.Compare(dueUs, then, Normalized(row.orientation), counts);
                };
                compare(mCore, core);
                compare(mKit, kit);
                mTruthUs = dueUs;
            }
        }
        if (mTruthUs >= 0 && timeUs - mTruthUs <= LONGEST_STEP_US)
        {
            AddError(Comparison::InclinationCore, timeUs, mCore.errors.inclination);
            AddError(Comparison::InclinationKit, timeUs, mKit.errors.inclination);
            Add(Comparison::HeadingCore, timeUs, mCore.errors.heading);
            Add(Comparison::HeadingKit, timeUs, mKit.errors.heading);
        }
    }

    /// Adds the headings themselves when there is no truth.
    void CompareHeadings(std::int64_t timeUs, const Rotation& core, const Rotation& kit)
    {
        if (!result.hasTruth)
        {
            Add(Comparison::HeadingCore, timeUs,
                mCore.truth.Compare(timeUs, core, Rotation(), false).heading);
            Add(Comparison::HeadingKit, timeUs,
                mKit.truth.Compare(timeUs, kit, Rotation(), false).heading);
        }
    }

    void ComparePredictions(std::int64_t timeUs, const Rotation& core, const Rotation& kit)
    {
        AddError(Comparison::PredictionCore, timeUs,
                 mCore.ahead20.Add(timeUs, core, core, SETTLING_US));
        AddError(Comparison::PredictionKit, timeUs,
                 mKit.ahead20.Add(timeUs, kit, mPredictor.Predict(0.02), SETTLING_US));
        mCore.ahead50.Add(timeUs, core, core, SETTLING_US);
        mKit.ahead50.Add(timeUs, kit, mPredictor.Predict(0.05), SETTLING_US);
    }

    void CompareEstimates(std::int64_t timeUs, const ImuSample& sample, const Rotation& core,
                          const Rotation& kit)
    {
        const double difference = InclinationBetween(core, kit) * DEGREES_PER_RADIAN;
        AddError(Comparison::Difference, timeUs, difference);
        if (timeUs >= SETTLING_US)
        {
            mDifferenceSquares += difference * difference;
            mDifferences += 1.0;
        }
        const auto& a = sample.accelerometer;
        Add(Comparison::AccelerationCore, timeUs, Length(Rotate(core, a) - GRAVITY));
        Add(Comparison::AccelerationKit, timeUs, Length(Rotate(kit, a) - GRAVITY));
        const Vector3 bias = mEstimator.GetBias() * DEGREES_PER_RADIAN;
        Add(Comparison::BiasX, timeUs, bias.x);
        Add(Comparison::BiasY, timeUs, bias.y);
        Add(Comparison::BiasZ, timeUs, bias.z);
    }

    const ComparisonInput& mInput;
    const std::int64_t mLagUs;
    double mApartSeconds = 0.0; // closer stretches are drawn as one
    std::array<Envelope, Comparison::TRACKS> mEnvelopes;
    std::array<Peaks, Comparison::TRACKS> mPeaks;
    std::array<std::vector<Comparison::Stretch>, 3> mStretches;
    OrientationEstimator mEstimator;
    Predictor mPredictor;
    Filter mCore;
    Filter mKit;
    std::size_t mNextTruth = 0;
    std::int64_t mTruthUs = -1; // the time of the last comparison with the truth
    bool mStarted = false;
    std::int64_t mBeforeUs = 0;
    std::uint32_t mSequence = 0;
    double mDifferenceSquares = 0.0;
    double mDifferences = 0.0;
};

} // namespace

Comparison CompareFilters(const ComparisonInput& input, std::size_t mostPoints)
{
    Check(input);
    Comparer comparer(input, mostPoints);
    for (std::size_t i = 0; i < input.reports.size(); ++i)
    {
        comparer.Take(i);
    }
    comparer.Finish();
    return std::move(comparer.result);
}

} // namespace qltkit
