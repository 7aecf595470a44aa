#include <qlt/Runtime/Assert.h>
#include <qlt/Runtime/Log.h>

#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace
{

std::mutex gMutex;
std::vector<std::string> gLines;

void Keep(qlt::LogLevel level, const char* line)
{
    const std::lock_guard<std::mutex> lock(gMutex);
    gLines.push_back((level == qlt::LogLevel::Info ? "info: " : "error: ") + std::string(line));
}

} // namespace

TEST(LogTest, TheDefaultPrintsEachLineOnTheStreamOfItsLevel)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    qlt::WriteLog(qlt::LogLevel::Info, "one");
    qlt::WriteLog(qlt::LogLevel::Error, "two");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "one\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "two\n");
}

// The tracker prints lines for a connection, for a short read and for a broken precondition.
TEST(LogTest, AHandlerReceivesEveryLineAndNothingIsPrinted)
{
    gLines.clear();
    EXPECT_EQ(qlt::SetLogHandler(Keep), nullptr);
    ScriptedHeadset headset;
    OrientationListener listener;
    headset.host.QueueRead(ReportWriter(1), 63);
    headset.Start(listener);
    while (headset.host.closed == 0)
    {
        std::this_thread::yield();
    }
    headset.End();
    qlt::ReportAssertion(L"a < b", L"Math/MathUtil", 26);
    EXPECT_EQ(qlt::SetLogHandler(nullptr), Keep);
    EXPECT_EQ(headset.out + headset.err, "");
    ASSERT_GE(gLines.size(), 4u);
    EXPECT_EQ(gLines[0], "info: USB Connected");
    EXPECT_EQ(gLines[1], "error: Read 63 instead of 64!");
    EXPECT_EQ(gLines[2], "info: USB Disconnected");
    EXPECT_EQ(gLines.back(), "error: Assertion failed: a < b, file Math/MathUtil, line 26");
}
