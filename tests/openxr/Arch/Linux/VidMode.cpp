// Replaces the X server's extension of video modes. Xvfb does not have this extension, and hello_xr
// needs it. It has one mode and accepts everything. The test preloads it.
#include <cstdlib>

namespace
{

struct Mode
{
    unsigned dotClock;
    unsigned short horizontal[5]; // the visible pixels, and the times of the synchronisation
    unsigned short vertical[4];
    unsigned flags;
    int privateSize;
    int* privateData;
};

} // namespace

extern "C" __attribute__((visibility("default"))) int
XF86VidModeGetAllModeLines(void*, int, int* count, Mode*** modes)
{
    // The result is one block, because the caller calls free only once.
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
