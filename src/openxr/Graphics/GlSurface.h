// The runtime's own OpenGL context, which shares the program's images, and the window for its
// pictures. Each system has one body.
#pragma once

#include "Graphics/Graphics.h"

#include <functional>
#include <memory>

namespace qltxr
{

class GlSurface
{
public:
    /// Makes the context from the graphics binding in the chain of xrCreateSession. The program's
    /// thread calls it. Returns null when the chain has no binding of this API. Throws
    /// XR_ERROR_GRAPHICS_DEVICE_INVALID when the binding cannot be used.
    static std::unique_ptr<GlSurface> Open(const void* chain, const OutputSettings& settings);

    virtual ~GlSurface() = default;

    /// Enter makes the context current on the calling thread, and Leave makes it current nowhere.
    virtual void Enter() = 0;
    virtual void Leave() = 0;

    /// The function that finds OpenGL functions. They are the same for all contexts.
    using Loader = void* (*)(const char* name);
    virtual Loader EntryPoints() const = 0;

    /// Runs `action` while the program's context is current on the calling thread, and then
    /// restores the previous context. Returns false when another thread uses the program's context.
    virtual bool WithProgramContext(const std::function<void()>& action) = 0;

    virtual bool HasOutput() const = 0;
    virtual std::string DescribeOutput() const = 0;
    virtual XrDuration RefreshPeriod() const = 0;
    virtual XrDuration ScanTime() const = 0;

    /// The size that the next picture should have, in pixels.
    virtual void Size(std::uint32_t& width, std::uint32_t& height) const = 0;

    /// True when there is a window. Its picture is then the default framebuffer.
    virtual bool HasWindow() const = 0;
    virtual XrTime Swap() = 0;
    virtual WindowEvents Poll() = 0;
};

} // namespace qltxr
