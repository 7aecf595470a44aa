// Exceptions between a program and the shipped library.
#include <qlt/qlt.h>

#include <gtest/gtest.h>

namespace
{

void ThrowTimeout(const wchar_t*, const wchar_t*, unsigned)
{
    throw VRExceptionTimeout(VR_STATUS_ERROR_TIMEOUT, L"late!");
}

/// Through a frame of the library: normalising a zero vector reports to the handler, which throws.
void ThrowThroughTheLibrary()
{
    const qlt::AssertionHandler previous = qlt::SetAssertionHandler(ThrowTimeout);
    try
    {
        qlt::Vec3 zero;
        zero.Normalize();
    }
    catch (...)
    {
        qlt::SetAssertionHandler(previous);
        throw;
    }
}

} // namespace

TEST(ExceptionBoundaryTest, AnExceptionIsCaughtByItsTypeAndItsBases)
{
    try
    {
        ThrowThroughTheLibrary();
        FAIL();
    }
    catch (const VRExceptionTimeout& e)
    {
        EXPECT_EQ(e.status, VR_STATUS_ERROR_TIMEOUT);
        EXPECT_STREQ(e.what(), "late");
    }
    EXPECT_THROW(ThrowThroughTheLibrary(), VRException);
    EXPECT_THROW(ThrowThroughTheLibrary(), std::exception);
}

TEST(ExceptionBoundaryTest, KindsAreToldApart)
{
    try
    {
        ThrowThroughTheLibrary();
        FAIL();
    }
    catch (const VRExceptionEvent&)
    {
        FAIL();
    }
    catch (const VRException& e)
    {
        EXPECT_NE(dynamic_cast<const VRExceptionTimeout*>(&e), nullptr);
        EXPECT_EQ(dynamic_cast<const VRExceptionSoftware*>(&e), nullptr);
    }
}

TEST(ShippedLibraryTest, TracksWithTheSimulator)
{
    qlt::SimulatorTracker tracker;
    EXPECT_TRUE(tracker.Start());
    while (tracker.GetPredictedOrientation(0.0f).w() == 1.0f)
    {
    }
    EXPECT_TRUE(tracker.Stop());
    EXPECT_GT(tracker.GetOrientation().x(), 0.0f);
}

TEST(ShippedLibraryTest, FindsNoHeadsetWithoutDriver)
{
    qlt::Hmd hmd;
    hmd.Start();
    EXPECT_FALSE(hmd.IsConnected());
    hmd.Stop();
}
