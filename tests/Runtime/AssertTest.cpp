#include <qlt/Runtime/Assert.h>

#include "Runtime/Check.h"

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#define QLT_SOURCE_FILE L"Runtime/AssertTest"
#define LARGEST 10

namespace
{

std::atomic<int> gFirst{0};
std::atomic<int> gSecond{0};

void CountFirst(const wchar_t*, const wchar_t*, unsigned) { ++gFirst; }

void CountSecond(const wchar_t*, const wchar_t*, unsigned) { ++gSecond; }

using Texts = std::vector<std::string>;

} // namespace

TEST(AssertTest, TheDefaultPrintsOneLineOnStandardErrorAndReturns)
{
    testing::internal::CaptureStderr();
    qlt::ReportAssertion(L"length > FLT_EPSILON", L"Math/Vector", 4000000000U);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Assertion failed: length > FLT_EPSILON, file Math/Vector, line 4000000000\n");
}

TEST(AssertTest, AHandlerReceivesTextFileAndLineInsteadOfTheDefault)
{
    AssertionRecorder recorder;
    testing::internal::CaptureStderr();
    qlt::ReportAssertion(L"!IsTracking()", L"Sensors/Tracker", 185);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(recorder.Take(), Texts{"!IsTracking()|Sensors/Tracker|185"});
}

TEST(AssertTest, SettingAHandlerReturnsThePreviousOne)
{
    EXPECT_EQ(qlt::SetAssertionHandler(CountFirst), nullptr);
    EXPECT_EQ(qlt::SetAssertionHandler(CountSecond), CountFirst);
    EXPECT_EQ(qlt::SetAssertionHandler(nullptr), CountSecond);
    EXPECT_EQ(qlt::SetAssertionHandler(nullptr), nullptr);
}

TEST(AssertTest, NullRestoresTheDefault)
{
    gFirst = 0;
    qlt::SetAssertionHandler(CountFirst);
    qlt::SetAssertionHandler(nullptr);
    testing::internal::CaptureStderr();
    qlt::ReportAssertion(L"a < b", L"Math/MathUtil", 7);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Assertion failed: a < b, file Math/MathUtil, line 7\n");
    EXPECT_EQ(gFirst, 0);
}

TEST(AssertTest, EveryReportReachesOneHandlerWhileThreadsReportAndHandlersChange)
{
    gFirst = 0;
    gSecond = 0;
    qlt::SetAssertionHandler(CountFirst);
    std::vector<std::thread> reporters(4);
    for (std::thread& reporter : reporters)
    {
        reporter = std::thread(
            []
            {
                for (int i = 0; i < 1000; ++i)
                {
                    qlt::ReportAssertion(L"condition", L"file", 1);
                }
            });
    }
    for (int i = 0; i < 1000; ++i)
    {
        const qlt::AssertionHandler next = i % 2 == 0 ? CountSecond : CountFirst;
        EXPECT_NE(qlt::SetAssertionHandler(next), next);
    }
    for (std::thread& reporter : reporters)
    {
        reporter.join();
    }
    qlt::SetAssertionHandler(nullptr);
    EXPECT_EQ(gFirst + gSecond, 4000);
}

TEST(AssertTest, LinesOfSeveralThreadsDoNotMix)
{
    testing::internal::CaptureStderr();
    std::vector<std::thread> reporters(4);
    for (std::thread& reporter : reporters)
    {
        reporter = std::thread(
            []
            {
                for (int i = 0; i < 100; ++i)
                {
                    qlt::ReportAssertion(L"condition", L"file", 1);
                }
            });
    }
    for (std::thread& reporter : reporters)
    {
        reporter.join();
    }
    std::string expected;
    for (int i = 0; i < 400; ++i)
    {
        expected += "Assertion failed: condition, file file, line 1\n";
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
}

TEST(AssertTest, AFailedCheckReportsItsConditionAsWritten)
{
    AssertionRecorder recorder;
    const int value = 11;
    QLT_CHECK(value <= LARGEST); // a macro in the condition keeps its name
    QLT_CHECK_LINE(value < LARGEST, 269);
    QLT_CHECK_TEXT(value == 0, L"by another name");
    const Texts reports = recorder.Take();
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(reports[0], "value <= LARGEST|Runtime/AssertTest|" + std::to_string(__LINE__ - 5));
    EXPECT_EQ(reports[1], "value < LARGEST|Runtime/AssertTest|269");
    EXPECT_EQ(reports[2].rfind("by another name|Runtime/AssertTest|", 0), 0U);
}

TEST(AssertTest, AConditionIsEvaluatedOnceAndReportsNothingWhenItHolds)
{
    AssertionRecorder recorder;
    int evaluated = 0;
    QLT_CHECK(++evaluated == 1);
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(recorder.Take(), Texts{});
}
