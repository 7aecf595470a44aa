// A fake nvapi64.dll with the entry points of direct mode, by their identifiers. The calling
// convention passes a display by value as the address of a copy. Nothing works until the driver has
// been initialised exactly once.
#include "FakeNvApi.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace
{

struct Display
{
    unsigned char bytes[16];
};

struct Mode
{
    std::uint32_t words[8];
};

const NvApiScript NOTHING{0, 0};
const NvApiScript* script = &NOTHING;
int initializations = 0;

std::int32_t Initialize()
{
    ++initializations;
    return -1;
}

template <typename... Arguments>
std::int32_t Call(const char* format, Arguments... arguments)
{
    if (initializations != 1)
    {
        return -4;
    }
    char call[128];
    std::snprintf(call, sizeof call, format, arguments...);
    return script->onCall == nullptr ? -1 : script->onCall(script->context, call);
}

/// The value of an argument's bytes if all are equal. It overwrites them, as a driver may.
unsigned Take(Display* display)
{
    const unsigned first = display->bytes[0];
    const bool same = std::all_of(std::begin(display->bytes), std::end(display->bytes),
                                  [&](unsigned char byte) { return byte == first; });
    std::memset(display, 0xEE, sizeof *display);
    return same ? first : 0;
}

std::int32_t EnumerateDisplays(std::uint32_t vendorId, std::uint32_t* count, Display* displays,
                               std::uint32_t one)
{
    const std::uint32_t room = displays == nullptr ? 0 : *count;
    const std::int32_t status = Call("enumerateDisplays %u %u %u", vendorId, room, one);
    for (std::uint32_t i = 0; i < room && i < script->displays; ++i)
    {
        std::memset(&displays[i], 0xD0 + static_cast<int>(i), sizeof *displays);
    }
    *count = script->displays;
    return status;
}

std::int32_t EnumerateModes(Display* display, std::uint32_t* count, Mode* modes, std::uint32_t zero)
{
    const std::uint32_t room = modes == nullptr ? 0 : *count;
    std::uint32_t versions = 0; // the number of modes with the correct version
    for (std::uint32_t i = 0; i < room; ++i)
    {
        versions += modes[i].words[0] == 0x10020 ? 1 : 0;
        modes[i].words[1] = 100 + i;
        modes[i].words[5] = i == 0 ? script->pixelFormat : 32;
    }
    *count = script->modes;
    return Call("enumerateModes %X %u %u %u", Take(display), room, versions, zero);
}

std::int32_t Acquire(std::uint32_t vendorId, void* dxgiDevice, Display* display)
{
    std::memset(display, 0xDA, sizeof *display); // later calls must pass these bytes
    return Call("acquire %u %p", vendorId, dxgiDevice);
}

std::int32_t CreateSurface(Display* display, const Mode* mode, std::uint32_t* surface,
                           void** shared)
{
    *surface = 1234;
    *shared = script->surface;
    return Call("createSurface %X %X %u %u", Take(display), mode->words[0], mode->words[1],
                mode->words[5]);
}

std::int32_t SetMode(Display* display, const Mode* mode)
{
    return Call("setMode %X %X %u %u", Take(display), mode->words[0], mode->words[1],
                mode->words[5]);
}

std::int32_t GetFrameEvent(Display* display, void** event)
{
    *event = script->frameEvent;
    return Call("getFrameEvent %X", Take(display));
}

std::int32_t Present(Display* display, std::uint32_t surface, std::uint32_t two, void* device)
{
    return Call("present %X %u %u %p", Take(display), surface, two, device);
}

std::int32_t Release(std::uint32_t vendorId, Display* display)
{
    return Call("release %u %X", vendorId, Take(display));
}

} // namespace

extern "C" __declspec(dllexport) void nvapi_SetScript(const NvApiScript* newScript)
{
    script = newScript == nullptr ? &NOTHING : newScript;
}

extern "C" __declspec(dllexport) void* nvapi_QueryInterface(std::uint32_t identifier)
{
    const struct
    {
        std::uint32_t identifier;
        void* function;
    } entries[] = {
        {0x0150E828, reinterpret_cast<void*>(Initialize)},
        {0x602F60D8, reinterpret_cast<void*>(EnumerateDisplays)},
        {0x79C3FE22, reinterpret_cast<void*>(EnumerateModes)},
        {0xC4E4EFDA, reinterpret_cast<void*>(Acquire)},
        {0x86BDB518, reinterpret_cast<void*>(CreateSurface)},
        {0x56DF9D51, reinterpret_cast<void*>(SetMode)},
        {0xF64D320F, reinterpret_cast<void*>(GetFrameEvent)},
        {0x8C84A92A, reinterpret_cast<void*>(Present)},
        {0x2523CAB6, reinterpret_cast<void*>(Release)},
    };
    for (const auto& entry : entries)
    {
        if (entry.identifier == identifier)
        {
            return entry.function;
        }
    }
    return nullptr;
}
