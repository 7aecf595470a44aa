// Every wing must do what SystemError.h says.
#include "Runtime/SystemError.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(SystemErrorTest, TheLastErrorBelongsToTheThread)
{
    std::atomic<int> step{0};
    std::thread other(
        [&step]
        {
            while (step != 1)
            {
            }
            EXPECT_EQ(qlt::LastSystemError(), 0u);
            qlt::SetLastSystemError(7);
            step = 2;
        });
    qlt::SetLastSystemError(5);
    step = 1;
    while (step != 2) // a call of the system could change the error
    {
    }
    EXPECT_EQ(qlt::LastSystemError(), 5u);
    other.join();
}

TEST(SystemErrorTest, KnownErrorsHaveDifferentTexts)
{
    EXPECT_FALSE(qlt::SystemErrorText(2).empty());
    EXPECT_NE(qlt::SystemErrorText(2), qlt::SystemErrorText(5));
}
