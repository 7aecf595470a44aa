#include "Graphics/GlImages.h"

#include "State/Structures.h"

#define XR_USE_GRAPHICS_API_OPENGL
#include <openxr/openxr_platform.h>

#include <utility>

namespace qltxr
{

void GlRemains::Leave(std::vector<GLuint> textures, std::vector<GLsync> fences)
{
    const std::lock_guard lock(mMutex);
    mAlive -= static_cast<std::ptrdiff_t>(textures.size());
    mTextures.insert(mTextures.end(), textures.begin(), textures.end());
    mFences.insert(mFences.end(), fences.begin(), fences.end());
}

void GlRemains::Delete()
{
    std::vector<GLuint> textures;
    std::vector<GLsync> fences;
    {
        const std::lock_guard lock(mMutex);
        textures.swap(mTextures);
        fences.swap(mFences);
    }
    if (!textures.empty())
    {
        mGl.DeleteTextures(static_cast<GLsizei>(textures.size()), textures.data());
    }
    for (const GLsync fence : fences)
    {
        mGl.DeleteSync(fence);
    }
}

void GlRemains::Close()
{
    const std::lock_guard lock(mMutex);
    mSurface = nullptr;
}

GLsync GlRemains::FenceProgram()
{
    const std::lock_guard lock(mMutex);
    GLsync fence = nullptr;
    if (mSurface != nullptr)
    {
        mSurface->WithProgramContext(
            [this, &fence]
            {
                fence = mGl.FenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
                mGl.Flush();
            });
    }
    return fence;
}

std::size_t GlRemains::CountTextures() const
{
    const std::lock_guard lock(mMutex);
    return static_cast<std::size_t>(mAlive) + mTextures.size();
}

void GlRemains::Count(std::ptrdiff_t added)
{
    const std::lock_guard lock(mMutex);
    mAlive += added;
}

GlImages::GlImages(const GlFunctions& gl, std::shared_ptr<GlRemains> remains,
                   const XrSwapchainCreateInfo& info, std::uint32_t count)
    : mGl(gl)
    , mRemains(std::move(remains))
    , mIsArray(info.arraySize > 1)
    , mHasMips(info.mipCount > 1)
    , mTextures(count)
    , mFences(count)
{
    const GLenum target = mIsArray ? GL_TEXTURE_2D_ARRAY : GL_TEXTURE_2D;
    const auto width = static_cast<GLsizei>(info.width);
    const auto height = static_cast<GLsizei>(info.height);
    const auto mips = static_cast<GLsizei>(info.mipCount);
    const auto format = static_cast<GLenum>(info.format);
    gl.GetError();
    gl.GenTextures(static_cast<GLsizei>(count), mTextures.data());
    mRemains->Count(count);
    for (const GLuint texture : mTextures)
    {
        gl.BindTexture(target, texture);
        mIsArray ? gl.TexStorage3D(target, mips, format, width, height,
                                   static_cast<GLsizei>(info.arraySize))
                 : gl.TexStorage2D(target, mips, format, width, height);
        gl.TexParameteri(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl.TexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    gl.BindTexture(target, 0);
    gl.Finish(); // the program's context sees the textures after this
    if (gl.GetError() != GL_NO_ERROR)
    {
        mRemains->Leave(std::move(mTextures), {});
        throw Failure{XR_ERROR_OUT_OF_MEMORY};
    }
}

GlImages::~GlImages() { mRemains->Leave(std::move(mTextures), std::move(mFences)); }

void GlImages::Enumerate(XrSwapchainImageBaseHeader* images) const
{
    auto* all = reinterpret_cast<XrSwapchainImageOpenGLKHR*>(images);
    for (std::size_t i = 0; i < mTextures.size(); ++i)
    {
        RequireType(&all[i], XR_TYPE_SWAPCHAIN_IMAGE_OPENGL_KHR);
    }
    for (std::size_t i = 0; i < mTextures.size(); ++i)
    {
        all[i].image = mTextures[i];
    }
}

// There is no fence when the program's context is busy on another thread. The drawing then counts
// as finished.
void GlImages::Released(std::uint32_t image)
{
    const GLsync fence = mRemains->FenceProgram();
    GLsync old = nullptr;
    {
        const std::lock_guard lock(mMutex);
        old = std::exchange(mFences[image], fence);
    }
    if (old != nullptr)
    {
        mRemains->Leave({}, {old});
    }
}

bool GlImages::IsDrawn(std::uint32_t image)
{
    const std::lock_guard lock(mMutex);
    const GLsync fence = mFences[image];
    return fence == nullptr || mGl.ClientWaitSync(fence, 0, 0) != GL_TIMEOUT_EXPIRED;
}

void GlImages::WaitForDrawing(std::uint32_t image)
{
    const std::lock_guard lock(mMutex);
    if (mFences[image] != nullptr)
    {
        mGl.WaitSync(mFences[image], 0, GL_TIMEOUT_IGNORED);
    }
}

} // namespace qltxr
