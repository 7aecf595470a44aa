// The libusb context of the process. It has one event thread, and one handle for each headset. A
// tracker and a camera share the handle, because the kernel allows only one claim of an interface.
//
// The context lives as long as anybody holds it. Its thread starts with the first device. Both end
// with the last holder, because an application may unload this library. Lock the gate before you
// create, use or release anything of this class. The callbacks of transfers on the event thread
// never lock it.
#pragma once

#include <atomic>
#include <cstdint>
#include <libusb.h>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qlt
{

class LibusbContext
{
public:
    using Handle = std::shared_ptr<libusb_device_handle>;
    using Device = std::shared_ptr<libusb_device>;

    static std::mutex& Gate();

    struct Ids
    {
        std::uint16_t vendor;
        std::uint16_t product;
    };

    /// The context of the process. When libusb cannot start, the result is null and `error` is the
    /// reason.
    static std::shared_ptr<LibusbContext> Get(int& error);

    /// Ends the event thread. All devices are closed by then.
    ~LibusbContext();

    LibusbContext(const LibusbContext&) = delete;
    LibusbContext& operator=(const LibusbContext&) = delete;

    /// The devices with these identifiers, in the order of their places on the bus. `error` says
    /// whether libusb could look for them.
    std::vector<Device> Find(const Ids& ids, int& error) const;

    /// Opens the device and claims its interface 0. On failure the result is null and `error` is
    /// the reason.
    Handle Open(const Device& device, int& error);

private:
    explicit LibusbContext(libusb_context* context);

    void HandleEvents();

    libusb_context* const mContext;
    std::map<libusb_device*, std::weak_ptr<libusb_device_handle>> mHandles;
    std::thread mEventThread;
    std::atomic<bool> mStopping{false};
};

} // namespace qlt
