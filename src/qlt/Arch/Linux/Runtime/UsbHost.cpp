// The machine's own USB host over libusb. It finds the headset by its identifiers, because there is
// no driver class. It never opens other products of the chip's vendor (hubs, mice, development
// boards), because a claim takes a device from its own driver.
#include <qlt/Runtime/Usb.h>

#include "LibusbContext.h"
#include "LibusbTransfer.h"

#include <utility>

namespace qlt
{
namespace
{

constexpr LibusbContext::Ids HEADSET{0x04B4, 0x00F1};
constexpr std::uint32_t READ_TIMEOUT_MS = 10000;

using Gate = std::lock_guard<std::mutex>;

std::uint8_t TransferType(std::uint8_t attributes)
{
    const bool isInterrupt =
        (attributes & LIBUSB_TRANSFER_TYPE_MASK) == LIBUSB_ENDPOINT_TRANSFER_TYPE_INTERRUPT;
    return isInterrupt ? LIBUSB_TRANSFER_TYPE_INTERRUPT : LIBUSB_TRANSFER_TYPE_BULK;
}

/// An endpoint. SetTransferSize does nothing, because libusb and the kernel choose the size of the
/// requests.
class LibusbEndPoint final : public UsbEndPoint
{
public:
    LibusbEndPoint(libusb_device_handle* device, std::uint8_t address, std::uint8_t attributes)
        : mAttributes(attributes)
        , mPipe(std::make_shared<LibusbPipe>(device, address, TransferType(attributes)))
    {
    }

    std::uint8_t Attributes() const override { return mAttributes; }
    std::uint8_t Address() const override { return mPipe->address; }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        LibusbTransfer transfer(mPipe, buffer, length, nullptr);
        const bool hasEnded = transfer.Wait(READ_TIMEOUT_MS);
        transfer.Cancel();
        const bool succeeded = transfer.Finish(length); // the data may have come at the last moment
        length = hasEnded || succeeded ? length : 0;
        return succeeded;
    }

    std::unique_ptr<UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                               NativeEventHandle event) override
    {
        return std::make_unique<LibusbTransfer>(mPipe, buffer, length, event);
    }

    void AbortTransfers() override { mPipe->Abort(); }

private:
    std::uint8_t mAttributes;
    std::shared_ptr<LibusbPipe> mPipe;
};

class LibusbDevice final : public VendorUsbDevice
{
public:
    LibusbDevice(std::shared_ptr<LibusbContext> context, LibusbContext::Handle handle)
        : mContext(std::move(context))
        , mHandle(std::move(handle))
    {
        libusb_device* device = libusb_get_device(mHandle.get());
        libusb_get_device_descriptor(device, &mDescriptor);
        mEndPoints.emplace_back(mHandle.get(), std::uint8_t{0}, std::uint8_t{0});
        libusb_config_descriptor* configuration = nullptr;
        if (libusb_get_active_config_descriptor(device, &configuration) == LIBUSB_SUCCESS)
        {
            AddEndPoints(*configuration);
            libusb_free_config_descriptor(configuration);
        }
    }

    ~LibusbDevice() override
    {
        mEndPoints.clear();
        const Gate gate(LibusbContext::Gate());
        mHandle.reset();
        mContext.reset();
    }

    LibusbDevice(const LibusbDevice&) = delete;
    LibusbDevice& operator=(const LibusbDevice&) = delete;

    std::uint16_t VendorId() const override { return mDescriptor.idVendor; }
    std::uint16_t ProductId() const override { return mDescriptor.idProduct; }

    std::uint8_t EndPointCount() const override
    {
        return static_cast<std::uint8_t>(mEndPoints.size());
    }

    UsbEndPoint& EndPoint(std::uint8_t index) override { return mEndPoints.at(index); }

private:
    void AddEndPoints(const libusb_config_descriptor& configuration)
    {
        if (configuration.bNumInterfaces == 0 || configuration.interface->num_altsetting == 0)
        {
            return;
        }
        const libusb_interface_descriptor& setting = *configuration.interface->altsetting;
        for (std::uint8_t i = 0; i < setting.bNumEndpoints; ++i)
        {
            const libusb_endpoint_descriptor& endPoint = setting.endpoint[i];
            mEndPoints.emplace_back(mHandle.get(), endPoint.bEndpointAddress,
                                    endPoint.bmAttributes);
        }
    }

    std::shared_ptr<LibusbContext> mContext;
    LibusbContext::Handle mHandle;
    libusb_device_descriptor mDescriptor{};
    std::vector<LibusbEndPoint> mEndPoints;
};

/// The reason why libusb could not look for devices; empty when it could.
std::string WhyNotSearched(int error)
{
    return error == LIBUSB_SUCCESS
               ? std::string()
               : std::string("libusb cannot look for the headset: ") + libusb_error_name(error);
}

/// The reason why a connected headset was not opened; empty when it was.
std::string WhyNotOpened(int error)
{
    switch (error)
    {
    case LIBUSB_SUCCESS:
        return {};
    case LIBUSB_ERROR_ACCESS:
        return "no permission to open the headset; install the udev rule "
               "70-quelta-orbel-ixo.rules";
    case LIBUSB_ERROR_BUSY:
        return "another program has the headset open";
    case LIBUSB_ERROR_NO_DEVICE:
        return "the headset was unplugged just now, or its device file is missing";
    case LIBUSB_ERROR_NO_MEM:
        return "there is not enough memory to open the headset";
    default:
        return std::string("the headset cannot be opened: ") + libusb_error_name(error);
    }
}

class LibusbHost final : public UsbHost
{
public:
    std::unique_ptr<VendorUsbDevice> OpenFirst() override { return Open(0); }

    std::uint32_t CountDevices() override
    {
        const Gate gate(LibusbContext::Gate());
        int error = LIBUSB_SUCCESS;
        const auto context = LibusbContext::Get(error);
        return context == nullptr
                   ? 0
                   : static_cast<std::uint32_t>(context->Find(HEADSET, error).size());
    }

    std::unique_ptr<VendorUsbDevice> Open(std::uint32_t index) override
    {
        const Gate gate(LibusbContext::Gate());
        int error = LIBUSB_SUCCESS;
        auto context = LibusbContext::Get(error);
        std::vector<LibusbContext::Device> devices;
        if (context != nullptr)
        {
            devices = context->Find(HEADSET, error);
        }
        mProblem = WhyNotSearched(error);
        if (index >= devices.size())
        {
            return nullptr;
        }
        auto handle = context->Open(devices[index], error);
        mProblem = WhyNotOpened(error);
        if (handle == nullptr)
        {
            return nullptr;
        }
        return std::make_unique<LibusbDevice>(std::move(context), std::move(handle));
    }

    std::string Name() const override
    {
        const libusb_version& version = *libusb_get_version();
        return "libusb " + std::to_string(version.major) + '.' + std::to_string(version.minor) +
               '.' + std::to_string(version.micro);
    }

    std::string Problem() const override
    {
        const Gate gate(LibusbContext::Gate());
        return mProblem;
    }

private:
    std::string mProblem; // the reason of the last failure to open; the gate guards it
};

} // namespace

UsbHost& UsbHost::System()
{
    // It is never deleted, because a leaked tracker may use it.
    static UsbHost& host = *new LibusbHost;
    return host;
}

} // namespace qlt
