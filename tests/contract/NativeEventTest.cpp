// Every wing must do what NativeEvent.h says.
#include "Runtime/NativeEvent.h"

#include "Runtime/SystemError.h"

#include "fakes/ManualClock.h"

#include <gtest/gtest.h>

#include <future>
#include <vector>

namespace
{

using namespace qlt;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

class NativeEventTest : public testing::Test
{
protected:
    ~NativeEventTest() override
    {
        for (const NativeEventHandle handle : mHandles)
        {
            CloseNativeEvent(handle);
        }
    }

    NativeEventHandle Make(bool manual, const std::wstring& name = L"")
    {
        mHandles.push_back(CreateNativeEvent(name, manual));
        return mHandles.back();
    }

private:
    std::vector<NativeEventHandle> mHandles;
};

} // namespace

TEST_F(NativeEventTest, AnEventStartsUnsignalledAndTwoSetsCountAsOne)
{
    const NativeEventHandle event = Make(false);
    const NativeEventHandle other = Make(false);
    EXPECT_EQ(WaitNativeEvent(event, 0), WAIT_TIMED_OUT);
    EXPECT_TRUE(SetNativeEvent(event));
    EXPECT_TRUE(SetNativeEvent(event));
    EXPECT_EQ(WaitNativeEvent(other, 0), WAIT_TIMED_OUT) << "Two unnamed events must be different.";
    EXPECT_EQ(WaitNativeEvent(event, WAIT_FOREVER), WAIT_SIGNALLED);
    EXPECT_EQ(WaitNativeEvent(event, 0), WAIT_TIMED_OUT);
}

TEST_F(NativeEventTest, AWaitLastsAsLongAsItsTimeLimit)
{
    const NativeEventHandle event = Make(true);
    const auto start = steady_clock::now();
    EXPECT_EQ(WaitNativeEvent(event, 30), WAIT_TIMED_OUT);
    EXPECT_GE(steady_clock::now() - start, milliseconds(28));
}

TEST_F(NativeEventTest, AnAutomaticEventReleasesOneWaiterPerSetAndAManualOneEveryWaiter)
{
    const NativeEventHandle automatic = Make(false);
    const NativeEventHandle manual = Make(true);
    int written = 0; // it needs no atomic, because the event orders the accesses
    std::atomic<int> released{0};
    std::vector<std::future<void>> waiters;
    for (int i = 0; i < 8; ++i)
    {
        waiters.push_back(std::async(std::launch::async,
                                     [&]
                                     {
                                         WaitNativeEvent(manual, WAIT_FOREVER);
                                         EXPECT_EQ(written, 42);
                                         WaitNativeEvent(automatic, WAIT_FOREVER);
                                         ++released;
                                     }));
    }
    written = 42;
    SetNativeEvent(manual);
    for (int set = 1; set <= 8; ++set)
    {
        SetNativeEvent(automatic);
        Until([&] { return released >= set; });
        EXPECT_EQ(released, set);
        EXPECT_EQ(WaitNativeEvent(automatic, 0), WAIT_TIMED_OUT);
    }
}

TEST_F(NativeEventTest, AHandleThatIsNoEventFailsAtOnceWithAnError)
{
    const NativeEventHandle closed = CreateNativeEvent(L"", true);
    EXPECT_TRUE(CloseNativeEvent(closed));
    for (const NativeEventHandle handle : {NativeEventHandle(nullptr), closed})
    {
        SetLastSystemError(0);
        EXPECT_FALSE(SetNativeEvent(handle));
        EXPECT_NE(LastSystemError(), 0u);
        SetLastSystemError(0);
        EXPECT_EQ(WaitNativeEvent(handle, WAIT_FOREVER), WAIT_ERROR);
        EXPECT_NE(LastSystemError(), 0u);
        EXPECT_FALSE(CloseNativeEvent(handle));
    }
}

TEST_F(NativeEventTest, ANameMeansOneEventUntilItsLastHandleIsClosed)
{
    const std::wstring name = L"qlt contract event";
    const NativeEventHandle first = CreateNativeEvent(name, false);
    const NativeEventHandle second = CreateNativeEvent(name, true);
    SetNativeEvent(first);
    EXPECT_TRUE(CloseNativeEvent(first));
    EXPECT_EQ(WaitNativeEvent(second, 0), WAIT_SIGNALLED);
    // It keeps the automatic mode of the first one.
    EXPECT_EQ(WaitNativeEvent(second, 0), WAIT_TIMED_OUT);
    SetNativeEvent(second);
    EXPECT_TRUE(CloseNativeEvent(second));
    EXPECT_EQ(WaitNativeEvent(Make(true, name), 0), WAIT_TIMED_OUT); // it is a new event
}

TEST_F(NativeEventTest, AWaitForSeveralEventsTakesTheFirstSignalledOne)
{
    const NativeEventHandle events[] = {Make(true), Make(false), Make(false)};
    EXPECT_EQ(WaitNativeEvents(events, 3, 0), WAIT_TIMED_OUT);
    SetNativeEvent(events[2]);
    SetNativeEvent(events[1]);
    EXPECT_EQ(WaitNativeEvents(events, 3, WAIT_FOREVER), WAIT_SIGNALLED + 1);
    EXPECT_EQ(WaitNativeEvents(events, 3, 0), WAIT_SIGNALLED + 2); // nobody has taken its signal
    EXPECT_EQ(WaitNativeEvents(events, 3, 0), WAIT_TIMED_OUT);
    SetNativeEvent(events[0]);
    EXPECT_EQ(WaitNativeEvents(events, 3, 0), WAIT_SIGNALLED);
    EXPECT_EQ(WaitNativeEvents(events, 3, 0), WAIT_SIGNALLED);
}

TEST_F(NativeEventTest, AWaitForSeveralEventsIsWokenByAnyAndFailsForANonEvent)
{
    const NativeEventHandle events[] = {Make(false), Make(false)};
    for (std::uint32_t i = 0; i < 2; ++i)
    {
        auto result = std::async(std::launch::async,
                                 [&] { return WaitNativeEvents(events, 2, WAIT_FOREVER); });
        std::this_thread::sleep_for(milliseconds(5)); // by now the thread probably waits
        SetNativeEvent(events[i]);
        EXPECT_EQ(result.get(), WAIT_SIGNALLED + i);
    }
    const NativeEventHandle wrong[] = {events[0], nullptr};
    SetLastSystemError(0);
    EXPECT_EQ(WaitNativeEvents(wrong, 2, WAIT_FOREVER), WAIT_ERROR);
    EXPECT_NE(LastSystemError(), 0u);
}
