#include "Graphics/GlGraphics.h"

#include <algorithm>
#include <utility>

namespace qltxr
{

namespace
{

/// Calls `action(images, image)` for every image that a frame shows.
template <typename Action>
void ForEachImage(const Frame& frame, Action action)
{
    for (std::uint32_t i = 0; i < frame.layerCount; ++i)
    {
        for (const LayerView& view : frame.layers[i].views)
        {
            if (view.source.images != nullptr)
            {
                action(static_cast<GlImages&>(*view.source.images), view.source.image);
            }
        }
    }
}

void FlipRows(Picture& picture)
{
    const std::size_t row = std::size_t{3} * picture.width;
    for (std::size_t top = 0; top < picture.height / 2; ++top)
    {
        const auto first = picture.rgb.begin() + static_cast<std::ptrdiff_t>(top * row);
        const auto other =
            picture.rgb.begin() + static_cast<std::ptrdiff_t>((picture.height - 1 - top) * row);
        std::swap_ranges(first, first + static_cast<std::ptrdiff_t>(row), other);
    }
}

} // namespace

GlGraphics::GlGraphics(std::unique_ptr<GlSurface> surface)
    : mSurface(std::move(surface))
{
    Require(mGl.Load(mSurface->EntryPoints()), XR_ERROR_GRAPHICS_DEVICE_INVALID);
    mRemains = std::make_shared<GlRemains>(*mSurface, mGl);
}

GlGraphics::~GlGraphics() { mRemains->Close(); }

// The images of all formats contain linear light, except those of the first format. OpenGL decodes
// the first format when it samples it.
std::vector<std::int64_t> GlGraphics::Formats() const
{
    return {GL_SRGB8_ALPHA8,       GL_RGBA16F,         GL_RGB10_A2, GL_RGBA8,
            GL_DEPTH_COMPONENT32F, GL_DEPTH24_STENCIL8};
}

void GlGraphics::Enter()
{
    mSurface->Enter();
    mLens.emplace(mGl);
}

void GlGraphics::Leave()
{
    mLens.reset();
    DeleteTarget();
    mRemains->Delete();
    mSurface->Leave();
}

std::shared_ptr<ImageSet> GlGraphics::CreateImages(const XrSwapchainCreateInfo& info,
                                                   std::uint32_t count)
{
    mRemains->Delete(); // delete these first to free their memory
    return std::make_shared<GlImages>(mGl, mRemains, info, count);
}

bool GlGraphics::IsComplete(const Frame& frame)
{
    bool complete = true;
    ForEachImage(frame, [&complete](GlImages& images, std::uint32_t image)
                 { complete = complete && images.IsDrawn(image); });
    return complete;
}

void GlGraphics::DeleteTarget()
{
    mGl.DeleteFramebuffers(1, &mTarget);
    mGl.DeleteTextures(1, &mTargetTexture);
    mTarget = 0;
    mTargetTexture = 0;
}

void GlGraphics::ResizeTarget()
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    mSurface->Size(width, height);
    if (mTarget != 0 && width == mWidth && height == mHeight)
    {
        return;
    }
    DeleteTarget();
    mWidth = width;
    mHeight = height;
    mGl.GenTextures(1, &mTargetTexture);
    mGl.BindTexture(GL_TEXTURE_2D, mTargetTexture);
    mGl.TexStorage2D(GL_TEXTURE_2D, 1, GL_SRGB8_ALPHA8, static_cast<GLsizei>(width),
                     static_cast<GLsizei>(height));
    mGl.GenFramebuffers(1, &mTarget);
    mGl.BindFramebuffer(GL_FRAMEBUFFER, mTarget);
    mGl.FramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mTargetTexture,
                             0);
}

void GlGraphics::Draw(const Composition& composition)
{
    mRemains->Delete();
    ResizeTarget();
    mGl.BindFramebuffer(GL_FRAMEBUFFER, mTarget);
    mGl.Enable(GL_FRAMEBUFFER_SRGB);
    mGl.ClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    mGl.Clear(GL_COLOR_BUFFER_BIT);
    if (composition.frame != nullptr)
    {
        ForEachImage(*composition.frame,
                     [](GlImages& images, std::uint32_t image) { images.WaitForDrawing(image); });
        mLens->Draw(composition, mWidth, mHeight);
    }
    mGl.Disable(GL_FRAMEBUFFER_SRGB); // a copy must not change the values
    mGl.Finish();
}

XrTime GlGraphics::Present()
{
    if (!mSurface->HasWindow())
    {
        return 0;
    }
    const auto width = static_cast<GLint>(mWidth);
    const auto height = static_cast<GLint>(mHeight);
    mGl.BindFramebuffer(GL_READ_FRAMEBUFFER, mTarget);
    mGl.BindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    mGl.BlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    return mSurface->Swap();
}

Picture GlGraphics::ReadPicture()
{
    Picture picture{mWidth, mHeight, std::vector<std::uint8_t>(std::size_t{3} * mWidth * mHeight)};
    mGl.BindFramebuffer(GL_FRAMEBUFFER, mTarget);
    mGl.PixelStorei(GL_PACK_ALIGNMENT, 1);
    mGl.ReadPixels(0, 0, static_cast<GLsizei>(mWidth), static_cast<GLsizei>(mHeight), GL_RGB,
                   GL_UNSIGNED_BYTE, picture.rgb.data());
    FlipRows(picture);
    return picture;
}

std::size_t GlGraphics::CountObjects() const { return mRemains->CountTextures(); }

} // namespace qltxr
