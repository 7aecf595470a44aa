using System;

namespace Quelta
{
    /// <summary>The headset's passthrough image as an OpenGL texture. Call every operation, and Dispose,
    /// on the thread whose OpenGL context is current. A process has one camera at a time.</summary>
    public sealed class Camera : IDisposable
    {
        private readonly CameraHandle mHandle;

        /// <summary>A textureId of 0 makes a new texture name. Without a connected headset the library would
        /// end the process, so this throws QueltaException instead.</summary>
        public Camera(Tracker headset, uint textureId = 0)
        {
            if (!headset.IsHeadset || !headset.IsConnected)
            {
                throw new QueltaException("The camera needs a headset, and none is connected.");
            }
            mHandle = Library.New(() => Native.qlt_Camera_New(textureId));
        }

        /// <summary>The width of the image in pixels.</summary>
        public static int Width => Library.Guard(() => Native.qlt_Camera_GetWidth(IntPtr.Zero));

        public static int Height => Library.Guard(() => Native.qlt_Camera_GetHeight(IntPtr.Zero));

        public int TextureId => Native.qlt_Camera_GetTextureId(mHandle);

        /// <summary>Waits for the next frame without a time limit, and uploads it.</summary>
        public void Update() => Native.qlt_Camera_Update(mHandle);

        public void Dispose() => mHandle.Dispose();
    }
}
