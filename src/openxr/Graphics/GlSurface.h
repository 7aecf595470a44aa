// The runtime's own OpenGL context, which shares the program's images, and what it shows its
// pictures on. One body for each system.
#pragma once

#include "Graphics/Graphics.h"

#include <functional>
#include <memory>

namespace qltxr
{

class GlSurface
{
public:
    /// In xrCreateSession, on the program's thread; reads the graphics binding of the chain.
    /// Null when there is none of this API; XR_ERROR_GRAPHICS_DEVICE_INVALID when it is of no use.
    static std::unique_ptr<GlSurface> Open(const void* chain, const OutputSettings& settings);

    virtual ~GlSurface() = default;

    /// The context becomes current on the calling thread, or nowhere.
    virtual void Enter() = 0;
    virtual void Leave() = 0;

    /// The entry points of OpenGL, which are the same for all contexts.
    using Loader = void* (*)(const char* name);
    virtual Loader EntryPoints() const = 0;

    /// Runs `action` with the program's context current on the calling thread, and leaves current
    /// what was; false when the program's context is in use elsewhere.
    virtual bool WithProgramContext(const std::function<void()>& action) = 0;

    virtual bool HasOutput() const = 0;
    virtual std::string DescribeOutput() const = 0;
    virtual XrDuration RefreshPeriod() const = 0;

    /// The size in pixels that a picture should have now.
    virtual void Size(std::uint32_t& width, std::uint32_t& height) const = 0;

    /// True when there is a window, whose own picture is the default framebuffer.
    virtual bool HasWindow() const = 0;
    virtual XrTime Swap() = 0;
    virtual WindowEvents Poll() = 0;
};

} // namespace qltxr
