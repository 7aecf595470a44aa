#include <qltkit/Capture/RecordingCheck.h>

#include "Capture/Format.h"
#include "Capture/RecordingStep.h"

#include <algorithm>

namespace qltkit
{

namespace
{

/// Goes through the reports once. Each report is compared to the last one that made sense.
class Scan
{
public:
    explicit Scan(const Recording& recording)
        : mRecording(recording)
        , mReports(recording.reports)
    {
        while (mNext < mReports.size())
        {
            Take(mNext);
        }
        result.steps = mReports.empty() ? 0 : mReports.size() - 1;
        result.isRecording = result.implausibleSteps * 100 <= result.steps &&
                             (result.steps > 0 || recording.extraBytes == 0);
    }

    RecordingCheck result;

private:
    void Take(std::size_t i)
    {
        mNext = i + 1;
        const std::size_t last = mLast;
        mLast = i;
        if (IsSwapped(last, i))
        {
            if (i != 0)
            {
                NoteGap(last, i + 1);
            }
            Note(i, 1, "it is swapped with report " + std::to_string(i + 1));
            mNext = i + 2;
        }
        else if (i != 0 && IsPlausible(StepBetween(mReports[last], mReports[i])))
        {
            NoteGap(last, i);
        }
        else if (i != 0)
        {
            TakeImplausible(last, i);
        }
    }

    bool IsSwapped(std::size_t last, std::size_t i) const
    {
        if (i + 1 == mReports.size())
        {
            return false;
        }
        const RecordingStep back = StepBetween(mReports[i + 1], mReports[i]);
        return back.reports == 1 && IsPlausible(back) &&
               (i == 0 || IsPlausible(StepBetween(mReports[last], mReports[i + 1])));
    }

    void TakeImplausible(std::size_t last, std::size_t i)
    {
        const RecordingStep step = StepBetween(mReports[last], mReports[i]);
        if (step.reports == 0 && step.timeUs == 0)
        {
            Note(i, 1, "it repeats report " + std::to_string(last));
        }
        else if (i + 1 < mReports.size() &&
                 IsPlausible(StepBetween(mReports[last], mReports[i + 1])))
        {
            Note(i, 2, "it does not fit between the reports around it");
            mLast = i + 1;
            mNext = i + 2;
        }
        else if (const std::size_t shift = FindShift(i))
        {
            Note(i, mReports.size() - i,
                 Format("from here on the reports begin %zu bytes late", shift));
            mNext = mReports.size();
        }
        else
        {
            Note(i, 1,
                 Format("the sequence steps by %d and the device time by %.6f s", step.reports,
                        step.timeUs / 1e6));
        }
    }

    /// Returns the number of bytes by which the reports from this one on begin too late. 0 when no
    /// shift gives plausible reports.
    std::size_t FindShift(std::size_t i)
    {
        constexpr std::size_t MAX_TRIES = 16; // other files have a jump at every report
        std::size_t shift = 0;
        if (mReports.size() - i >= 4 && ++mTries <= MAX_TRIES)
        {
            while (shift < qlt::SENSOR_REPORT_SIZE && !GoesOn(i, shift))
            {
                ++shift;
            }
        }
        return shift % qlt::SENSOR_REPORT_SIZE;
    }

    /// True when the reports that begin `shift` bytes after this one continue plausibly for some
    /// steps.
    bool GoesOn(std::size_t i, std::size_t shift) const
    {
        constexpr std::size_t ENOUGH = 8;
        // When the shift is wrong by two bytes, sequence and time both step 65536 times too far.
        // Such steps agree with each other, so limit them.
        constexpr std::int32_t MAX_REPORTS = 100;
        const std::uint8_t* bytes = mReports[i].data() + shift;
        for (std::size_t step = 0; step < std::min(mReports.size() - i - 2, ENOUGH); ++step)
        {
            const std::uint8_t* next = bytes + qlt::SENSOR_REPORT_SIZE;
            const RecordingStep found = StepFrom(bytes, next);
            if (found.reports > MAX_REPORTS || !IsPlausible(found))
            {
                return false;
            }
            bytes = next;
        }
        return true;
    }

    void NoteGap(std::size_t last, std::size_t i)
    {
        const RecordingStep step = StepBetween(mReports[last], mReports[i]);
        const std::int64_t lost = step.reports - 1;
        std::string text;
        if (step.timeUs > MAX_STEP_US * step.reports)
        {
            text = Format("it comes %.3f s after the one before", step.timeUs / 1e6);
        }
        if (lost > 0)
        {
            text += Format("%s%lld %s lost before it", text.empty() ? "" : ", and ",
                           static_cast<long long>(lost), lost == 1 ? "report is" : "reports are");
        }
        if (!text.empty())
        {
            Note(i, 0, text);
        }
    }

    void Note(std::size_t i, std::size_t implausibleSteps, const std::string& text)
    {
        result.faults.push_back({i, mRecording.playedUs[i], implausibleSteps == 0, text});
        result.implausibleSteps += implausibleSteps;
    }

    const Recording& mRecording;
    const std::vector<qlt::SensorReport>& mReports;
    std::size_t mLast = 0;
    std::size_t mNext = 0;
    std::size_t mTries = 0;
};

} // namespace

RecordingCheck CheckRecording(const Recording& recording) { return Scan(recording).result; }

} // namespace qltkit
