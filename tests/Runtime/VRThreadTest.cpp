#include "Runtime/VRThread.h"

#include <qlt/Runtime/VRException.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <system_error>

namespace
{

class Worker final : public VRThread
{
public:
    Worker() { Init(); }

    ~Worker() { End(); }

    using VRThread::mStopDisabled;
    bool StopIsSignalled() const { return qlt::WaitNativeEvent(mStopEvent.Handle(), 0) == 0; }

    std::function<void()> prepare = [] {};
    std::atomic<int> ready{0};
    std::atomic<int> ended{0};

private:
    void Run() override
    {
        prepare();
        ++ready;
        mStartedEvent.Set();
        mStopEvent.Wait(qlt::WAIT_FOREVER);
        ++ended;
    }
};

} // namespace

TEST(VRThreadTest, StartReturnsWhenTheWorkerIsReadyAndStopWhenItHasEnded)
{
    Worker worker;
    worker.Stop(true); // there is nothing to stop yet
    EXPECT_FALSE(worker.StopIsSignalled());
    worker.Start(true, qlt::WAIT_FOREVER);
    EXPECT_EQ(worker.ready, 1);
    worker.mStopDisabled = 1;
    worker.Stop(true);
    EXPECT_FALSE(worker.StopIsSignalled());
    worker.mStopDisabled = 0;
    worker.Stop(true);
    EXPECT_EQ(worker.ended, 1);
}

TEST(VRThreadTest, ASecondStartSeesTheStopRequestOfTheFirst)
{
    Worker worker;
    worker.Start(true, qlt::WAIT_FOREVER);
    worker.Stop(false);
    EXPECT_TRUE(worker.StopIsSignalled());
    worker.Join();
    EXPECT_EQ(worker.ended, 1);
    worker.Start(false, 0);
    worker.Join();
    EXPECT_EQ(worker.ended, 2);
    worker.Start(false, 0);
    worker.Stop(true);
    EXPECT_EQ(worker.ended, 3);
}

TEST(VRThreadTest, AWorkerContinuesAfterAStartThatTimedOutAndCannotJoinItself)
{
    std::atomic<bool> released{false};
    Worker worker;
    worker.prepare = [&]
    {
        while (!released) // this wait is necessary, because Start writes what Join reads
        {
            std::this_thread::yield();
        }
        EXPECT_THROW(worker.Join(), std::system_error);
    };
    EXPECT_THROW(worker.Start(true, 1), VRExceptionTimeout);
    worker.Stop(false);
    worker.Stop(true); // the worker was already asked, so this call does not wait
    released = true;
    worker.Join();
    EXPECT_EQ(worker.ended, 1);
}
