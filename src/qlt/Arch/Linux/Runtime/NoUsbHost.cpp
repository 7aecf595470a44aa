// The machine's own USB host in a build without libusb. It never has a device.
#include <qlt/Runtime/Usb.h>

namespace qlt
{
namespace
{

class NoUsbHost final : public UsbHost
{
public:
    std::unique_ptr<VendorUsbDevice> OpenFirst() override { return nullptr; }
    std::uint32_t CountDevices() override { return 0; }
    std::string Name() const override { return "built without libusb"; }
};

} // namespace

UsbHost& UsbHost::System()
{
    // It is never deleted, because a leaked tracker may use it.
    static UsbHost& host = *new NoUsbHost;
    return host;
}

} // namespace qlt
