// Replaces the machine's USB by a host with one headset, which turns about y and sends frames.
// Tests in other languages use the whole library with it.
#include <qlt/Runtime/Usb.h>

#include "fakes/ReportWriter.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace
{

void NextMillisecond() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

/// Makes a frame of the camera arrive. It has a header whose words add up to zero, and a grey
/// image.
struct Frame final : qlt::UsbTransfer
{
    Frame(std::uint8_t* to, std::uint32_t bytes)
        : buffer(to)
        , size(bytes)
    {
    }
    bool Wait(std::uint32_t) override
    {
        NextMillisecond();
        return true;
    }
    bool Finish(std::uint32_t& length) override
    {
        const std::uint32_t header[6] = {0xDEADBEEF, 0, 0, 0, 0, 0U - 0xDEADBEEF};
        std::fill_n(buffer, size, std::uint8_t{0x7F});
        std::copy_n(reinterpret_cast<const std::uint8_t*>(header), sizeof header, buffer);
        length = size;
        return true;
    }
    std::uint8_t* const buffer;
    const std::uint32_t size;
};

struct EndPoint final : qlt::UsbEndPoint
{
    EndPoint(std::uint8_t itsAddress, std::uint8_t kind)
        : address(itsAddress)
        , attributes(kind)
    {
    }
    std::uint8_t Attributes() const override { return attributes; }
    std::uint8_t Address() const override { return address; }
    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        NextMillisecond();
        ++sequence;
        const ReportWriter report = ReportWriter(sequence, sequence * 1000).I16(16, 18771);
        length = static_cast<std::uint32_t>(report.size());
        std::copy(report.begin(), report.end(), buffer);
        return true;
    }
    std::unique_ptr<qlt::UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                                    void*) override
    {
        return std::make_unique<Frame>(buffer, length);
    }
    const std::uint8_t address;
    const std::uint8_t attributes;
    std::uint32_t sequence = 0;
};

struct Headset final : qlt::VendorUsbDevice
{
    std::uint16_t VendorId() const override { return 0x04B4; }
    std::uint16_t ProductId() const override { return 0x00F1; }
    std::uint8_t EndPointCount() const override { return 3; }
    qlt::UsbEndPoint& EndPoint(std::uint8_t index) override { return endPoints[index]; }
    ::EndPoint endPoints[3] = {{0, 0}, {0x81, 3}, {0x82, 2}};
};

struct Host final : qlt::UsbHost
{
    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override
    {
        return std::make_unique<Headset>();
    }
};

} // namespace

qlt::UsbHost& qlt::UsbHost::System()
{
    static Host& host = *new Host; // it is never deleted, so it outlives every tracker
    return host;
}
