#include "LibusbContext.h"

#include <algorithm>
#include <chrono>
#include <sys/types.h>
#include <tuple>

namespace qlt
{
namespace
{

constexpr int INTERFACE = 0;
constexpr std::chrono::milliseconds ERROR_PAUSE(10);

auto PlaceOf(const LibusbContext::Device& device)
{
    return std::make_tuple(libusb_get_bus_number(device.get()),
                           libusb_get_device_address(device.get()));
}

void Close(libusb_device_handle* handle)
{
    libusb_release_interface(handle, INTERFACE); // the kernel's own driver gets the interface back
    libusb_close(handle);
}

} // namespace

std::mutex& LibusbContext::Gate()
{
    static std::mutex& gate = *new std::mutex; // static objects may close their devices late
    return gate;
}

std::shared_ptr<LibusbContext> LibusbContext::Get(int& error)
{
    error = LIBUSB_SUCCESS;
    static std::weak_ptr<LibusbContext>& current = *new std::weak_ptr<LibusbContext>;
    std::shared_ptr<LibusbContext> shared = current.lock();
    if (shared == nullptr)
    {
        libusb_context* context = nullptr;
        error = libusb_init(&context);
        if (error != LIBUSB_SUCCESS)
        {
            return nullptr;
        }
        shared.reset(new LibusbContext(context));
        current = shared;
    }
    return shared;
}

LibusbContext::LibusbContext(libusb_context* context)
    : mContext(context)
{
}

LibusbContext::~LibusbContext()
{
    if (mEventThread.joinable())
    {
        mStopping = true;
        libusb_interrupt_event_handler(mContext);
        mEventThread.join();
    }
    libusb_exit(mContext);
}

std::vector<LibusbContext::Device> LibusbContext::Find(const Ids& ids, int& error) const
{
    std::vector<Device> found;
    libusb_device** list = nullptr;
    const auto count = libusb_get_device_list(mContext, &list);
    error = count < 0 ? static_cast<int>(count) : LIBUSB_SUCCESS;
    for (ssize_t i = 0; i < count; ++i)
    {
        libusb_device_descriptor descriptor{};
        if (libusb_get_device_descriptor(list[i], &descriptor) == LIBUSB_SUCCESS &&
            descriptor.idVendor == ids.vendor && descriptor.idProduct == ids.product)
        {
            found.emplace_back(libusb_ref_device(list[i]), libusb_unref_device);
        }
    }
    if (count >= 0)
    {
        libusb_free_device_list(list, 1);
    }
    std::sort(found.begin(), found.end(),
              [](const Device& a, const Device& b) { return PlaceOf(a) < PlaceOf(b); });
    return found;
}

LibusbContext::Handle LibusbContext::Open(const Device& device, int& error)
{
    error = LIBUSB_SUCCESS;
    // An open device stays in memory, so its address identifies it.
    Handle handle = mHandles[device.get()].lock();
    if (handle != nullptr)
    {
        return handle;
    }
    libusb_device_handle* opened = nullptr;
    error = libusb_open(device.get(), &opened);
    if (error != LIBUSB_SUCCESS)
    {
        return nullptr;
    }
    libusb_set_auto_detach_kernel_driver(opened, 1);
    error = libusb_claim_interface(opened, INTERFACE);
    if (error != LIBUSB_SUCCESS)
    {
        libusb_close(opened);
        return nullptr;
    }
    if (!mEventThread.joinable())
    {
        mEventThread = std::thread([this] { HandleEvents(); });
    }
    handle.reset(opened, Close);
    mHandles[device.get()] = handle;
    return handle;
}

void LibusbContext::HandleEvents()
{
    while (!mStopping)
    {
        const int error = libusb_handle_events(mContext); // sleeps until there is something to do
        if (error != LIBUSB_SUCCESS && error != LIBUSB_ERROR_INTERRUPTED)
        {
            std::this_thread::sleep_for(ERROR_PAUSE); // a permanent error must not keep a core busy
        }
    }
}

} // namespace qlt
