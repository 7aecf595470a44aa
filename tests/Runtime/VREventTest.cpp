#include "Runtime/VREvent.h"

#include <qlt/Runtime/VRException.h>

#include "Runtime/SystemError.h"

#include <gtest/gtest.h>

namespace
{

/// The status and the text of the exception that `call` throws. Its type must be exactly this one.
template <typename Kind, typename Call>
std::string Thrown(Call call)
{
    try
    {
        call();
    }
    catch (const Kind& e)
    {
        return std::to_string(e.status) + " " + e.what();
    }
    return "nothing";
}

} // namespace

// The texts lose their last character, the apostrophe.
TEST(VREventTest, AWaitThatTimesOutNamesTheEventAndAnAttachedOneHasNoName)
{
    const qlt::NativeEventHandle handle = qlt::CreateNativeEvent(L"", true);
    VREvent event;
    event.Create(L"qlt test event", true);
    EXPECT_EQ(Thrown<VRExceptionTimeout>([&] { event.Wait(1); }),
              "17 Timeout waiting for event 'qlt test event");
    event.Attach(handle);
    EXPECT_EQ(Thrown<VRExceptionTimeout>([&] { event.Wait(0); }), "17 Timeout waiting for event '");
    event = VREvent();
    EXPECT_TRUE(qlt::SetNativeEvent(handle));
    EXPECT_TRUE(qlt::CloseNativeEvent(handle));
}

TEST(VREventTest, WithoutAnEventSetAndWaitFail)
{
    // An exception shows only the first character of the system's text. Get it before the call,
    // because a throw may change the last error.
    qlt::SetNativeEvent(nullptr);
    const std::u16string text = qlt::SystemErrorText(qlt::LastSystemError()).substr(0, 1);
    const std::string initial(text.begin(), text.end());
    const VREvent empty;
    EXPECT_EQ(Thrown<VRExceptionEvent>([&] { empty.Set(); }), "23 Cannot set event (" + initial);
    EXPECT_EQ(Thrown<VRExceptionTimeout>([&] { empty.Wait(1000000); }),
              "17 Error waiting for event '' (" + initial);
}

TEST(VREventTest, AnEventThatCannotBeMadeFailsAtItsFirstUse)
{
    VREvent event;
    event.Create(L"no\\namespace", true);
    if (event.Handle() != nullptr)
    {
        GTEST_SKIP() << "Every text is a valid name on this system.";
    }
    EXPECT_THROW(event.Set(), VRExceptionEvent);
    EXPECT_THROW(event.Wait(0), VRExceptionTimeout);
}

TEST(VREventTest, TheSystemKeepsItsNameAndModeAndTheLastCopyClosesIt)
{
    VREvent event;
    VREvent second;
    event.Create(L"qlt shared event", true);
    second.Create(L"qlt shared event", false);
    VREvent copy = event;
    const qlt::NativeEventHandle handle = event.Handle();
    event = VREvent();
    copy.Set();
    second.Wait(0);
    second.Wait(0); // it keeps the manual mode of the first one
    copy = VREvent();
    EXPECT_FALSE(qlt::SetNativeEvent(handle));
}
