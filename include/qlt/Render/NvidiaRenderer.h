// Presents a side-by-side stereo image on the headset's own display, which NVIDIA's direct mode
// hides from the desktop: lens and colour correction are drawn with Direct3D 11 on the engine's
// device.
//
// Windows with an NVIDIA driver; elsewhere Initialize returns false and Submit does nothing.
//
// All calls belong on the thread that owns the device's immediate context. Nothing throws
// but the default constructor (std::bad_alloc), and nothing is printed: IsInitialized says whether
// frames arrive.
#pragma once

#include <qlt/Export.h>

struct ID3D11Device;
struct ID3D11Texture2D;

/// Outside of namespace qlt, where engines expect it.
class QLT_API NvidiaRenderer
{
public:
    NvidiaRenderer();

    /// Shuts down.
    ~NvidiaRenderer();

    /// deliberate: a copy shares the display, the device and all that was made for them, and the
    /// first of the two that is destroyed shuts both down.
    NvidiaRenderer(const NvidiaRenderer& other);
    NvidiaRenderer& operator=(const NvidiaRenderer& other);

    /// Takes the display and makes all that drawing needs, on the device of the last Submit: false
    /// without one, without a direct-mode display of the headset, or when any step fails, also for
    /// lack of memory. Submit calls it; there is no need to.
    bool Initialize();

    /// Whether an Initialize has succeeded, and no Shutdown followed.
    bool IsInitialized();

    /// Gives the display back and releases all that Initialize made; does nothing before it
    /// succeeded. The next Submit begins anew.
    ///
    /// deliberate: releases the device as well, of which Submit has taken no reference. Hand over
    /// one reference of yours: call device->AddRef() before the first Submit and before the first
    /// one after a Shutdown.
    void Shutdown();

    /// Waits, without a time-out, until the display wants a frame; then draws the halves of
    /// `texture` (left eye left, 32-bit BGRA, usable as a shader resource) through the lens and
    /// presents them. Changes the pipeline state of the device's immediate context.
    ///
    /// `device` is looked at until a Submit has initialised: the frame is dropped while that fails,
    /// and each such attempt keeps a reference of the immediate context. A null texture, or one
    /// that allows no such view, is dropped too.
    void Submit(ID3D11Device* device, ID3D11Texture2D* texture);

private:
    struct State;
    State* mState; // shared by the copies, which are counted in it
};
