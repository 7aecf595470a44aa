#pragma once

#include <vector>

/// An off-screen picture that OpenGL draws into, with a texture of it. It belongs to the context
/// that is current at its construction.
class RenderTarget
{
public:
    /// Throws std::runtime_error when the context does not support it.
    RenderTarget(int width, int height);
    ~RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    /// Makes this picture the target of all drawing. The viewport covers the whole picture.
    void Use() const;

    /// The texture is interpolated, and its edge colours continue outside it.
    unsigned int Texture() const { return mTexture; }

    int Width() const { return mWidth; }
    int Height() const { return mHeight; }

    /// The red, green, blue and alpha bytes of every pixel. The bottom row is the first row.
    std::vector<unsigned char> Pixels() const;

private:
    int mWidth;
    int mHeight;
    unsigned int mTexture = 0;
    unsigned int mDepth = 0;
    unsigned int mFramebuffer = 0;
};
