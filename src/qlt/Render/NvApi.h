// The part of NVIDIA's display driver that direct mode uses: functions of nvapi64.dll, which the
// driver looks up by identifier. Every function returns 0 for success.
#pragma once

#include <cstdint>

namespace qlt
{

struct NvApi
{
    using Status = std::int32_t;

    struct Display // opaque
    {
        std::uint8_t bytes[16];
    };

    struct Mode
    {
        std::uint32_t version; // the caller sets it before the call
        std::uint32_t unused[4];
        std::uint32_t pixelFormat;
        std::uint32_t unused2[2];
    };
    static_assert(sizeof(Mode) == 32, "the driver's layout");

    // Calls pass a display by value, because the driver may write to its copy.
    using Initialize = Status (*)();
    using EnumerateDisplays = Status (*)(std::uint32_t vendorId, std::uint32_t* count,
                                         Display* displays, std::uint32_t one);
    using EnumerateModes = Status (*)(Display display, std::uint32_t* count, Mode* modes,
                                      std::uint32_t zero);
    using AcquireDisplay = Status (*)(std::uint32_t vendorId, void* dxgiDevice, Display* display);
    using CreateSurface = Status (*)(Display display, const Mode* mode, std::uint32_t* surface,
                                     void** sharedHandle);
    using SetMode = Status (*)(Display display, const Mode* mode);
    using GetFrameEvent = Status (*)(Display display, void** event);
    using Present = Status (*)(Display display, std::uint32_t surface, std::uint32_t two,
                               void* device);
    using ReleaseDisplay = Status (*)(std::uint32_t vendorId, Display display);

    EnumerateDisplays enumerateDisplays = nullptr;
    EnumerateModes enumerateModes = nullptr;
    AcquireDisplay acquireDisplay = nullptr;
    CreateSurface createSurface = nullptr;
    SetMode setMode = nullptr;
    GetFrameEvent getFrameEvent = nullptr;
    Present present = nullptr;
    ReleaseDisplay releaseDisplay = nullptr;
    bool complete = false; // the driver has every function

    /// The function of the driver that looks up another function. It returns null when the driver
    /// has no function with that identifier.
    using QueryInterface = void* (*)(std::uint32_t identifier);

    /// Looks up the functions. If the driver has a function that initialises it, the call uses that
    /// function first, because most drivers refuse every operation before. Null stands for no
    /// driver and gives a table without functions.
    static NvApi Load(QueryInterface query);

    // HasDisplay says whether a display of the vendor is connected. FindDisplay and FindMode give
    // the first display and its first mode. All three return false when there is none and when a
    // call fails. FindMode may throw std::bad_alloc.
    bool HasDisplay(std::uint32_t vendorId) const;
    bool FindDisplay(std::uint32_t vendorId, Display& display) const;
    bool FindMode(const Display& display, Mode& mode) const;
};

/// The DXGI_FORMAT of the surface of a mode. A pixel format that is not listed gives 0
/// (DXGI_FORMAT_UNKNOWN).
std::uint32_t SurfaceFormat(const NvApi::Mode& mode);

} // namespace qlt
