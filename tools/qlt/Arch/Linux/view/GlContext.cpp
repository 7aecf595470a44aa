#include "view/GlContext.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <stdexcept>

// The context has no surface, so it needs no display.
struct GlContext::Native
{
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
};

GlContext::GlContext()
    : mNative(std::make_unique<Native>())
{
    const auto getDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    Native& native = *mNative;
    if (getDisplay != nullptr)
    {
        native.display = getDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    }
    const EGLint attributes[] = {EGL_SURFACE_TYPE,
                                 EGL_PBUFFER_BIT,
                                 EGL_RENDERABLE_TYPE,
                                 EGL_OPENGL_BIT,
                                 EGL_RED_SIZE,
                                 8,
                                 EGL_GREEN_SIZE,
                                 8,
                                 EGL_BLUE_SIZE,
                                 8,
                                 EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglInitialize(native.display, nullptr, nullptr) == EGL_FALSE ||
        eglBindAPI(EGL_OPENGL_API) == EGL_FALSE ||
        eglChooseConfig(native.display, attributes, &config, 1, &count) == EGL_FALSE || count == 0)
    {
        throw std::runtime_error("there is no OpenGL here");
    }
    native.context = eglCreateContext(native.display, config, EGL_NO_CONTEXT, nullptr);
    if (eglMakeCurrent(native.display, EGL_NO_SURFACE, EGL_NO_SURFACE, native.context) == EGL_FALSE)
    {
        throw std::runtime_error("there is no OpenGL context to be had");
    }
}

// The destructor does not call eglTerminate, because that would unload the driver. The driver's
// static objects would be lost and created again for the next context.
GlContext::~GlContext()
{
    eglMakeCurrent(mNative->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(mNative->display, mNative->context);
}
