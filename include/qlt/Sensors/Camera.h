// The headset's passthrough camera as a texture: 2560 x 1440 grey levels, the newest frame with
// every Update.
//
// Threads: with RENDERER_GL the constructor, Update and the destructor run on the thread whose
// OpenGL context is current. Once a process: cameras share the event of their frames, and on
// Windows all processes do. Without the headset the constructor ends the process: ask UsbHost
// first.
#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/Usb.h>

class VRUsbStreamAsync;

namespace qlt
{

class QLT_API Camera
{
public:
    enum RENDERER : int
    {
        RENDERER_GL = 0, // the camera uploads into an OpenGL texture
        RENDERER_D3D = 1 // the application has its own texture; Update only keeps the pace
    };

    /// Opens the device and returns when its frames are on their way. With RENDERER_GL an id of 0
    /// makes a texture name; with RENDERER_D3D the id is the application's own and asserted not to
    /// be 0. VRException when there is no event to be had.
    explicit Camera(unsigned int texture_id, RENDERER renderer = RENDERER_GL);

    /// With RENDERER_GL and a texture name of its own making.
    Camera();

    /// With another source of devices than the machine's own.
    Camera(unsigned int texture_id, RENDERER renderer, UsbHost& host);

    /// Stops the stream; the texture stays.
    virtual ~Camera();

    /// deliberate: a copy shares the stream, which whichever is destroyed first deletes; so hold
    /// one camera, by pointer.
    Camera(const Camera&) = default;
    Camera& operator=(const Camera&) = default;

    /// Waits for the next frame, for ever if none comes, and uploads it. Frames that came meanwhile
    /// are left out.
    void Update();

    static int GetWidth();
    static int GetHeight();

    int GetTextureId() const;

private:
    void InitGraphics(unsigned int id);

    unsigned int mTextureId = 0;
    RENDERER mRenderer;
    VRUsbStreamAsync* mStream;
    void* mFrameEvent = nullptr; // the stream's
};

} // namespace qlt
