#include "source/HeadsetSearch.h"

#include "output/OutputFile.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace
{

constexpr std::uint16_t VENDOR_ID = 0x04B4;
constexpr std::uint16_t PRODUCT_ID = 0x00F1;
constexpr std::uint8_t INTERRUPT_TRANSFER = 3;
constexpr std::uint8_t CAMERA_ADDRESS = 0x82;
constexpr long FRAMES_IN_FLIGHT = 10;
constexpr long FRAME_BYTES = 0x388000;

using Device = std::unique_ptr<qlt::VendorUsbDevice>;

/// Opens the device that the part would use: the tracker takes the first device, and the camera
/// takes the first device with the headset's product number.
Device OpenCandidate(qlt::UsbHost& host, HeadsetPart part)
{
    Device device = host.OpenFirst();
    if (part == HeadsetPart::Sensors || device == nullptr || device->VendorId() != VENDOR_ID)
    {
        return device;
    }
    const std::uint32_t count = host.CountDevices();
    for (std::uint32_t i = 0; i < count && (device == nullptr || device->ProductId() != PRODUCT_ID);
         ++i)
    {
        device.reset(); // close it before the next one is opened
        device = host.Open(i);
    }
    return device;
}

bool HasEndPoint(qlt::VendorUsbDevice& device, HeadsetPart part)
{
    for (std::uint8_t i = 1; i < device.EndPointCount(); ++i)
    {
        const qlt::UsbEndPoint& endPoint = device.EndPoint(i);
        if (part == HeadsetPart::Sensors ? endPoint.Attributes() == INTERRUPT_TRANSFER
                                         : endPoint.Address() == CAMERA_ADDRESS)
        {
            return true;
        }
    }
    return false;
}

} // namespace

std::string WhyNoHeadset(qlt::UsbHost& host, HeadsetPart part)
{
    const Device device = OpenCandidate(host, part);
    if (device == nullptr)
    {
        const std::string problem = host.Problem();
        return problem.empty() ? "no headset is connected" : problem;
    }
    if (device->VendorId() != VENDOR_ID || device->ProductId() != PRODUCT_ID)
    {
        return OutputFile::Format("no headset is connected; the USB device %04X:%04X is another",
                                  device->VendorId(), device->ProductId());
    }
    if (!HasEndPoint(*device, part))
    {
        return OutputFile::Format("the headset has no endpoint for its %s",
                                  part == HeadsetPart::Sensors ? "reports" : "camera");
    }
    return {};
}

void RequireHeadset(HeadsetPart part)
{
    const std::string reason = WhyNoHeadset(qlt::UsbHost::System(), part);
    if (!reason.empty())
    {
        throw std::runtime_error(reason);
    }
}

void SayThatHeadsetIsAwaited()
{
    const std::string reason = WhyNoHeadset(qlt::UsbHost::System(), HeadsetPart::Sensors);
    if (!reason.empty())
    {
        std::fprintf(stderr, "qlt: %s; waiting for one\n", reason.c_str());
    }
}

std::string DescribeUsbMemory(long megabytes)
{
    const long frames = megabytes * 1048576 / FRAME_BYTES;
    if (megabytes == 0)
    {
        return "no limit";
    }
    if (frames >= FRAMES_IN_FLIGHT)
    {
        return OutputFile::Format("%ld MB, enough for the camera", megabytes);
    }
    return OutputFile::Format("%ld MB, which takes %ld of the camera's %ld frames in flight; "
                              "for all of them: ",
                              megabytes, frames, FRAMES_IN_FLIGHT) +
           "echo 64 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb";
}
