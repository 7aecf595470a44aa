// The virtual headset of a test. The constructor installs, starts and resets it; the destructor
// unplugs it. The driver outlives every test, even a killed one. One test at a time may use it.
#pragma once

#include "equipment/EmulatedBus.h"

/// A handle of the driver. The call installs and starts the driver if necessary. The driver then
/// has both of its devices. Its file lies beside the program. Throws std::system_error when the
/// system refuses.
void* OpenVirtualHeadsetDriver();

class VirtualHeadset final : public EmulatedBus
{
public:
    /// Throws std::system_error when the system refuses, as the other operations do.
    VirtualHeadset();
    ~VirtualHeadset() override;
    VirtualHeadset(const VirtualHeadset&) = delete;
    VirtualHeadset& operator=(const VirtualHeadset&) = delete;

    /// There are at most two devices. Pushes go to the first one.
    void Plug(std::uint16_t vendorId = 0x04B4, std::uint16_t productId = 0x00F1) override;
    void Unplug() override;
    void Push(std::uint8_t endPoint, const Bytes& bytes, bool succeeds = true) override;
    std::size_t Pending(std::uint8_t endPoint) override;

    /// The size that SetTransferSize has sent to the driver.
    std::uint32_t TransferSize();

    /// True when devices that are plugged in later send their descriptors.
    bool answers = true;

private:
    void* mDriver;
};
