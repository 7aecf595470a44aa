// What SystemError.h promises, of every wing.
#include "Runtime/SystemError.h"

#include <gtest/gtest.h>

#include <thread>

TEST(SystemErrorTest, TheLastErrorBelongsToTheThread)
{
    qlt::SetLastSystemError(5);
    std::thread(
        []
        {
            EXPECT_EQ(qlt::LastSystemError(), 0u);
            qlt::SetLastSystemError(7);
        })
        .join();
    EXPECT_EQ(qlt::LastSystemError(), 5u);
}

TEST(SystemErrorTest, KnownErrorsHaveDifferentTexts)
{
    EXPECT_FALSE(qlt::SystemErrorText(2).empty());
    EXPECT_NE(qlt::SystemErrorText(2), qlt::SystemErrorText(5));
}

TEST(SystemErrorDeathTest, AFailedRangeCheckEndsTheProcess)
{
    EXPECT_EXIT(qlt::EndProcessOnRangeCheck(), QLT_RANGE_CHECK_END, "");
}
