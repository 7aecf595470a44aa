#include <qlt/Runtime/Assert.h>

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{

void Ignore(const wchar_t*, const wchar_t*, unsigned) {}

} // namespace

TEST(AssertTest, TheDefaultPrintsOneLineAndReturns)
{
    testing::internal::CaptureStderr();
    qlt::ReportAssertion(L"a < b", L"Sensors/Tracker", 42);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Assertion failed: a < b, file Sensors/Tracker, line 42\n");
}

TEST(AssertTest, AHandlerReplacesThePreviousOneAndNullRestoresTheDefault)
{
    EXPECT_EQ(qlt::SetAssertionHandler(Ignore), nullptr);
    testing::internal::CaptureStderr();
    qlt::ReportAssertion(L"a < b", L"Sensors/Tracker", 42);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(qlt::SetAssertionHandler(nullptr), Ignore);
    EXPECT_EQ(qlt::SetAssertionHandler(nullptr), nullptr);
}

TEST(AssertTest, ReportsOfSeveralThreadsAllArrive)
{
    AssertionRecorder assertions;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
    {
        threads.emplace_back(
            []
            {
                for (unsigned line = 0; line < 100; ++line)
                {
                    qlt::ReportAssertion(L"a", L"b", line);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(assertions.Take().size(), 800u);
}
