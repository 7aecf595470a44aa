#include <qlt/Runtime/VRException.h>

#include "fakes/ProcessEnd.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

std::string What(const std::wstring& text)
{
    return VRException(VR_STATUS_ERROR_EVENT, text).what();
}

} // namespace

TEST(VRExceptionTest, AWideTextLosesItsLastCharacterAndEndsAtAZeroOrAbove255)
{
    EXPECT_EQ(What(L"abc"), "ab");
    EXPECT_EQ(What(std::wstring(L"abcde\0fgh", 9)), "abcde");
    EXPECT_EQ(What(std::wstring(L"abc\0", 4)), "abc"); // the dropped last character is the zero
    EXPECT_EQ(What(L"a\x7f\x80\xff!"), "a\x7f\x80\xff");
    EXPECT_EQ(What(L"ab\x100 cd"), "ab");
    EXPECT_EQ(What(L"abc\x100"), "abc"); // the only character is dropped
    EXPECT_EQ(What({L'a', static_cast<wchar_t>(-61), L'b'}), "a");
    for (const std::size_t length : {1024U, 1025U, 2000U}) // at most 1023 characters remain
    {
        EXPECT_EQ(What(std::wstring(length, L'a')), std::string(1023, 'a'));
    }
}

TEST(VRExceptionDeathTest, AnEmptyTextEndsTheProcessAsAFailedRangeCheck)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(VRExceptionSoftware(VR_STATUS_ERROR_SOFTWARE, L""), EndedByRangeCheck, "");
}

TEST(VRExceptionTest, TheFieldsFollowTheBase)
{
    const VRException exception(static_cast<VR_STATUS>(35));
    const auto* base = reinterpret_cast<const char*>(&exception);
    EXPECT_EQ(reinterpret_cast<const char*>(&exception.status) - base,
              static_cast<std::ptrdiff_t>(sizeof(std::exception)));
    EXPECT_EQ(reinterpret_cast<const char*>(&exception.message) - base,
              static_cast<std::ptrdiff_t>(sizeof(std::exception) + 8)); // aligned
    EXPECT_EQ(static_cast<int>(exception.status), 35);
    EXPECT_STREQ(exception.what(), "Error VR_STATUS (35)");
}

// The program that uses the installed library catches its exceptions by their types.
static_assert(std::is_base_of_v<VRException, VRExceptionTimeout> &&
              !std::is_base_of_v<VRExceptionSoftware, VRExceptionTimeout>);

TEST(VRExceptionTest, ACopyIsIndependentAndTheTextIsThatOfTheField)
{
    VRExceptionTimeout original(VR_STATUS_ERROR_TIMEOUT, L"Timeout!");
    const VRException copy = original;
    original.message = "changed";
    EXPECT_STREQ(copy.what(), "Timeout");
    EXPECT_STREQ(original.what(), "changed");
}
