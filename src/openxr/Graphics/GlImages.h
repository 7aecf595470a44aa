// The textures of a swapchain, and the fences that say when the program has drawn them.
#pragma once

#include "Graphics/GlFunctions.h"
#include "Graphics/GlSurface.h"

#include <mutex>
#include <vector>

namespace qltxr
{

/// What swapchains have left behind, until the compositor's thread can delete it: the last owner of
/// a swapchain may be a thread without a context.
class GlRemains
{
public:
    explicit GlRemains(GlSurface& surface, const GlFunctions& gl)
        : mSurface(&surface)
        , mGl(gl)
    {
    }

    void Leave(std::vector<GLuint> textures, std::vector<GLsync> fences);

    /// On the compositor's thread.
    void Delete();

    /// The surface ends: from now on nothing is fenced, and what is left ends with its context.
    void Close();

    /// A fence behind what the program has drawn; null when its context cannot be reached.
    GLsync FenceProgram();

    /// For tests: the textures that exist, living ones included.
    std::size_t CountTextures() const;
    void Count(std::ptrdiff_t added);

private:
    mutable std::mutex mMutex; // guards everything below
    GlSurface* mSurface;
    const GlFunctions& mGl;
    std::vector<GLuint> mTextures;
    std::vector<GLsync> mFences;
    std::ptrdiff_t mAlive = 0;
};

class GlImages final : public ImageSet
{
public:
    /// On the compositor's thread.
    GlImages(const GlFunctions& gl, std::shared_ptr<GlRemains> remains,
             const XrSwapchainCreateInfo& info, std::uint32_t count);
    ~GlImages() override;

    void Enumerate(XrSwapchainImageBaseHeader* images) const override;
    void Released(std::uint32_t image) override;

    /// On the compositor's thread: whether the image is drawn, and what waits for it otherwise.
    bool IsDrawn(std::uint32_t image);
    void WaitForDrawing(std::uint32_t image);

    GLuint Texture(std::uint32_t image) const { return mTextures[image]; }
    bool IsArray() const { return mIsArray; }
    bool HasMips() const { return mHasMips; }

private:
    const GlFunctions& mGl;
    const std::shared_ptr<GlRemains> mRemains;
    const bool mIsArray;
    const bool mHasMips;
    std::vector<GLuint> mTextures;
    std::mutex mMutex; // guards the fences
    std::vector<GLsync> mFences;
};

} // namespace qltxr
