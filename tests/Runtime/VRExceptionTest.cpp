#include <qlt/Runtime/VRException.h>

#include "Runtime/LastErrorText.h"
#include "Runtime/SystemError.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

/// All codes in their order, written down apart from the header.
const char* const NAMES[] = {
    "OK",
    "ERROR_ARG",
    "ERROR_NULL_PTR",
    "ERROR_FILE_OPEN",
    "ERROR_FILE_READ",
    "ERROR_FILE_WRITE",
    "ERROR_FILE_CLOSE",
    "ERROR_FILE_STAT",
    "ERROR_ASSERTION",
    "ERROR_MEMORY",
    "ERROR_REGISTER_OFFSET",
    "ERROR_REGISTER_VALUE",
    "ERROR_QUEUE_EMPTY",
    "ERROR_DEVICE_NOT_PRESENT",
    "ERROR_DEVICE_NOT_INITIALIZED",
    "ERROR_DEVICE_BUSY",
    "ERROR_DEVICE_CORRUPTED",
    "ERROR_TIMEOUT",
    "ERROR_IOCTL",
    "ERROR_POLL",
    "ERROR_MUTEX",
    "ERROR_SOFTWARE",
    "ERROR_NOT_IMPLEMENTED",
    "ERROR_EVENT",
    "ERROR_SOCKET",
    "ERROR_SOCKET_READ",
    "ERROR_SOCKET_WRITE",
    "ERROR_SOCKET_CONNECTION",
    "ERROR_SOCKET_CONNECTION_TIMEOUT",
    "ERROR_NOT_SUPPORTED",
    "ERROR_PIPE",
    "ERROR_PIPE_BUSY",
    "ERROR_PIPE_PENDING",
    "ERROR_PIPE_DISCONNECTED",
    "ERROR_PROCESS_ALREADY_RUNNING",
};

std::string Narrowed(const std::wstring& text)
{
    return VRException(VR_STATUS_ERROR_ARG, text).what();
}

template <typename Kind>
void ExpectCaughtByEveryBase()
{
    try
    {
        throw Kind(VR_STATUS_ERROR_TIMEOUT, L"abc");
    }
    catch (const Kind& e)
    {
        EXPECT_EQ(e.status, 17);
    }
    try
    {
        throw Kind(VR_STATUS_ERROR_TIMEOUT, L"abc");
    }
    catch (const VRException& e)
    {
        const VRException copy(e);
        EXPECT_EQ(copy.status, 17);
        EXPECT_EQ(copy.message, "ab");
    }
    try
    {
        throw Kind(VR_STATUS_ERROR_TIMEOUT, L"abc");
    }
    catch (const std::exception& e)
    {
        EXPECT_STREQ(e.what(), "ab");
    }
}

} // namespace

TEST(VRExceptionTest, EveryCodeHasItsText)
{
    int code = 0;
    for (const char* name : NAMES)
    {
        const VRException e(static_cast<VR_STATUS>(code));
        EXPECT_EQ(e.status, code);
        EXPECT_EQ(e.message,
                  "Error VR_STATUS_" + std::string(name) + " (" + std::to_string(code) + ")");
        ++code;
    }
    EXPECT_EQ(code, 35);
}

TEST(VRExceptionTest, ACodeOutsideTheListKeepsItsValue)
{
    for (const int code : {35, -1, 1000000, INT32_MIN})
    {
        const VRException e(static_cast<VR_STATUS>(code));
        EXPECT_EQ(e.status, code);
        EXPECT_EQ(e.message, "Error VR_STATUS (" + std::to_string(code) + ")");
    }
    static_assert(std::is_same_v<std::underlying_type_t<VR_STATUS>, std::int32_t>);
}

TEST(VRExceptionTest, AWideTextLosesItsLastCharacter)
{
    EXPECT_EQ(Narrowed(L"abc"), "ab");
    EXPECT_EQ(Narrowed(L"a"), "");
    EXPECT_EQ(Narrowed(L"Cannot set event (x)"), "Cannot set event (x");
}

TEST(VRExceptionTest, AtMostAThousandAndTwentyThreeCharactersSurvive)
{
    for (const std::size_t length : {1022u, 1023u, 1024u, 1025u, 2000u})
    {
        EXPECT_EQ(Narrowed(std::wstring(length, L'x')),
                  std::string(std::min<std::size_t>(length, 1024) - 1, 'x'));
    }
}

TEST(VRExceptionTest, AWideTextEndsAtAZeroOrAtWhatIsNoByte)
{
    EXPECT_EQ(Narrowed(std::wstring(L"hello\0world", 11)), "hello");
    EXPECT_EQ(Narrowed(L"caf\u00E9s"), "caf\xE9");
    EXPECT_EQ(Narrowed(L"a\u00FF\u0100b"), "a\xFF");
    EXPECT_EQ(Narrowed(L"\u20AC1"), "");
}

TEST(VRExceptionTest, EveryKindIsCaughtByItsBases)
{
    ExpectCaughtByEveryBase<VRExceptionTimeout>();
    ExpectCaughtByEveryBase<VRExceptionEvent>();
    ExpectCaughtByEveryBase<VRExceptionSoftware>();
}

TEST(VRExceptionDeathTest, AnEmptyTextEndsTheProcess)
{
    EXPECT_DEATH(VRException(VR_STATUS_ERROR_SOFTWARE, L""), "");
}

TEST(LastErrorTextTest, WithoutAnErrorOrATextThereIsNone)
{
    qlt::SetLastSystemError(0);
    EXPECT_EQ(GetLastErrorText(), L"");
}

// The first half of the system's text, each character followed by a zero.
TEST(LastErrorTextTest, TheTextIsCopiedByteByByte)
{
    const std::uint32_t code = 2;
    const std::u16string text = qlt::SystemErrorText(code);
    ASSERT_GT(text.size(), 5u);
    qlt::SetLastSystemError(code);
    const std::wstring copied = GetLastErrorText();
    ASSERT_EQ(copied.size(), text.size());
    for (std::size_t i = 0; i < copied.size(); ++i)
    {
        EXPECT_EQ(copied[i], i % 2 == 0 ? static_cast<wchar_t>(text[i / 2]) : L'\0');
    }
    // So an exception shows its first character and no more.
    EXPECT_EQ(Narrowed(L"error (" + copied + L")"),
              std::string("error (") + static_cast<char>(text[0]));
}
