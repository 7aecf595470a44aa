#include "Runtime/LastErrorText.h"

#include "Runtime/SystemError.h"

#include <qlt/Runtime/VRException.h>

#include <gtest/gtest.h>

TEST(LastErrorTextTest, IsEmptyWithoutAKnownError)
{
    for (const std::uint32_t code : {0U, 0x2FFFFFFFU})
    {
        qlt::SetLastSystemError(code);
        EXPECT_EQ(GetLastErrorText(), L"");
    }
}

TEST(LastErrorTextTest, IsTheFirstHalfOfTheTextByteByByte)
{
    constexpr std::uint32_t FILE_NOT_FOUND = 2; // every system knows this code
    const std::u16string text = qlt::SystemErrorText(FILE_NOT_FOUND);
    ASSERT_GT(text.size(), 4U);
    // The result has one signed byte of the text's memory for each character of the text.
    const auto* bytes = reinterpret_cast<const signed char*>(text.data());
    const std::wstring expected(bytes, bytes + text.size());
    qlt::SetLastSystemError(FILE_NOT_FOUND);
    const std::wstring result = GetLastErrorText();
    EXPECT_EQ(result, expected);
    EXPECT_EQ(result[1], L'\0');
    // An exception therefore shows only the first character.
    EXPECT_EQ(VRException(VR_STATUS_ERROR_EVENT, L"Cannot set event (" + result + L")").what(),
              std::string("Cannot set event (") + static_cast<char>(text[0]));
}
