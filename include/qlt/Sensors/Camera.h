#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/Usb.h>

class VRUsbStreamAsync;

namespace qlt
{

/// The headset's passthrough camera as a texture of 2560 x 1440 grey levels. Every Update shows the
/// newest frame.
///
///     qlt::Camera camera; // on the thread whose OpenGL context is current
///     while (drawing)
///     {
///         camera.Update();
///         glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(camera.GetTextureId()));
///         DrawBackground();
///     }
///
/// With RENDERER_GL the constructor, Update and the destructor run on the thread whose OpenGL
/// context is current. A process has one camera at a time, because cameras share the event of their
/// frames; on Windows all processes share it. Without the headset the constructor ends the process,
/// so ask UsbHost::System().OpenFirst() before.
class QLT_API Camera
{
public:
    /// The owner of the texture. The values are part of the flat interface.
    enum RENDERER : int
    {
        /// The camera uploads into an OpenGL texture.
        RENDERER_GL = 0,

        /// The application has its own texture. Update only keeps the pace.
        RENDERER_D3D = 1
    };

    /// Opens the device and returns when its frames are on their way. With RENDERER_GL an id of 0
    /// makes the camera create a texture name. With RENDERER_D3D the id belongs to the application;
    /// an id of 0 is reported as an assertion. Throws VRException when the system creates no event.
    explicit Camera(unsigned int texture_id, RENDERER renderer = RENDERER_GL);

    /// Creates a texture name and uses RENDERER_GL.
    Camera();

    /// Takes the device from `host`, which must outlive the camera.
    Camera(unsigned int texture_id, RENDERER renderer, UsbHost& host);

    /// Stops the stream and leaves the texture as it is.
    virtual ~Camera();

    /// deliberate: copies share one stream; the first copy that is destroyed deletes it. Hold one
    /// camera by pointer.
    Camera(const Camera&) = default;
    Camera& operator=(const Camera&) = default;

    /// Waits for the next frame without a time limit and uploads it. Older frames that arrived
    /// since the last call are skipped.
    void Update();

    /// The width of a frame in pixels: 2560. Any thread.
    static int GetWidth();

    /// The height of a frame in pixels: 1440. Any thread.
    static int GetHeight();

    /// The name of the texture. Any thread.
    int GetTextureId() const;

private:
    void InitGraphics(unsigned int id);

    unsigned int mTextureId = 0;
    RENDERER mRenderer;
    VRUsbStreamAsync* mStream;
    NativeEventHandle mFrameEvent = nullptr; // the stream's
};

} // namespace qlt
