#include <qlt/Runtime/Usb.h>
#include <qlt/Sensors/Hmd.h>

#include <gtest/gtest.h>

TEST(NoUsbHostTest, ABuildWithoutLibusbSaysSoAndFindsNoHeadset)
{
    qlt::UsbHost& host = qlt::UsbHost::System();
    EXPECT_EQ(host.Name(), "built without libusb");
    EXPECT_EQ(host.CountDevices(), 0u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Open(0), nullptr);
    qlt::Hmd headset;
    EXPECT_FALSE(headset.IsConnected());
}
