// An OpenGL context of the runtime's own, on its own connection to the X server, which shares the
// objects of the program's context; and a window, or else a pbuffer, to draw to.
#pragma once

#include "Graphics/Graphics.h"

#include <GL/glx.h>
#include <X11/Xlib.h>

namespace qltxr
{

/// While this lives, errors of one connection are counted instead of ending the program.
class XErrorsIgnored
{
public:
    explicit XErrorsIgnored(Display* display);
    ~XErrorsIgnored();
    XErrorsIgnored(const XErrorsIgnored&) = delete;
    XErrorsIgnored& operator=(const XErrorsIgnored&) = delete;

    /// After all requests so far.
    bool HadError() const;

private:
    Display* mDisplay;
};

class GlxContext
{
public:
    /// XR_ERROR_GRAPHICS_DEVICE_INVALID when the program's context cannot be shared.
    GlxContext(Display* programDisplay, GLXContext programContext);
    ~GlxContext();
    GlxContext(const GlxContext&) = delete;
    GlxContext& operator=(const GlxContext&) = delete;

    Display* GetDisplay() const { return mDisplay; }

    /// Before the context becomes current. Without a frame and above all others when it is for the
    /// headset's panel.
    void OpenWindow(int x, int y, unsigned width, unsigned height, bool onPanel);
    bool HasWindow() const { return mWindow != None; }

    /// `paced` makes each Swap wait for the display.
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
