// The textures of a swapchain, and the fences that show when the program's drawing is complete.
#pragma once

#include "Graphics/GlFunctions.h"
#include "Graphics/GlSurface.h"

#include <mutex>
#include <vector>

namespace qltxr
{

/// Keeps the textures and fences of destroyed swapchains until the compositor's thread can delete
/// them. The last owner of a swapchain may be a thread without a context.
class GlRemains
{
public:
    explicit GlRemains(GlSurface& surface, const GlFunctions& gl)
        : mSurface(&surface)
        , mGl(gl)
    {
    }

    void Leave(std::vector<GLuint> textures, std::vector<GLsync> fences);

    /// Deletes them. Only the compositor's thread calls it.
    void Delete();

    /// Prepares for the end of the surface. From now on FenceProgram returns null. The remaining
    /// objects end with their context.
    void Close();

    /// Returns a fence after the drawing of the program so far. Null when the program's context
    /// cannot be used.
    GLsync FenceProgram();

    /// The number of textures that exist, including those in use. The tests call it.
    std::size_t CountTextures() const;
    void Count(std::ptrdiff_t added);

private:
    mutable std::mutex mMutex; // guards all members below
    GlSurface* mSurface;
    const GlFunctions& mGl;
    std::vector<GLuint> mTextures;
    std::vector<GLsync> mFences;
    std::ptrdiff_t mAlive = 0;
};

class GlImages final : public ImageSet
{
public:
    /// Only the compositor's thread constructs an object.
    GlImages(const GlFunctions& gl, std::shared_ptr<GlRemains> remains,
             const XrSwapchainCreateInfo& info, std::uint32_t count);
    ~GlImages() override;

    void Enumerate(XrSwapchainImageBaseHeader* images) const override;
    void Released(std::uint32_t image) override;

    /// IsDrawn returns true when the program's drawing into the image is complete. WaitForDrawing
    /// waits for that. Only the compositor's thread calls them.
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
