#include "Graphics/GlSurface.h"

#include "GlxContext.h"
#include "HeadsetMonitor.h"
#include "State/Structures.h"

#define XR_USE_PLATFORM_XLIB
#define XR_USE_GRAPHICS_API_OPENGL
#include <X11/Xlib.h>
#include <openxr/openxr_platform.h>

#include <chrono>

namespace qltxr
{

namespace
{

/// Restores the context that was current on this thread.
class CurrentContext
{
public:
    CurrentContext()
        : mDisplay(glXGetCurrentDisplay())
        , mDraw(glXGetCurrentDrawable())
        , mRead(glXGetCurrentReadDrawable())
        , mContext(glXGetCurrentContext())
    {
    }
    /// `lastDisplay` is the display that was used meanwhile.
    void Restore(Display* lastDisplay) const
    {
        mContext != nullptr ? glXMakeContextCurrent(mDisplay, mDraw, mRead, mContext)
                            : glXMakeContextCurrent(lastDisplay, None, None, nullptr);
    }
    GLXContext Context() const { return mContext; }

private:
    Display* mDisplay;
    GLXDrawable mDraw;
    GLXDrawable mRead;
    GLXContext mContext;
};

class GlxSurface final : public GlSurface
{
public:
    GlxSurface(const XrGraphicsBindingOpenGLXlibKHR& binding, const OutputSettings& settings)
        : mBinding(binding)
        , mOwn(binding.xDisplay, binding.glxContext)
        , mMonitor(FindHeadsetMonitor(mOwn.GetDisplay()))
        , mSettings(settings)
        , mPeriod(mMonitor.found    ? mMonitor.period
                  : settings.window ? DesktopPeriod(mOwn.GetDisplay())
                                    : 0)
    {
        if (mMonitor.found)
        {
            mOwn.OpenWindow(mMonitor.x, mMonitor.y, mMonitor.width, mMonitor.height, true);
        }
        else if (settings.window)
        {
            mOwn.OpenWindow(0, 0, settings.width, settings.height, false);
        }
    }

    void Enter() override { mOwn.MakeCurrent(mMonitor.found); }
    void Leave() override { mOwn.MakeNothingCurrent(); }

    Loader EntryPoints() const override
    {
        return [](const char* name) {
            return reinterpret_cast<void*>(
                glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name)));
        };
    }

    bool WithProgramContext(const std::function<void()>& action) override
    {
        const CurrentContext before;
        if (before.Context() == mBinding.glxContext)
        {
            action();
            return true;
        }
        const XErrorsIgnored ignored(mBinding.xDisplay);
        if (glXMakeCurrent(mBinding.xDisplay, mBinding.glxDrawable, mBinding.glxContext) == False)
        {
            return false;
        }
        action();
        before.Restore(mBinding.xDisplay);
        return true;
    }

    bool HasWindow() const override { return mOwn.HasWindow(); }
    bool HasOutput() const override { return HasWindow() || mSettings.picture; }

    std::string DescribeOutput() const override
    {
        if (mMonitor.found)
        {
            return "the headset's display " + mMonitor.name;
        }
        return HasWindow() ? "a window on the desktop" : "nowhere";
    }

    XrDuration RefreshPeriod() const override { return mPeriod; }
    XrDuration ScanTime() const override { return mMonitor.found ? mPeriod : 0; }

    void Size(std::uint32_t& width, std::uint32_t& height) const override
    {
        width = mMonitor.found ? mMonitor.width : mSettings.width;
        height = mMonitor.found ? mMonitor.height : mSettings.height;
    }

    XrTime Swap() override
    {
        mOwn.Swap();
        if (!mMonitor.found)
        {
            return 0; // the time at which a desktop shows a window is unknown
        }
        return std::chrono::steady_clock::now().time_since_epoch().count();
    }

    WindowEvents Poll() override { return mOwn.Poll(); }

private:
    const XrGraphicsBindingOpenGLXlibKHR mBinding;
    GlxContext mOwn;
    const Monitor mMonitor;
    const OutputSettings mSettings;
    const XrDuration mPeriod;
};

} // namespace

std::unique_ptr<GlSurface> GlSurface::Open(const void* chain, const OutputSettings& settings)
{
    const auto* binding = FindInChain<XrGraphicsBindingOpenGLXlibKHR>(
        chain, XR_TYPE_GRAPHICS_BINDING_OPENGL_XLIB_KHR);
    if (binding == nullptr)
    {
        return nullptr;
    }
    Require(binding->xDisplay != nullptr && binding->glxContext != nullptr &&
                binding->glxDrawable != None,
            XR_ERROR_GRAPHICS_DEVICE_INVALID);
    return std::make_unique<GlxSurface>(*binding, settings);
}

} // namespace qltxr
