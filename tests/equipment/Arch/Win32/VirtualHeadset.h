// The virtual headset as a test uses it: installed, started and reset by its constructor, unplugged
// by its destructor. The driver outlives every test, a killed one too. One test at a time may use
// it.
#pragma once

#include "equipment/EmulatedBus.h"

/// A handle of the driver, which is installed and started before, if need be, and has both of its
/// devices. It lies beside the program. Throws std::system_error when the system refuses.
void* OpenVirtualHeadsetDriver();

class VirtualHeadset final : public EmulatedBus
{
public:
    /// Throws std::system_error when the system refuses, as the other operations do.
    VirtualHeadset();
    ~VirtualHeadset() override;
    VirtualHeadset(const VirtualHeadset&) = delete;
    VirtualHeadset& operator=(const VirtualHeadset&) = delete;

    /// Two devices at most; what is pushed goes to the first.
    void Plug(std::uint16_t vendorId = 0x04B4, std::uint16_t productId = 0x00F1) override;
    void Unplug() override;
    void Push(std::uint8_t endPoint, const Bytes& bytes, bool succeeds = true) override;
    std::size_t Pending(std::uint8_t endPoint) override;

    /// What the driver was told by SetTransferSize.
    std::uint32_t TransferSize();

    /// Whether devices that are plugged in from now on say what they are.
    bool answers = true;

private:
    void* mDriver;
};
