// Finds the monitor that is the headset's panel.
#pragma once

#include <openxr/openxr.h>

#include <X11/Xlib.h>
#include <string>

namespace qltxr
{

struct Monitor
{
    bool found = false;
    std::string name;
    int x = 0; // the position on the X screen in pixels
    int y = 0;
    unsigned width = 0;
    unsigned height = 0;
    XrDuration period = 0; // 0 when the monitor does not report it
};

/// Finds the monitor whose identification data name the headset's manufacturer.
Monitor FindHeadsetMonitor(Display* display);

/// Returns the period of the primary monitor, or of the first one. Returns 0 when the monitor does
/// not report it.
XrDuration DesktopPeriod(Display* display);

/// Returns true for identification data of the headset's manufacturer.
bool IsHeadsetEdid(const unsigned char* edid, unsigned long size);

} // namespace qltxr
