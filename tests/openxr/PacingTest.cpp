#include "OpenXr.h"

#include <algorithm>

namespace qltxr
{

TEST(FrameClockTest, DisplayTimesAreOnePeriodApartAlsoBeforeThePhase)
{
    const FrameClock clock(100, 1030);
    const std::pair<XrTime, XrTime> cases[] = {
        {1030, 1130}, {1031, 1130}, {1129, 1130}, {1130, 1230}, {1029, 1030}, {930, 1030}, {5, 30}};
    for (const auto& [time, expected] : cases)
    {
        EXPECT_EQ(clock.NextAfter(time), expected) << time;
    }
}

TEST(FrameClockTest, TheClockFollowsTheDisplayGently)
{
    const XrDuration period = FrameClock::DEFAULT_PERIOD;
    FrameClock clock(period, 0);
    const XrDuration late = 4000000;
    XrTime last = clock.NextAfter(0);
    for (int i = 1; i < 300; ++i)
    {
        clock.Observe(i * period + late);
        const XrTime next = clock.NextAfter(last + period / 2);
        EXPECT_LE(std::abs(next - last - period), 100000) << i;
        last = next;
    }
    const XrDuration off = (last - late) % period;
    EXPECT_LE(std::min(off, period - off), 16);
}

// The times are those of a clock with a period of 100. A program wakes up two periods before its
// display time.
TEST(FramePacerTest, ALateProgramIsForgiven)
{
    const FrameClock clock(100, 0);
    FramePacer pacer;
    const auto next = [&](XrTime now) { return pacer.Next(clock, now); };
    EXPECT_EQ(next(1010).displayTime, 1200);
    EXPECT_EQ(next(1020).displayTime, 1300);
    FramePacer::Slot slot = next(1120);
    EXPECT_EQ(slot.displayTime, 1400);
    EXPECT_EQ(slot.wakeTime, 1200);
    slot = next(2000); // the program is six frames late
    EXPECT_EQ(slot.displayTime, 2200);
    EXPECT_LE(slot.wakeTime, 2000);
    EXPECT_EQ(next(2001).displayTime, 2300) << "and on time again";
}

// The test uses the interface of programs and sleeps by a real clock.
TEST_F(HeadlessTest, WaitFrameKeepsThePeriodForTwoThreads)
{
    XrFrameState state{XR_TYPE_FRAME_STATE};
    XrTime last = 0;
    const XrTime begin = Now();
    constexpr int FRAMES = 30;
    for (int i = 0; i < FRAMES; ++i)
    {
        ASSERT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
        EXPECT_GT(state.predictedDisplayTime, Now() - state.predictedDisplayPeriod);
        if (last != 0)
        {
            const XrDuration step = state.predictedDisplayTime - last;
            const XrDuration offGrid = step % state.predictedDisplayPeriod;
            EXPECT_LT(std::min(offGrid, state.predictedDisplayPeriod - offGrid), 100000);
        }
        last = state.predictedDisplayTime;
        ASSERT_EQ(BeginFrame(session, nullptr), XR_SUCCESS);
        ASSERT_EQ(End({}, last), XR_SUCCESS);
    }
    const double period = static_cast<double>(state.predictedDisplayPeriod);
    const double average = static_cast<double>(Now() - begin) / FRAMES;
    EXPECT_GT(average, 0.9 * period);
}

TEST(SwapchainRulesTest, CreationIsCheckedFieldByField)
{
    const XrSwapchainCreateInfo good{XR_TYPE_SWAPCHAIN_CREATE_INFO,
                                     nullptr,
                                     0,
                                     XR_SWAPCHAIN_USAGE_COLOR_ATTACHMENT_BIT,
                                     7,
                                     1,
                                     64,
                                     64,
                                     1,
                                     1,
                                     1};
    const auto result = [&good](auto change)
    {
        XrSwapchainCreateInfo info = good;
        change(info);
        try
        {
            RequireCreateInfo(info, {7});
            return XR_SUCCESS;
        }
        catch (const Failure& failure)
        {
            return failure.result;
        }
    };
    EXPECT_EQ(result([](auto&) {}), XR_SUCCESS);
    EXPECT_EQ(result([](auto& i) { i.format = 8; }), XR_ERROR_SWAPCHAIN_FORMAT_UNSUPPORTED);
    EXPECT_EQ(result([](auto& i) { i.width = 0; }), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(result([](auto& i) { i.height = MAX_SWAPCHAIN_SIZE + 1; }),
              XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(result([](auto& i) { i.width = i.height = MAX_SWAPCHAIN_SIZE; }), XR_SUCCESS);
    EXPECT_EQ(result([](auto& i) { i.sampleCount = 0; }), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(result([](auto& i) { i.sampleCount = 2; }), XR_ERROR_FEATURE_UNSUPPORTED);
    EXPECT_EQ(result([](auto& i) { i.arraySize = 0; }), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(result([](auto& i) { i.mipCount = 0; }), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(result([](auto& i) { i.mipCount = 7; }), XR_SUCCESS); // the sizes are 64, 32, ... 1
    EXPECT_EQ(result([](auto& i) { i.mipCount = 8; }), XR_ERROR_FEATURE_UNSUPPORTED);
    EXPECT_EQ(result([](auto& i) { i.faceCount = 2; }), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(result([](auto& i) { i.faceCount = 6; }), XR_ERROR_FEATURE_UNSUPPORTED);
    EXPECT_EQ(result([](auto& i) { i.createFlags = 1; }), XR_ERROR_FEATURE_UNSUPPORTED);
    EXPECT_EQ(result([](auto& i) { i.createFlags = 64; }), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(result([](auto& i) { i.usageFlags = 1 << 20; }), XR_ERROR_VALIDATION_FAILURE);
}

TEST(SwapchainRulesTest, ImagesAreWaitedForAndReleasedInTheOrderOfTheirAcquisition)
{
    SwapchainImages images(XrSwapchainCreateInfo{XR_TYPE_SWAPCHAIN_CREATE_INFO});
    EXPECT_THROW(images.NextToWait(), Failure);
    EXPECT_EQ(images.Newest(), SwapchainImages::NONE);
    EXPECT_EQ(images.Acquire(), 0u);
    EXPECT_EQ(images.Acquire(), 1u);
    EXPECT_EQ(images.Acquire(), 2u);
    EXPECT_THROW(images.Acquire(), Failure);
    EXPECT_THROW(images.NextToRelease(), Failure) << "not waited for";
    EXPECT_EQ(images.NextToWait(), 0u);
    images.Waited();
    EXPECT_THROW(images.NextToWait(), Failure) << "not released";
    images.Release();
    EXPECT_EQ(images.Newest(), 0u);
    EXPECT_EQ(images.NextToWait(), 1u);
    EXPECT_EQ(images.Acquire(), 0u);
}

TEST(SwapchainRulesTest, AStaticImageIsAcquiredOnce)
{
    SwapchainImages images(XrSwapchainCreateInfo{XR_TYPE_SWAPCHAIN_CREATE_INFO, nullptr,
                                                 XR_SWAPCHAIN_CREATE_STATIC_IMAGE_BIT});
    EXPECT_EQ(images.Count(), 1u);
    EXPECT_EQ(images.Acquire(), 0u);
    images.Waited();
    images.Release();
    EXPECT_THROW(images.Acquire(), Failure);
    EXPECT_EQ(images.Newest(), 0u);
}

TEST(ConfigurationTest, SettingsAreReadAndMistakesAreNamedWithTheirPlace)
{
    const Configuration good = ParseConfiguration(
        R"({"source": "simulator", "filter": "core", "mirror": "640x360", "rate_hz": 90,
            "person": {"ipd_m": 0.07, "eye_height_m": 1.2}})",
        "f.json");
    EXPECT_TRUE(good.complaints.empty());
    EXPECT_EQ(good.source.name, "simulator");
    EXPECT_EQ(good.source.filter, qltkit::PoseFilter::Core);
    EXPECT_EQ(good.output.width, 640u);
    EXPECT_EQ(good.rateHz, 90.0);
    EXPECT_EQ(good.person.ipdM, 0.07);
    EXPECT_EQ(good.person.neckToEyeUpM, DefaultPerson().neckToEyeUpM);
    EXPECT_FALSE(ParseConfiguration(R"({"mirror": "off"})", "f.json").output.window);

    const std::pair<const char*, const char*> mistakes[] = {
        {R"({"source": 5})", "f.json: source is to be a text"},
        {R"({"filter": "best"})", "f.json: filter is to be \"kit\" or \"core\""},
        {R"({"mirror": "640"})", "f.json: mirror is to be \"off\" or a size"},
        {R"({"rate_hz": 0})", "f.json: rate_hz is to be a number from 1 to 1000"},
        {R"({"person": {"ipd_m": "wide"}})", "f.json: person: ipd_m is to be a number"},
        {R"({"person": 3})", "f.json: person is to be an object"},
        {R"({"sorce": "x"})", "f.json: sorce is not a setting"},
        {R"([])", "f.json is to be an object"},
        {R"({"source")", "f.json: "}};
    for (const auto& [text, expected] : mistakes)
    {
        const Configuration read = ParseConfiguration(text, "f.json");
        ASSERT_EQ(read.complaints.size(), 1u) << text;
        EXPECT_EQ(read.complaints[0].find(expected), 0u) << read.complaints[0];
        EXPECT_EQ(read.person.ipdM, DefaultPerson().ipdM) << "the default stays";
    }
}

} // namespace qltxr
