#include "openxr/ProgramContext.h"

#define XR_USE_PLATFORM_XLIB
#define XR_USE_GRAPHICS_API_OPENGL
#include <GL/glx.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>
#include <openxr/openxr.h>
#include <openxr/openxr_platform.h>

#include <malloc.h>
#include <stdexcept>

namespace qltxr
{

struct ProgramContext::Native
{
    Display* display = nullptr;
    GLXContext context = nullptr;
    GLXPbuffer pbuffer = None;
    XrGraphicsBindingOpenGLXlibKHR binding{XR_TYPE_GRAPHICS_BINDING_OPENGL_XLIB_KHR};
    XrGraphicsBindingOpenGLXlibKHR brokenBinding{XR_TYPE_GRAPHICS_BINDING_OPENGL_XLIB_KHR};
};

ProgramContext::ProgramContext()
    : mNative(std::make_unique<Native>())
{
    Native& native = *mNative;
    native.display = XOpenDisplay(nullptr);
    if (native.display == nullptr)
    {
        throw std::runtime_error("there is no display");
    }
    const int wanted[] = {GLX_DRAWABLE_TYPE,
                          GLX_WINDOW_BIT | GLX_PBUFFER_BIT,
                          GLX_RED_SIZE,
                          8,
                          GLX_GREEN_SIZE,
                          8,
                          GLX_BLUE_SIZE,
                          8,
                          GLX_DOUBLEBUFFER,
                          True,
                          None};
    int count = 0;
    GLXFBConfig* configs =
        glXChooseFBConfig(native.display, DefaultScreen(native.display), wanted, &count);
    if (configs == nullptr || count == 0)
    {
        throw std::runtime_error("there is no OpenGL");
    }
    const GLXFBConfig config = configs[0];
    XFree(configs);
    native.context = glXCreateNewContext(native.display, config, GLX_RGBA_TYPE, nullptr, True);
    const int size[] = {GLX_PBUFFER_WIDTH, 64, GLX_PBUFFER_HEIGHT, 64, None};
    native.pbuffer = glXCreatePbuffer(native.display, config, size);
    native.binding.xDisplay = native.display;
    native.binding.glxFBConfig = config;
    native.binding.glxDrawable = native.pbuffer;
    native.binding.glxContext = native.context;
    native.brokenBinding = native.binding;
    native.brokenBinding.glxDrawable = None;
    MakeCurrent();
    gl.Load(
        [](const char* name) {
            return reinterpret_cast<void*>(
                glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name)));
        });
}

ProgramContext::~ProgramContext()
{
    MakeNothingCurrent();
    glXDestroyContext(mNative->display, mNative->context);
    glXDestroyPbuffer(mNative->display, mNative->pbuffer);
    XCloseDisplay(mNative->display);
}

const void* ProgramContext::Binding(bool broken) const
{
    return broken ? &mNative->brokenBinding : &mNative->binding;
}

void ProgramContext::MakeCurrent() const
{
    glXMakeCurrent(mNative->display, mNative->pbuffer, mNative->context);
}

void ProgramContext::MakeNothingCurrent() const { glXMakeCurrent(mNative->display, None, nullptr); }

bool ProgramContext::SetHeadsetMonitor(bool isHeadset, unsigned& width, unsigned& height) const
{
    Display* display = mNative->display;
    XRRScreenResources* resources = XRRGetScreenResources(display, DefaultRootWindow(display));
    if (resources == nullptr || resources->noutput == 0 || resources->ncrtc == 0)
    {
        return false;
    }
    // The block has 128 bytes. Two of them name the manufacturer "QLT" with five bits for each
    // letter.
    unsigned char edid[128] = {0x00, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x00, 0x45, 0x94};
    const Atom name = XInternAtom(display, "EDID", False);
    isHeadset ? XRRChangeOutputProperty(display, resources->outputs[0], name, XA_INTEGER, 8,
                                        PropModeReplace, edid, sizeof(edid))
              : XRRDeleteOutputProperty(display, resources->outputs[0], name);
    XRRCrtcInfo* crtc = XRRGetCrtcInfo(display, resources, resources->crtcs[0]);
    width = crtc->width;
    height = crtc->height;
    XRRFreeCrtcInfo(crtc);
    XRRFreeScreenResources(resources);
    XSync(display, False);
    return true;
}

std::size_t ProgramContext::HeapBytes()
{
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

bool ProgramContext::IsCurrent() const { return glXGetCurrentContext() == mNative->context; }

} // namespace qltxr
