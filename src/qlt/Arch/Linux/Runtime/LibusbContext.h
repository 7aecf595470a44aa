// libusb as the whole process shares it: one context with one event thread, and one handle for each
// piece of hardware, because the kernel lets an interface be claimed only once and a tracker and a
// camera may both hold the headset.
//
// The context lives while anybody holds it, and its thread from the first device on. Nothing is
// kept longer: an application may unload this library. Its gate is locked by whoever makes, uses or
// lets go of anything here; the callbacks of transfers on the event thread never take it.
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

    /// The process's context; null with the reason in `error` when libusb cannot start.
    static std::shared_ptr<LibusbContext> Get(int& error);

    /// Ends the event thread. Nobody has a device open any more.
    ~LibusbContext();

    LibusbContext(const LibusbContext&) = delete;
    LibusbContext& operator=(const LibusbContext&) = delete;

    /// The devices with these identifiers, in the order of their places on the bus; `error` says
    /// whether libusb could look.
    std::vector<Device> Find(const Ids& ids, int& error) const;

    /// The device with its interface 0 claimed; null with the reason in `error`.
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
