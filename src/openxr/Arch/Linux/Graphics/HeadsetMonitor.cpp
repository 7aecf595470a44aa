#include "HeadsetMonitor.h"

#include <X11/extensions/Xrandr.h>

#include <memory>

namespace qltxr
{

namespace
{

// The identification data store "QLT" with five bits for each letter, the highest bits first.
constexpr unsigned char MANUFACTURER[] = {0x45, 0x94};
constexpr unsigned long MANUFACTURER_PLACE = 8;

constexpr XrDuration SHORTEST_PERIOD = 2000000; // 500 Hz
constexpr XrDuration LONGEST_PERIOD = 50000000; // 20 Hz

template <typename Value, void (*FREE)(Value*)>
struct Freed
{
    void operator()(Value* value) const { FREE(value); }
};
using Resources =
    std::unique_ptr<XRRScreenResources, Freed<XRRScreenResources, XRRFreeScreenResources>>;
using Output = std::unique_ptr<XRROutputInfo, Freed<XRROutputInfo, XRRFreeOutputInfo>>;
using Crtc = std::unique_ptr<XRRCrtcInfo, Freed<XRRCrtcInfo, XRRFreeCrtcInfo>>;

bool IsHeadset(Display* display, RROutput output)
{
    const Atom edid = XInternAtom(display, "EDID", False);
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    XRRGetOutputProperty(display, output, edid, 0, 128, False, False, AnyPropertyType, &type,
                         &format, &count, &rest, &data);
    const bool isHeadset = data != nullptr && format == 8 && IsHeadsetEdid(data, count);
    if (data != nullptr)
    {
        XFree(data);
    }
    return isHeadset;
}

XrDuration PeriodOf(const XRRScreenResources& resources, RRMode mode)
{
    constexpr double NS_PER_S = 1e9;
    for (int i = 0; i < resources.nmode; ++i)
    {
        const XRRModeInfo& info = resources.modes[i];
        if (info.id == mode && info.dotClock > 0)
        {
            const double pixels = static_cast<double>(info.hTotal) * info.vTotal;
            return static_cast<XrDuration>(NS_PER_S * pixels / static_cast<double>(info.dotClock));
        }
    }
    return 0;
}

/// Returns the first monitor in use for which `isWanted` returns true.
template <typename Wanted>
Monitor FindMonitor(Display* display, Wanted isWanted)
{
    int event = 0;
    int error = 0;
    if (XRRQueryExtension(display, &event, &error) == False)
    {
        return {};
    }
    const Resources resources(XRRGetScreenResourcesCurrent(display, DefaultRootWindow(display)));
    for (int i = 0; resources != nullptr && i < resources->noutput; ++i)
    {
        const RROutput id = resources->outputs[i];
        const Output output(XRRGetOutputInfo(display, resources.get(), id));
        if (output == nullptr || output->crtc == None || !isWanted(id))
        {
            continue;
        }
        const Crtc crtc(XRRGetCrtcInfo(display, resources.get(), output->crtc));
        if (crtc != nullptr)
        {
            return {true,
                    output->name,
                    crtc->x,
                    crtc->y,
                    crtc->width,
                    crtc->height,
                    PeriodOf(*resources, crtc->mode)};
        }
    }
    return {};
}

} // namespace

bool IsHeadsetEdid(const unsigned char* edid, unsigned long size)
{
    return size > MANUFACTURER_PLACE + 1 && edid[MANUFACTURER_PLACE] == MANUFACTURER[0] &&
           edid[MANUFACTURER_PLACE + 1] == MANUFACTURER[1];
}

Monitor FindHeadsetMonitor(Display* display)
{
    return FindMonitor(display, [display](RROutput output) { return IsHeadset(display, output); });
}

XrDuration DesktopPeriod(Display* display)
{
    const Monitor any = FindMonitor(display, [](RROutput) { return true; });
    const RROutput primary =
        any.found ? XRRGetOutputPrimary(display, DefaultRootWindow(display)) : None;
    const Monitor first =
        primary == None ? any
                        : FindMonitor(display, [primary](RROutput one) { return one == primary; });
    const bool isPlausible = first.period >= SHORTEST_PERIOD && first.period <= LONGEST_PERIOD;
    return isPlausible ? first.period : 0; // a display in memory may report any period
}

} // namespace qltxr
