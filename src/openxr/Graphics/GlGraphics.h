// Implements the graphics interface with OpenGL 3.3.
#pragma once

#include "Graphics/GlFunctions.h"
#include "Graphics/GlImages.h"
#include "Graphics/GlLensPass.h"
#include "Graphics/GlSurface.h"

#include <optional>

namespace qltxr
{

class GlGraphics final : public Graphics
{
public:
    /// Throws XR_ERROR_GRAPHICS_DEVICE_INVALID when the context is older than OpenGL 3.3.
    explicit GlGraphics(std::unique_ptr<GlSurface> surface);
    ~GlGraphics() override;

    std::vector<std::int64_t> Formats() const override;
    XrDuration RefreshPeriod() const override { return mSurface->RefreshPeriod(); }
    XrDuration ScanTime() const override { return mSurface->ScanTime(); }
    bool HasOutput() const override { return mSurface->HasOutput(); }
    std::string DescribeOutput() const override { return mSurface->DescribeOutput(); }
    void Enter() override;
    void Leave() override;
    std::shared_ptr<ImageSet> CreateImages(const XrSwapchainCreateInfo& info,
                                           std::uint32_t count) override;
    bool IsComplete(const Frame& frame) override;
    void Draw(const Composition& composition) override;
    XrTime Present() override;
    WindowEvents PollWindow() override { return mSurface->Poll(); }
    Picture ReadPicture() override;
    std::size_t CountObjects() const override;

private:
    void ResizeTarget();
    void DeleteTarget();

    std::unique_ptr<GlSurface> mSurface;
    GlFunctions mGl;
    std::shared_ptr<GlRemains> mRemains;
    std::optional<GlLensPass> mLens;
    GLuint mTarget = 0; // the composed picture, encoded as sRGB
    GLuint mTargetTexture = 0;
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
};

} // namespace qltxr
