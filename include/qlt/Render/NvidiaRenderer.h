#pragma once

#include <qlt/Export.h>

struct ID3D11Device;
struct ID3D11Texture2D;

/// Presents a side-by-side stereo image on the headset's own display, which NVIDIA's direct mode
/// hides from the desktop. It draws lens and colour correction with Direct3D 11 on the engine's
/// device. It needs Windows and an NVIDIA driver; on other systems Initialize returns false and
/// Submit does nothing. The class is outside of namespace qlt because engines expect it there.
///
/// Call everything on the thread that owns the device's immediate context. Only the default
/// constructor throws (std::bad_alloc). Nothing is printed; IsInitialized tells whether frames
/// arrive.
class QLT_API NvidiaRenderer
{
public:
    /// Creates a renderer that the first Submit initialises.
    NvidiaRenderer();

    /// Shuts down.
    ~NvidiaRenderer();

    /// deliberate: copies share the display, the device and everything that was made for them. The
    /// first copy that is destroyed shuts all of them down.
    NvidiaRenderer(const NvidiaRenderer& other);
    NvidiaRenderer& operator=(const NvidiaRenderer& other);

    /// Takes the display and creates everything that drawing needs, on the device of the last
    /// Submit. False without a device, without a direct-mode display of the headset, and when a
    /// step fails. A lack of memory is such a failure. Submit calls it; an engine need not.
    bool Initialize();

    /// True when an Initialize has succeeded and no Shutdown has followed.
    bool IsInitialized();

    /// Gives the display back and releases everything that Initialize created. It does nothing
    /// before an Initialize has succeeded. The next Submit initialises again.
    ///
    /// deliberate: it also releases the device, although Submit adds no reference. Therefore call
    /// device->AddRef() before the first Submit, and again before the first Submit after a
    /// Shutdown.
    void Shutdown();

    /// Waits without a time limit until the display wants a frame. Then it draws the halves of
    /// `texture` through the lens and presents them. The left eye is in the left half; the texture
    /// is 32-bit BGRA and usable as a shader resource. The call changes the pipeline state of the
    /// device's immediate context.
    ///
    /// `device` is used until a Submit has initialised the renderer. While the initialisation
    /// fails, every call drops its frame and keeps one reference of the immediate context. A null
    /// texture is dropped, and so is a texture that cannot be a shader resource.
    void Submit(ID3D11Device* device, ID3D11Texture2D* texture);

private:
    struct State;
    State* mState; // shared by the copies, which are counted in it
};
