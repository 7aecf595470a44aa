#include "Runtime/VRThread.h"

#include <qlt/Runtime/VRException.h>

#include <gtest/gtest.h>

#include <atomic>
#include <system_error>

namespace
{

constexpr std::uint32_t FOREVER = qlt::WAIT_FOREVER;

class Worker final : public VRThread
{
public:
    ~Worker()
    {
        release = true;
        mStopDisabled = 0;
        Stop(true);
        Join();
    }

    void DisableStop() { mStopDisabled = 1; }
    bool StopIsSignalled() const { return qlt::WaitNativeEvent(mStopEvent.Handle(), 0) == 0; }

    std::atomic<bool> silent{false};   // does not say that it has started
    std::atomic<bool> joinSelf{false}; // tries the impossible
    std::atomic<bool> release{false};  // ends a silent one
    std::atomic<int> runs{0};
    std::atomic<int> ended{0};
    std::error_code joinError;

private:
    void Run() override
    {
        ++runs;
        while (silent && !release)
        {
            std::this_thread::yield();
        }
        if (joinSelf)
        {
            try
            {
                Join();
            }
            catch (const std::system_error& e)
            {
                joinError = e.code();
            }
        }
        mStartedEvent.Set();
        mStopEvent.Wait(FOREVER);
        ++ended;
    }
};

} // namespace

TEST(VRThreadTest, StartReturnsWhenTheWorkerIsReadyAndStopWhenItHasEnded)
{
    Worker worker;
    worker.Init();
    worker.Start(true, FOREVER);
    EXPECT_EQ(worker.runs, 1);
    worker.Stop(true);
    EXPECT_EQ(worker.ended, 1);
}

TEST(VRThreadTest, StopAndJoinOfAnIdleWorkerDoNothing)
{
    Worker worker;
    worker.Stop(true);
    worker.Join();
    worker.Init();
    worker.Stop(true);
    EXPECT_FALSE(worker.StopIsSignalled());
}

TEST(VRThreadTest, AStopIsAskedForOnceAndJoinedLater)
{
    Worker worker;
    worker.Init();
    worker.Start(true, FOREVER);
    worker.Stop(false);
    EXPECT_TRUE(worker.StopIsSignalled());
    worker.Stop(true); // asked for already
    worker.Join();
    EXPECT_EQ(worker.ended, 1);
}

TEST(VRThreadTest, ASecondStartMeetsTheStopOfTheFirst)
{
    Worker worker;
    worker.Init();
    worker.Start(true, FOREVER);
    worker.Stop(true);
    worker.Start(false, 0);
    worker.Join();
    EXPECT_EQ(worker.runs, 2);
    EXPECT_EQ(worker.ended, 2);
}

TEST(VRThreadTest, AStartThatRunsOutOfTimeLeavesTheWorkerRunning)
{
    Worker worker;
    worker.silent = true;
    worker.Init();
    EXPECT_THROW(worker.Start(true, 1), VRExceptionTimeout);
    worker.release = true;
    worker.Stop(true);
    EXPECT_EQ(worker.ended, 1);
}

TEST(VRThreadTest, ADisabledStopDoesNothing)
{
    Worker worker;
    worker.Init();
    worker.Start(true, FOREVER);
    worker.DisableStop();
    worker.Stop(true);
    EXPECT_FALSE(worker.StopIsSignalled());
}

TEST(VRThreadTest, AWorkerCannotJoinItself)
{
    Worker worker;
    worker.joinSelf = true;
    worker.silent = true;
    worker.Init();
    worker.Start(false, 0);
    worker.release = true; // no sooner, because Start writes what Join reads
    worker.Stop(true);
    EXPECT_EQ(worker.joinError, std::errc::resource_deadlock_would_occur);
}
