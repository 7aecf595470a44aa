// The compositor with graphics that only write down what they are told.
#include "Compositor/Compositor.h"
#include "Compositor/SteadyTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>

namespace qltxr
{

namespace
{

constexpr XrDuration MS = 1000000;
constexpr XrDuration PERIOD = 10 * MS;

/// The head's heading, in quarters of a turn, as a step at a moment that nobody foresees.
class SteppingSource final : public PoseSource
{
public:
    HeadMoment At(XrTime) const override
    {
        const double half = mStepped ? 0.5 : 0.0;
        return {{std::cos(half), 0.0, std::sin(half), 0.0}, {}, true, true};
    }
    std::string Describe() const override { return "a step"; }

    std::atomic<bool> mStepped{false};
};

struct Shown
{
    XrTime time = 0; // when the drawing was done
    bool black = true;
    bool headStepped = false;  // by the pose that the picture was turned to
    bool frameStepped = false; // by the pose that the program has rendered for
};

struct Notes
{
    std::mutex mutex;
    std::vector<Shown> shown;
    std::atomic<bool> complete{true};
    std::atomic<XrDuration> drawTime{0};
    std::atomic<int> entered{0};

    std::vector<Shown> Take()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(shown, {});
    }
};

class NotingGraphics final : public Graphics
{
public:
    explicit NotingGraphics(Notes& notes)
        : mNotes(notes)
    {
    }

    std::vector<std::int64_t> Formats() const override { return {1}; }
    XrDuration RefreshPeriod() const override { return 0; }
    XrDuration ScanTime() const override { return 0; }
    bool HasOutput() const override { return true; }
    std::string DescribeOutput() const override { return "notes"; }
    void Enter() override { ++mNotes.entered; }
    void Leave() override { --mNotes.entered; }
    std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo&, std::uint32_t) override
    {
        throw Failure{XR_ERROR_OUT_OF_MEMORY};
    }
    bool IsComplete(const Frame&) override { return mNotes.complete; }
    void Draw(const Composition& composition) override
    {
        std::this_thread::sleep_for(std::chrono::nanoseconds(mNotes.drawTime));
        Shown shown;
        shown.time = Now();
        shown.black = composition.frame == nullptr;
        shown.headStepped = composition.scanStart.head.turn.y > 0.1;
        shown.frameStepped =
            !shown.black && composition.frame->layers[0].views[0].pose.turn.y > 0.1;
        const std::lock_guard lock(mNotes.mutex);
        mNotes.shown.push_back(shown);
    }
    XrTime Present() override { return 0; }
    WindowEvents PollWindow() override { return {}; }
    Picture ReadPicture() override { return {1, 1, {1, 2, 3}}; }
    std::size_t CountObjects() const override { return 0; }

private:
    Notes& mNotes;
};

class NoImages final : public ImageSet
{
    void Enumerate(XrSwapchainImageBaseHeader*) const override {}
    void Released(std::uint32_t) override {}
};

void SleepMs(double ms)
{
    std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(ms));
}

class CompositorTest : public testing::Test
{
protected:
    CompositorTest()
        : mStep(new SteppingSource)
        , mHead(std::unique_ptr<PoseSource>(mStep), DefaultPerson())
    {
    }

    /// A frame that was rendered for where the head is now.
    void Submit(const std::shared_ptr<ImageSet>& images = nullptr, std::uint32_t image = 0)
    {
        Frame& frame = mCompositor.NextFrame();
        frame.layerCount = 1;
        frame.layers[0].views[0].pose = mHead.At(Now()).pose;
        frame.layers[0].views[0].source.images = images;
        frame.layers[0].views[0].source.image = image;
        mCompositor.Submit();
    }

    void WaitForPictures(std::uint64_t more)
    {
        const std::uint64_t goal = mCompositor.Counts().composed + more;
        while (mCompositor.Counts().composed < goal)
        {
            SleepMs(0.2);
        }
    }

    Notes mNotes;
    SteppingSource* const mStep;
    HeadModel mHead;
    FrameClock mClock{PERIOD, Now()};
    Compositor mCompositor{std::make_unique<NotingGraphics>(mNotes), mHead, mClock};
};

} // namespace

TEST_F(CompositorTest, AStalledProgramStillGetsAPictureForEachDisplayTime)
{
    Submit();
    WaitForPictures(2);
    mNotes.Take();
    const XrTime begin = Now();
    SleepMs(300);
    const double periods = static_cast<double>(Now() - begin) / PERIOD;
    const std::vector<Shown> shown = mNotes.Take();
    EXPECT_GT(static_cast<double>(shown.size()), 0.5 * periods); // of a machine that others use
    EXPECT_LE(static_cast<double>(shown.size()), periods + 2);
    for (const Shown& one : shown)
    {
        EXPECT_FALSE(one.black);
    }
    mCompositor.Blank();
    WaitForPictures(1);
    EXPECT_TRUE(mNotes.Take().back().black);
}

