#include <qlt/Runtime/Assert.h>

#include "Runtime/Check.h"

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

#define QLT_SOURCE_FILE L"Runtime/AssertTest"
#define LARGEST 10

namespace
{

/// Starts four threads that report a hundred times each while `meanwhile` runs.
template <typename Meanwhile>
void ReportFromThreads(Meanwhile meanwhile)
{
    std::vector<std::future<void>> reporters(4);
    for (auto& reporter : reporters)
    {
        reporter = std::async(std::launch::async,
                              []
                              {
                                  for (int i = 0; i < 100; ++i)
                                  {
                                      qlt::ReportAssertion(L"a < b", L"Math/MathUtil", 4000000000U);
                                  }
                              });
    }
    meanwhile();
}

} // namespace

TEST(AssertTest, TheDefaultPrintsWholeLinesOnStandardError)
{
    testing::internal::CaptureStderr();
    ReportFromThreads([] {});
    std::string expected;
    for (int i = 0; i < 400; ++i)
    {
        expected += "Assertion failed: a < b, file Math/MathUtil, line 4000000000\n";
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
}

TEST(AssertTest, EveryReportReachesOneHandlerWhileHandlersChange)
{
    static std::atomic<int> reports;
    reports = 0;
    const qlt::AssertionHandler first = [](const auto*, const auto*, unsigned) { ++reports; };
    const qlt::AssertionHandler second = [](const auto*, const auto*, unsigned) { ++reports; };
    testing::internal::CaptureStderr();
    EXPECT_EQ(qlt::SetAssertionHandler(first), nullptr);
    ReportFromThreads(
        [=]
        {
            for (int i = 0; i < 1000; ++i)
            {
                EXPECT_EQ(qlt::SetAssertionHandler(second), first);
                EXPECT_EQ(qlt::SetAssertionHandler(first), second);
            }
        });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(reports, 400);
    EXPECT_EQ(qlt::SetAssertionHandler(nullptr), first);
    EXPECT_EQ(qlt::SetAssertionHandler(nullptr), nullptr);
}

TEST(AssertTest, AConditionIsEvaluatedOnceAndReportedAsWrittenWhenItFails)
{
    AssertionRecorder recorder;
    int value = 10;
    QLT_CHECK(++value == 11);
    const int line = __LINE__;
    QLT_CHECK(value <= LARGEST); // the report shows the name of a macro
    QLT_CHECK_TEXT(value == 0, L"by another name");
    QLT_CHECK_LINE(value < LARGEST, 269);
    const std::string file = "|Runtime/AssertTest|";
    EXPECT_EQ(recorder.Take(),
              (std::vector<std::string>{"value <= LARGEST" + file + std::to_string(line + 1),
                                        "by another name" + file + std::to_string(line + 2),
                                        "value < LARGEST" + file + "269"}));
}
