// What direct mode needs of NVIDIA's display driver: the entry points of nvapi64.dll, by their
// identifiers. Every function returns 0 for success.
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
        std::uint32_t version; // set before it is filled in
        std::uint32_t unused[4];
        std::uint32_t pixelFormat;
        std::uint32_t unused2[2];
    };
    static_assert(sizeof(Mode) == 32, "the driver's layout");

    // A display is passed by value: the driver gets a copy and may write to it.
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
    bool complete = false; // all of them are there

    /// The driver's way to an entry point; null when it has none of that identifier.
    using QueryInterface = void* (*)(std::uint32_t identifier);

    /// Initialises the driver, if it has an entry point for that: most fail all operations before.
    /// Without a driver, null, nothing is there.
    static NvApi Load(QueryInterface query);

    // What is chosen of what there is; false when there is nothing or a call fails. FindMode may
    // throw std::bad_alloc.
    bool HasDisplay(std::uint32_t vendorId) const;
    bool FindDisplay(std::uint32_t vendorId, Display& display) const;
    bool FindMode(const Display& display, Mode& mode) const;
};

/// The DXGI_FORMAT of a mode's surface; 0, unknown, for a pixel format that is not listed.
std::uint32_t SurfaceFormat(const NvApi::Mode& mode);

} // namespace qlt
