// An OpenGL context without a window to see, current on the thread that made it. One body for each
// system.
#pragma once

#include <memory>

class GlContext
{
public:
    /// std::runtime_error when there is none to be had.
    GlContext();
    ~GlContext();

private:
    struct Native;
    std::unique_ptr<Native> mNative;
};
