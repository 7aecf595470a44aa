// The runtime's own OpenGL context on its own connection to the X server. It shares the objects of
// the program's context. It draws to a window, or to a pbuffer when there is no window.
#pragma once

#include "Graphics/Graphics.h"

#include <GL/glx.h>
#include <X11/Xlib.h>

namespace qltxr
{

/// While this object exists, errors of one connection are counted and do not end the program.
class XErrorsIgnored
{
public:
    explicit XErrorsIgnored(Display* display);
    ~XErrorsIgnored();
    XErrorsIgnored(const XErrorsIgnored&) = delete;
    XErrorsIgnored& operator=(const XErrorsIgnored&) = delete;

    /// Waits for all requests so far, and returns true when one of them had an error.
    bool HadError() const;

private:
    Display* mDisplay;
};

class GlxContext
{
public:
    /// Throws XR_ERROR_GRAPHICS_DEVICE_INVALID when the program's context cannot be shared.
    GlxContext(Display* programDisplay, GLXContext programContext);
    ~GlxContext();
    GlxContext(const GlxContext&) = delete;
    GlxContext& operator=(const GlxContext&) = delete;

    Display* GetDisplay() const { return mDisplay; }

    /// Opens the window. Call it before the context becomes current. A window for the headset's
    /// panel has no frame and stays above all others.
    void OpenWindow(int x, int y, unsigned width, unsigned height, bool onPanel);
    bool HasWindow() const { return mWindow != None; }

    /// Makes the context current on the calling thread. With `paced`, each Swap waits for the
    /// display.
    void MakeCurrent(bool paced);
    void MakeNothingCurrent();
    void Swap();
    WindowEvents Poll();

private:
    void Share(Display* programDisplay, GLXContext programContext);
    void Close();

    Display* mDisplay = nullptr;
    GLXFBConfig mConfig = nullptr;
    GLXContext mContext = nullptr;
    Window mWindow = None;
    Colormap mColors = None;
    GLXPbuffer mPbuffer = None;
    Atom mDelete = None;
};

} // namespace qltxr
