#include "Render/NvApi.h"

#include <vector>

namespace qlt
{
namespace
{

constexpr std::uint32_t MODE_VERSION = sizeof(NvApi::Mode) | 1U << 16;
constexpr std::uint32_t MAX_DISPLAYS = 4;
constexpr std::uint32_t MAX_MODES = 1024; // a larger count is an error of the driver

template <typename Function>
bool Fill(Function& entry, NvApi::QueryInterface query, std::uint32_t identifier)
{
    entry = reinterpret_cast<Function>(query(identifier));
    return entry != nullptr;
}

} // namespace

NvApi NvApi::Load(QueryInterface query)
{
    Initialize initialize = nullptr;
    if (query != nullptr && Fill(initialize, query, 0x0150E828))
    {
        // deliberate: the status is ignored, because a driver that is not initialised fails in its
        // operations anyway.
        initialize();
    }
    NvApi api;
    api.complete =
        query != nullptr && //
        Fill(api.enumerateDisplays, query, 0x602F60D8) &&
        Fill(api.enumerateModes, query, 0x79C3FE22) &&
        Fill(api.acquireDisplay, query, 0xC4E4EFDA) && Fill(api.createSurface, query, 0x86BDB518) &&
        Fill(api.setMode, query, 0x56DF9D51) && Fill(api.getFrameEvent, query, 0xF64D320F) &&
        Fill(api.present, query, 0x8C84A92A) && Fill(api.releaseDisplay, query, 0x2523CAB6);
    return api;
}

bool NvApi::HasDisplay(std::uint32_t vendorId) const
{
    std::uint32_t count = 0;
    return complete && enumerateDisplays(vendorId, &count, nullptr, 1) == 0 && count != 0;
}

bool NvApi::FindDisplay(std::uint32_t vendorId, Display& display) const
{
    Display displays[MAX_DISPLAYS] = {};
    std::uint32_t count = MAX_DISPLAYS;
    if (enumerateDisplays(vendorId, &count, displays, 1) != 0 || count == 0)
    {
        return false;
    }
    display = displays[0];
    return true;
}

bool NvApi::FindMode(const Display& display, Mode& mode) const
{
    std::uint32_t count = 0;
    const auto enumerate = [&](Mode* modes)
    { return enumerateModes(display, &count, modes, 0) == 0 && count != 0 && count <= MAX_MODES; };
    if (!enumerate(nullptr))
    {
        return false;
    }
    std::vector<Mode> modes(count, Mode{MODE_VERSION, {}, 0, {}});
    if (!enumerate(modes.data()))
    {
        return false;
    }
    mode = modes[0];
    return true;
}

std::uint32_t SurfaceFormat(const NvApi::Mode& mode)
{
    switch (mode.pixelFormat)
    {
    case 21:
        return 87; // DXGI_FORMAT_B8G8R8A8_UNORM
    case 22:
        return 88; // DXGI_FORMAT_B8G8R8X8_UNORM
    case 31:
        return 24; // DXGI_FORMAT_R10G10B10A2_UNORM
    case 32:
        return 28; // DXGI_FORMAT_R8G8B8A8_UNORM
    case 113:
        return 10; // DXGI_FORMAT_R16G16B16A16_FLOAT
    default:
        return 0;
    }
}

} // namespace qlt
