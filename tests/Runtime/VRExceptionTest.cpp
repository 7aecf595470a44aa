#include <qlt/Runtime/VRException.h>

#include "fakes/ProcessEnd.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <type_traits>

namespace
{

std::string What(const std::wstring& text)
{
    return VRException(VR_STATUS_ERROR_EVENT, text).what();
}

template <typename Kind>
class VRExceptionKindTest : public testing::Test
{
};

using Kinds =
    testing::Types<VRException, VRExceptionTimeout, VRExceptionEvent, VRExceptionSoftware>;
TYPED_TEST_SUITE(VRExceptionKindTest, Kinds);

} // namespace

TEST(VRExceptionTest, ACodeAloneGivesTheTextOfTheCode)
{
    const VRException exception(VR_STATUS_ERROR_EVENT);
    EXPECT_EQ(exception.status, VR_STATUS_ERROR_EVENT);
    EXPECT_STREQ(exception.what(), "Error VR_STATUS_ERROR_EVENT (23)");
    EXPECT_STREQ(VRException(VR_STATUS_OK).what(), "Error VR_STATUS_OK (0)");
}

TEST(VRExceptionTest, ACodeOutsideTheListKeepsItsValue)
{
    const VRException exception(static_cast<VR_STATUS>(35));
    EXPECT_EQ(static_cast<int>(exception.status), 35);
    EXPECT_STREQ(exception.what(), "Error VR_STATUS (35)");
    EXPECT_STREQ(VRException(static_cast<VR_STATUS>(-7)).what(), "Error VR_STATUS (-7)");
}

TEST(VRExceptionTest, AWideTextLosesItsLastCharacter)
{
    EXPECT_EQ(What(L"abc"), "ab");
    EXPECT_EQ(What(L"a"), "");
    EXPECT_EQ(What(L"Timeout waiting for event 'e'"), "Timeout waiting for event 'e");
}

TEST(VRExceptionTest, AtMost1023CharactersSurvive)
{
    for (const auto& [length, survive] :
         {std::pair(2, 1), {3, 2}, {1023, 1022}, {1024, 1023}, {1025, 1023}, {2000, 1023}})
    {
        std::wstring text;
        std::string expected;
        for (int i = 0; i < length; ++i)
        {
            text.push_back(static_cast<wchar_t>(L'a' + i % 26));
            if (i < survive)
            {
                expected.push_back(static_cast<char>('a' + i % 26));
            }
        }
        EXPECT_EQ(What(text), expected) << length;
    }
}

TEST(VRExceptionTest, AWideTextEndsAtItsFirstZero)
{
    EXPECT_EQ(What(std::wstring(L"abcde\0fgh", 9)), "abcde");
    EXPECT_EQ(What(std::wstring(L"\0abc", 4)), "");
    EXPECT_EQ(What(std::wstring(L"abc\0", 4)), "abc"); // the zero was the last character
}

TEST(VRExceptionTest, ValuesUpTo255BecomeOneByteAndLargerOnesEndTheText)
{
    EXPECT_EQ(What(L"a\x7f\x80\xff!"), "a\x7f\x80\xff");
    EXPECT_EQ(What(L"ab\x100"
                   L"cd"),
              "ab");
    EXPECT_EQ(What(L"\x20ac 100"), "");
    EXPECT_EQ(What(L"abc\x100"), "abc"); // it was the last character
    EXPECT_EQ(What({L'a', static_cast<wchar_t>(-61), L'b'}), "a");
    EXPECT_EQ(What(std::wstring(1100, L'a') + L'\x100'), std::string(1023, 'a'));
}

TEST(VRExceptionDeathTest, AnEmptyTextEndsTheProcessAsAFailedRangeCheck)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(VRExceptionSoftware(VR_STATUS_ERROR_SOFTWARE, L""), EndedByRangeCheck, "");
}

TEST(VRExceptionTest, TheFieldsFollowTheBase)
{
    const VRException exception(VR_STATUS_OK);
    const auto* base = reinterpret_cast<const char*>(&exception);
    EXPECT_EQ(reinterpret_cast<const char*>(&exception.status) - base,
              static_cast<std::ptrdiff_t>(sizeof(std::exception)));
    EXPECT_EQ(reinterpret_cast<const char*>(&exception.message) - base,
              static_cast<std::ptrdiff_t>(sizeof(std::exception) + 8)); // aligned
}

TYPED_TEST(VRExceptionKindTest, IsCaughtByItsTypeAndByItsBases)
{
    static_assert(sizeof(TypeParam) == sizeof(VRException));
    const auto raise = [] { throw TypeParam(VR_STATUS_ERROR_TIMEOUT, L"Timeout!"); };
    try
    {
        raise();
    }
    catch (const TypeParam& exception)
    {
        EXPECT_EQ(exception.status, 17);
    }
    try
    {
        raise();
    }
    catch (const VRException& exception)
    {
        EXPECT_EQ(exception.status, 17);
        EXPECT_EQ(exception.message, "Timeout");
    }
    try
    {
        raise();
    }
    catch (const std::exception& exception)
    {
        EXPECT_STREQ(exception.what(), "Timeout");
    }
}

TYPED_TEST(VRExceptionKindTest, ACopyIsEqualAndIndependent)
{
    TypeParam original(VR_STATUS_ERROR_EVENT, L"first.");
    const TypeParam copy(original);
    TypeParam assigned(VR_STATUS_OK, L"other.");
    assigned = original;
    original.message = "second";
    EXPECT_STREQ(original.what(), "second"); // the characters of the field
    EXPECT_STREQ(copy.what(), "first");
    EXPECT_STREQ(assigned.what(), "first");
    EXPECT_EQ(copy.status, VR_STATUS_ERROR_EVENT);
    EXPECT_EQ(assigned.status, VR_STATUS_ERROR_EVENT);
}

TEST(VRExceptionTest, TheKindsAreToldApart)
{
    const VRExceptionTimeout timeout(VR_STATUS_ERROR_TIMEOUT, L"late!");
    const std::exception& exception = timeout;
    EXPECT_NE(dynamic_cast<const VRExceptionTimeout*>(&exception), nullptr);
    EXPECT_EQ(dynamic_cast<const VRExceptionEvent*>(&exception), nullptr);
    EXPECT_EQ(dynamic_cast<const VRExceptionSoftware*>(&exception), nullptr);
}
