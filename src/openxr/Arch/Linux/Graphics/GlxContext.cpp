#include "GlxContext.h"

#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>

namespace qltxr
{

namespace
{

// The lock is global, because X has one error handler for the whole process.
std::mutex gErrorMutex;
std::atomic<bool> gHadError{false};
std::atomic<Display*> gIgnored{nullptr};
std::atomic<XErrorHandler> gBefore{nullptr};

int OnError(Display* display, XErrorEvent* event)
{
    if (display == gIgnored)
    {
        gHadError = true;
        return 0;
    }
    const XErrorHandler before = gBefore;
    return before != nullptr ? before(display, event) : 0;
}

struct XFreed
{
    void operator()(void* memory) const { XFree(memory); }
};
template <typename Value>
using XOwned = std::unique_ptr<Value, XFreed>;

/// Finds the configuration of the program's context on our own connection.
GLXFBConfig ConfigOf(Display* programDisplay, GLXContext programContext, Display* display)
{
    int id = 0;
    int screen = 0;
    Require(glXQueryContext(programDisplay, programContext, GLX_FBCONFIG_ID, &id) == Success &&
                glXQueryContext(programDisplay, programContext, GLX_SCREEN, &screen) == Success,
            XR_ERROR_GRAPHICS_DEVICE_INVALID);
    const int attributes[] = {GLX_FBCONFIG_ID, id, None};
    int count = 0;
    const XOwned<GLXFBConfig> configs(glXChooseFBConfig(display, screen, attributes, &count));
    Require(configs != nullptr && count > 0, XR_ERROR_GRAPHICS_DEVICE_INVALID);
    return configs.get()[0];
}

template <typename Function>
Function EntryPoint(const char* name)
{
    return reinterpret_cast<Function>(glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name)));
}

} // namespace

XErrorsIgnored::XErrorsIgnored(Display* display)
    : mDisplay(display)
{
    gErrorMutex.lock();
    XSync(display, False); // the previous handler gets earlier errors
    gHadError = false;
    gIgnored = display;
    gBefore = XSetErrorHandler(OnError);
}

XErrorsIgnored::~XErrorsIgnored()
{
    XSync(mDisplay, False);
    XSetErrorHandler(gBefore);
    gIgnored = nullptr;
    gErrorMutex.unlock();
}

bool XErrorsIgnored::HadError() const
{
    XSync(mDisplay, False);
    return gHadError;
}

GlxContext::GlxContext(Display* programDisplay, GLXContext programContext)
    : mDisplay(XOpenDisplay(DisplayString(programDisplay)))
{
    Require(mDisplay != nullptr, XR_ERROR_GRAPHICS_DEVICE_INVALID);
    try
    {
        Share(programDisplay, programContext);
    }
    catch (const Failure&)
    {
        Close();
        throw;
    }
}

GlxContext::~GlxContext() { Close(); }

void GlxContext::Share(Display* programDisplay, GLXContext programContext)
{
    mConfig = ConfigOf(programDisplay, programContext, mDisplay);
    const auto create = EntryPoint<PFNGLXCREATECONTEXTATTRIBSARBPROC>("glXCreateContextAttribsARB");
    Require(create != nullptr, XR_ERROR_GRAPHICS_DEVICE_INVALID);
    const int attributes[] = {GLX_CONTEXT_MAJOR_VERSION_ARB,
                              3,
                              GLX_CONTEXT_MINOR_VERSION_ARB,
                              3,
                              GLX_CONTEXT_PROFILE_MASK_ARB,
                              GLX_CONTEXT_CORE_PROFILE_BIT_ARB,
                              None};
    const XErrorsIgnored ignored(mDisplay);
    mContext = create(mDisplay, mConfig, programContext, True, attributes);
    Require(mContext != nullptr && !ignored.HadError(), XR_ERROR_GRAPHICS_DEVICE_INVALID);
    const int size[] = {GLX_PBUFFER_WIDTH, 1, GLX_PBUFFER_HEIGHT, 1, None};
    mPbuffer = glXCreatePbuffer(mDisplay, mConfig, size);
    if (ignored.HadError())
    {
        mPbuffer = None; // the configuration supports windows only
    }
}

void GlxContext::Close()
{
    if (mContext != nullptr)
    {
        glXDestroyContext(mDisplay, mContext);
    }
    if (mPbuffer != None)
    {
        glXDestroyPbuffer(mDisplay, mPbuffer);
    }
    if (mWindow != None)
    {
        XDestroyWindow(mDisplay, mWindow);
        XFreeColormap(mDisplay, mColors);
    }
    XCloseDisplay(mDisplay);
}

void GlxContext::OpenWindow(int x, int y, unsigned width, unsigned height, bool onPanel)
{
    const XOwned<XVisualInfo> visual(glXGetVisualFromFBConfig(mDisplay, mConfig));
    if (visual == nullptr)
    {
        return;
    }
    const Window root = RootWindow(mDisplay, visual->screen);
    mColors = XCreateColormap(mDisplay, root, visual->visual, AllocNone);
    XSetWindowAttributes attributes{};
    attributes.colormap = mColors;
    attributes.event_mask = KeyPressMask;
    attributes.override_redirect = onPanel ? True : False;
    mWindow =
        XCreateWindow(mDisplay, root, x, y, width, height, 0, visual->depth, InputOutput,
                      visual->visual, CWColormap | CWEventMask | CWOverrideRedirect, &attributes);
    XStoreName(mDisplay, mWindow, "Quelta Orbel Ixo");
    mDelete = XInternAtom(mDisplay, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(mDisplay, mWindow, &mDelete, 1);
    XSizeHints hints{};
    hints.flags = PMinSize | PMaxSize;
    hints.min_width = hints.max_width = static_cast<int>(width);
    hints.min_height = hints.max_height = static_cast<int>(height);
    XSetWMNormalHints(mDisplay, mWindow, &hints);
    XMapWindow(mDisplay, mWindow);
    XSync(mDisplay, False);
}

void GlxContext::MakeCurrent(bool paced)
{
    const GLXDrawable drawable = HasWindow() ? mWindow : mPbuffer;
    glXMakeContextCurrent(mDisplay, drawable, drawable, mContext);
    const auto setInterval = EntryPoint<PFNGLXSWAPINTERVALEXTPROC>("glXSwapIntervalEXT");
    if (HasWindow() && setInterval != nullptr)
    {
        const XErrorsIgnored ignored(mDisplay); // not every display offers the interval
        setInterval(mDisplay, drawable, paced ? 1 : 0);
    }
}

void GlxContext::MakeNothingCurrent() { glXMakeContextCurrent(mDisplay, None, None, nullptr); }

void GlxContext::Swap() { glXSwapBuffers(mDisplay, mWindow); }

WindowEvents GlxContext::Poll()
{
    WindowEvents events;
    while (HasWindow() && XPending(mDisplay) > 0)
    {
        XEvent event;
        XNextEvent(mDisplay, &event);
        if (event.type == ClientMessage)
        {
            events.closed = events.closed || static_cast<Atom>(event.xclient.data.l[0]) == mDelete;
        }
        else if (event.type == KeyPress)
        {
            const KeySym key = XLookupKeysym(&event.xkey, 0);
            events.recentre = events.recentre || key == XK_r || key == XK_space;
            events.closed = events.closed || key == XK_Escape;
        }
    }
    return events;
}

} // namespace qltxr
