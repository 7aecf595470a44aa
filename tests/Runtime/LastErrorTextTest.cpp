#include "Runtime/LastErrorText.h"

#include "Runtime/SystemError.h"

#include <qlt/Runtime/VRException.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

namespace
{

/// File not found, on every system.
constexpr std::uint32_t KNOWN_ERROR = 2;

} // namespace

TEST(LastErrorTextTest, IsEmptyWithoutALastError)
{
    qlt::SetLastSystemError(0);
    EXPECT_EQ(GetLastErrorText(), L"");
}

TEST(LastErrorTextTest, IsEmptyForACodeThatTheSystemDoesNotKnow)
{
    qlt::SetLastSystemError(0x2FFFFFFF);
    EXPECT_EQ(GetLastErrorText(), L"");
}

TEST(LastErrorTextTest, IsTheFirstHalfOfTheTextByteByByte)
{
    const std::u16string text = qlt::SystemErrorText(KNOWN_ERROR);
    ASSERT_GT(text.size(), 4U);
    // As many bytes as the text has characters, out of its memory, with their signs.
    std::wstring expected;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        signed char byte = 0;
        std::memcpy(&byte, reinterpret_cast<const char*>(text.data()) + i, 1);
        expected.push_back(static_cast<wchar_t>(byte));
    }
    qlt::SetLastSystemError(KNOWN_ERROR);
    const std::wstring result = GetLastErrorText();
    EXPECT_EQ(result, expected);
    EXPECT_EQ(result[1], L'\0');
}

TEST(LastErrorTextTest, AnExceptionShowsItsFirstCharacterOnly)
{
    qlt::SetLastSystemError(KNOWN_ERROR);
    const std::wstring text = L"Cannot set event (" + GetLastErrorText() + L")";
    const std::string first(1, static_cast<char>(qlt::SystemErrorText(KNOWN_ERROR)[0]));
    EXPECT_EQ(VRException(VR_STATUS_ERROR_EVENT, text).what(), "Cannot set event (" + first);
}

TEST(LastErrorTextTest, TheErrorIsTheCallingThreadsOwn)
{
    qlt::SetLastSystemError(KNOWN_ERROR);
    std::wstring ofOther = L"not asked";
    std::thread(
        [&ofOther]
        {
            qlt::SetLastSystemError(0);
            ofOther = GetLastErrorText();
        })
        .join();
    EXPECT_EQ(ofOther, L"");
    qlt::SetLastSystemError(KNOWN_ERROR);
    EXPECT_NE(GetLastErrorText(), L"");
}
