#pragma once

#include <memory>

/// An OpenGL context without a visible window. It is current on the thread that created it. Each
/// wing implements this class for its system.
class GlContext
{
public:
    /// Throws std::runtime_error when no context is available.
    GlContext();
    ~GlContext();

private:
    struct Native;
    std::unique_ptr<Native> mNative;
};
