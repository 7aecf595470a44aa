// The OpenGL of a program that is about to make a session: a connection to the display, a context
// and something to draw to.
#pragma once

#include "Graphics/GlFunctions.h"

#include <memory>

namespace qltxr
{

class ProgramContext
{
public:
    /// Current on the calling thread. std::runtime_error without a display.
    ProgramContext();
    ~ProgramContext();

    /// What a session's creation has in its chain; `broken` without the drawable.
    const void* Binding(bool broken = false) const;

    void MakeCurrent() const;
    void MakeNothingCurrent() const;
    bool IsCurrent() const;

    /// Gives the display's monitor the identification data of the headset's panel, or takes them
    /// away; false where the display has no monitors. Its size in pixels.
    bool SetHeadsetMonitor(bool isHeadset, unsigned& width, unsigned& height) const;

    GlFunctions gl;

private:
    struct Native;
    std::unique_ptr<Native> mNative;
};

} // namespace qltxr
