#include "Runtime/VREvent.h"

#include <qlt/Runtime/VRException.h>

#include "Runtime/SystemError.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{

/// The first character of the system's text for what is wrong with no event, which is all that a
/// text shows of it. Asked for beforehand, because throwing may change the last error.
std::string ErrorInitial()
{
    qlt::SetNativeEvent(nullptr);
    const std::u16string text = qlt::SystemErrorText(qlt::LastSystemError());
    return text.empty() ? "" : std::string(1, static_cast<char>(text[0]));
}

bool IsSignalled(const VREvent& event)
{
    return qlt::WaitNativeEvent(event.Handle(), 0) == qlt::WAIT_SIGNALLED;
}

} // namespace

TEST(VREventTest, AManualEventStaysSignalledAndAnAutomaticOneDoesNot)
{
    for (const bool manual : {true, false})
    {
        VREvent event;
        event.Create(L"", manual);
        EXPECT_FALSE(IsSignalled(event));
        event.Set();
        event.Wait(0);
        EXPECT_EQ(IsSignalled(event), manual);
    }
}

// The texts lose their last character, the apostrophe.
TEST(VREventTest, AWaitThatRunsOutNamesTheEvent)
{
    VREvent event;
    event.Create(L"qlt test event", true);
    try
    {
        event.Wait(1);
        FAIL();
    }
    catch (const VRExceptionTimeout& e)
    {
        EXPECT_EQ(e.status, VR_STATUS_ERROR_TIMEOUT);
        EXPECT_STREQ(e.what(), "Timeout waiting for event 'qlt test event");
    }
}

TEST(VREventTest, WithoutAnEventSetAndWaitFail)
{
    const VREvent empty;
    const std::string initial = ErrorInitial();
    try
    {
        empty.Set();
        FAIL();
    }
    catch (const VRExceptionEvent& e)
    {
        EXPECT_EQ(e.status, VR_STATUS_ERROR_EVENT);
        EXPECT_EQ(e.what(), "Cannot set event (" + initial);
    }
    try
    {
        empty.Wait(1000000);
        FAIL();
    }
    catch (const VRExceptionTimeout& e)
    {
        EXPECT_EQ(e.status, VR_STATUS_ERROR_TIMEOUT);
        EXPECT_EQ(e.what(), "Error waiting for event '' (" + initial);
    }
}

TEST(VREventTest, AnEventThatCannotBeMadeFailsAtItsFirstUse)
{
    VREvent event;
    event.Create(L"no\\namespace", true);
    if (event.Handle() != nullptr)
    {
        GTEST_SKIP() << "every text is a name here";
    }
    EXPECT_THROW(event.Set(), VRExceptionEvent);
    EXPECT_THROW(event.Wait(0), VRExceptionTimeout);
}

TEST(VREventTest, TheLastCopyClosesTheEvent)
{
    VREvent copy;
    qlt::NativeEventHandle handle = nullptr;
    {
        VREvent event;
        event.Create(L"", true);
        copy = event;
        handle = event.Handle();
    }
    copy.Set();
    copy.Wait(0);
    copy = VREvent();
    EXPECT_FALSE(qlt::SetNativeEvent(handle));
}

TEST(VREventTest, AnAttachedEventIsNotClosedAndHasNoName)
{
    const qlt::NativeEventHandle handle = qlt::CreateNativeEvent(L"", true);
    {
        VREvent event;
        event.Create(L"qlt replaced", true);
        event.Attach(handle);
        try
        {
            event.Wait(0);
            FAIL();
        }
        catch (const VRExceptionTimeout& e)
        {
            EXPECT_STREQ(e.what(), "Timeout waiting for event '");
        }
    }
    EXPECT_TRUE(qlt::SetNativeEvent(handle));
    EXPECT_TRUE(qlt::CloseNativeEvent(handle));
}

TEST(VREventTest, ANameIsShared)
{
    VREvent a;
    VREvent b;
    a.Create(L"qlt shared event", false);
    b.Create(L"qlt shared event", true); // the first one's reset mode holds
    a.Set();
    EXPECT_TRUE(IsSignalled(b));
    EXPECT_FALSE(IsSignalled(a));
}