// The head steps at once, as no prediction sees it. The picture is turned to it in the next
// picture; the program's own frames show it after they were rendered.
TEST_F(CompositorTest, AStepOfTheHeadIsSeenWithinAPeriodAndTheDrawing)
{
    constexpr XrDuration DRAW = 2 * MS;
    mNotes.drawTime = DRAW;
    std::atomic<bool> running{true};
    std::thread program(
        [&]
        {
            FramePacer pacer;
            while (running)
            {
                const FramePacer::Slot slot = pacer.Next(mClock, Now());
                std::this_thread::sleep_until(ToTimePoint(slot.wakeTime));
                const Rigid pose = mHead.At(slot.displayTime).pose;
                SleepMs(5.0); // renders
                mCompositor.NextFrame().layerCount = 1;
                mCompositor.NextFrame().layers[0].views[0].pose = pose;
                mCompositor.Submit();
            }
        });
    double best = 1e9;
    double bestWithout = 1e9;
    for (int round = 0; round < 8; ++round)
    {
        mStep->mStepped = false;
        SleepMs(60.0 + 1.3 * round);
        mNotes.Take();
        const XrTime step = Now();
        mStep->mStepped = true;
        SleepMs(80.0);
        const std::vector<Shown> shown = mNotes.Take();
        const auto since = [&](bool Shown::*what)
        {
            const auto first = std::find_if(shown.begin(), shown.end(),
                                            [what](const Shown& one) { return one.*what; });
            return first == shown.end() ? 1e9 : static_cast<double>(first->time - step) / MS;
        };
        best = std::min(best, since(&Shown::headStepped));
        bestWithout = std::min(bestWithout, since(&Shown::frameStepped));
        if (since(&Shown::headStepped) < 1e9)
        {
            RecordProperty("step_to_picture_ms_" + std::to_string(round),
                           std::to_string(since(&Shown::headStepped)) + " / " +
                               std::to_string(since(&Shown::frameStepped)));
        }
    }
    running = false;
    program.join();
    // The best of the rounds, as others use the machine: the rule holds for each of them.
    EXPECT_LE(best, static_cast<double>(PERIOD + DRAW) / MS + 1.0);
    EXPECT_GT(bestWithout, best);
}

TEST_F(CompositorTest, AFrameThatIsStillBeingDrawnWaitsUnlessTheOneBeforeIsTaken)
{
    const auto images = std::make_shared<NoImages>();
    Submit(images, 0);
    WaitForPictures(2);
    mStep->mStepped = true;
    mNotes.complete = false;
    Submit(images, 1);
    WaitForPictures(3);
    EXPECT_FALSE(mNotes.Take().back().frameStepped) << "the old frame is shown";
    EXPECT_TRUE(mCompositor.WaitUntilUnread(*images, 0, Now() + 1000 * MS));
    WaitForPictures(3);
    EXPECT_TRUE(mNotes.Take().back().frameStepped) << "the old frame's image is the program's";
}

TEST_F(CompositorTest, AnImageThatIsBeingReadIsWaitedForUntilTheDeadline)
{
    const auto images = std::make_shared<NoImages>();
    mNotes.drawTime = 60 * MS;
    Submit(images, 2);
    WaitForPictures(1);
    SleepMs(15.0); // into the next drawing, mostly
    EXPECT_TRUE(mCompositor.WaitUntilUnread(*images, 0, Now())) << "another image";
    const XrTime begin = Now();
    if (!mCompositor.WaitUntilUnread(*images, 2, begin + 2 * MS))
    {
        EXPECT_GE(Now(), begin + 2 * MS);
    }
    EXPECT_TRUE(mCompositor.WaitUntilUnread(*images, 2, Now() + 5000 * MS));
}

TEST_F(CompositorTest, FramesFasterThanTheDisplayAreCountedAsDropped)
{
    for (int i = 0; i < 5; ++i)
    {
        Submit();
    }
    const CompositorCounts counts = mCompositor.Counts();
    EXPECT_EQ(counts.submitted, 5u);
    EXPECT_GE(counts.dropped, 3u);
}

TEST_F(CompositorTest, AfterStopThereIsAResultForEverything)
{
    EXPECT_THROW(mCompositor.CreateImages({}, 1), Failure); // of the graphics
    EXPECT_EQ(mCompositor.TakePicture().rgb, std::vector<std::uint8_t>({1, 2, 3}));
    EXPECT_EQ(mNotes.entered, 1);
    mCompositor.Stop();
    EXPECT_EQ(mNotes.entered, 0);
    try
    {
        mCompositor.TakePicture();
        ADD_FAILURE() << "no failure";
    }
    catch (const Failure& failure)
    {
        EXPECT_EQ(failure.result, XR_ERROR_SESSION_LOST);
    }
    EXPECT_TRUE(mCompositor.WaitUntilUnread(NoImages(), 0, Now()));
}

} // namespace qltxr
