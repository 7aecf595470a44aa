// Stands in for the X server's extension of video modes, which Xvfb does not have and hello_xr does
// not do without: one mode, and success for everything. Preloaded.
#include <cstdlib>

namespace
{

struct Mode
{
    unsigned dotClock;
    unsigned short horizontal[5]; // shown, and what the synchronisation needs
    unsigned short vertical[4];
    unsigned flags;
    int privateSize;
    int* privateData;
};

} // namespace

extern "C" __attribute__((visibility("default"))) int
XF86VidModeGetAllModeLines(void*, int, int* count, Mode*** modes)
{
    // In one block, which the caller gives back with free.
    *modes = static_cast<Mode**>(std::calloc(1, sizeof(Mode*) + sizeof(Mode)));
    (*modes)[0] = reinterpret_cast<Mode*>(*modes + 1);
    (*modes)[0]->horizontal[0] = 1280;
    (*modes)[0]->vertical[0] = 1024;
    *count = 1;
    return 1;
}

extern "C" __attribute__((visibility("default"))) int XF86VidModeSwitchToMode(void*, int, Mode*)
{
    return 1;
}

extern "C" __attribute__((visibility("default"))) int XF86VidModeSetViewPort(void*, int, int, int)
{
    return 1;
}
