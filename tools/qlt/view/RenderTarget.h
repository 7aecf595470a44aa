// A picture that OpenGL draws into instead of a window, with a texture of it. It belongs to the
// context that is current when it is made.
#pragma once

#include <vector>

class RenderTarget
{
public:
    /// std::runtime_error when the context cannot do so.
    RenderTarget(int width, int height);
    ~RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    /// From now on what is drawn goes here, to the whole of it.
    void Use() const;

    /// Interpolated, and continued by its edge.
    unsigned int Texture() const { return mTexture; }

    int Width() const { return mWidth; }
    int Height() const { return mHeight; }

    /// Red, green, blue and alpha of every pixel, a byte each, the lowest row first.
    std::vector<unsigned char> Pixels() const;

private:
    int mWidth;
    int mHeight;
    unsigned int mTexture = 0;
    unsigned int mDepth = 0;
    unsigned int mFramebuffer = 0;
};
