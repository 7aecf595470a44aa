// Makes what a program has before its session: a connection to the display, an OpenGL context and a
// drawable.
#pragma once

#include "Graphics/GlFunctions.h"

#include <memory>

namespace qltxr
{

class ProgramContext
{
public:
    /// The context is current on the calling thread. Throws std::runtime_error without a display.
    ProgramContext();
    ~ProgramContext();

    /// Returns the structure for the chain of xrCreateSession. With `broken` it has no drawable.
    const void* Binding(bool broken = false) const;

    void MakeCurrent() const;
    void MakeNothingCurrent() const;
    bool IsCurrent() const;

    /// Gives the display's monitor the identification data of the headset's panel, or removes them.
    /// Also gives the monitor's size in pixels. Returns false when the display has no monitors.
    bool SetHeadsetMonitor(bool isHeadset, unsigned& width, unsigned& height) const;

    /// Returns the number of bytes that the process has allocated and not freed. Returns 0 under a
    /// sanitizer.
    static std::size_t HeapBytes();

    GlFunctions gl;

private:
    struct Native;
    std::unique_ptr<Native> mNative;
};

} // namespace qltxr
