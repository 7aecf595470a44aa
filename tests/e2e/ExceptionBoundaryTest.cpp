// Exceptions pass between a program and the shipped library, which may have different runtimes.
#include <qlt/qlt.h>

#include <gtest/gtest.h>

namespace
{

/// The exception passes through the library: Normalize reports a zero vector to the handler, which
/// throws.
void ThrowThroughTheLibrary()
{
    qlt::SetAssertionHandler([](const wchar_t*, const wchar_t*, unsigned)
                             { throw VRExceptionTimeout(VR_STATUS_ERROR_TIMEOUT, L"late!"); });
    qlt::Vec3().Normalize();
}

} // namespace

TEST(ExceptionBoundaryTest, AnExceptionIsCaughtByItsTypeAndItsBases)
{
    EXPECT_THROW(ThrowThroughTheLibrary(), VRExceptionTimeout);
    EXPECT_THROW(ThrowThroughTheLibrary(), std::exception);
    try
    {
        ThrowThroughTheLibrary();
    }
    catch (const VRExceptionEvent&)
    {
        FAIL() << "The exception has the wrong type.";
    }
    catch (const VRException& e)
    {
        EXPECT_NE(dynamic_cast<const VRExceptionTimeout*>(&e), nullptr);
        EXPECT_EQ(dynamic_cast<const VRExceptionSoftware*>(&e), nullptr);
        EXPECT_EQ(e.status, VR_STATUS_ERROR_TIMEOUT);
        EXPECT_STREQ(e.what(), "late");
    }
    qlt::SetAssertionHandler(nullptr);
}
