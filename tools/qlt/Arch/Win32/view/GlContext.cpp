#include "view/GlContext.h"

#include <stdexcept>
#include <windows.h>

// The context belongs to a window that is never shown.
struct GlContext::Native
{
    HWND window = nullptr;
    HDC device = nullptr;
    HGLRC context = nullptr;
};

GlContext::GlContext()
    : mNative(std::make_unique<Native>())
{
    Native& native = *mNative;
    native.window =
        CreateWindowA("STATIC", "", WS_POPUP, 0, 0, 16, 16, nullptr, nullptr, nullptr, nullptr);
    native.device = GetDC(native.window);
    PIXELFORMATDESCRIPTOR format{};
    format.nSize = sizeof format;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
    format.cColorBits = 32;
    const int chosen = ChoosePixelFormat(native.device, &format);
    if (chosen == 0 || SetPixelFormat(native.device, chosen, &format) == FALSE)
    {
        throw std::runtime_error("there is no OpenGL here");
    }
    native.context = wglCreateContext(native.device);
    if (native.context == nullptr || wglMakeCurrent(native.device, native.context) == FALSE)
    {
        throw std::runtime_error("there is no OpenGL context to be had");
    }
}

GlContext::~GlContext()
{
    wglMakeCurrent(nullptr, nullptr);
    wglDeleteContext(mNative->context);
    ReleaseDC(mNative->window, mNative->device);
    DestroyWindow(mNative->window);
}
