// The virtual headset as a test uses it: installed, started and reset by its constructor, unplugged
// by its destructor. The driver outlives every test, a killed one too. One test at a time may use
// it.
#pragma once

#include "VirtualHeadsetControl.h"

#include <cstddef>
#include <vector>

class VirtualHeadset
{
public:
    static constexpr std::uint32_t REPORTS = 0; // the pipes
    static constexpr std::uint32_t FRAMES = 1;
    static constexpr std::uint32_t FAILURE = 0xC0000001; // STATUS_UNSUCCESSFUL

    /// For `device` of the two; both are unplugged then. Throws std::system_error when the system
    /// refuses.
    explicit VirtualHeadset(std::uint32_t device = 0);
    ~VirtualHeadset();
    VirtualHeadset(const VirtualHeadset&) = delete;
    VirtualHeadset& operator=(const VirtualHeadset&) = delete;

    /// With a `status` other than 0 it answers no question for its descriptors.
    void Plug(std::uint16_t vendorId = 0x04B4, std::uint16_t productId = 0x00F1,
              std::uint32_t status = 0);
    void Unplug();

    /// Its configuration descriptor, from now until the reset.
    void Configure(const std::vector<std::uint8_t>& bytes);

    /// Ends the oldest read of the pipe, or the next one.
    void Push(std::uint32_t pipe, const void* bytes, std::size_t length, std::uint32_t status = 0);

    virtual_headset::Counts Count();

private:
    void Send(std::uint32_t command, const virtual_headset::Order& order,
              const void* bytes = nullptr, std::size_t length = 0,
              virtual_headset::Counts* counts = nullptr);

    std::uint32_t mDevice;
    void* mDriver = nullptr;
};
