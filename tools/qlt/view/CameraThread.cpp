#include "view/CameraThread.h"

#include <qlt/Sensors/Camera.h>

#include "view/GlContext.h"

#include <GL/glew.h>

namespace
{

void ReadBack(const qlt::Camera& camera, CameraThread::Pixels& pixels)
{
    pixels.resize(static_cast<std::size_t>(qlt::Camera::GetWidth()) *
                  static_cast<std::size_t>(qlt::Camera::GetHeight()));
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(camera.GetTextureId()));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, pixels.data());
}

} // namespace

CameraThread::CameraThread(Handler handler)
    : mHandler(std::move(handler))
    , mThread([this] { Run(); })
{
}

CameraThread::~CameraThread() { mThread.join(); }

unsigned long CameraThread::Frames() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mFrames;
}

bool CameraThread::HasEnded() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mEnded;
}

bool CameraThread::Stop()
{
    constexpr std::chrono::seconds PATIENCE(5); // the time for the start and the last frame
    std::unique_lock<std::mutex> lock(mMutex);
    mStopping = true;
    mChanged.wait_for(lock, PATIENCE, [this] { return mEnded; });
    if (mFailure != nullptr)
    {
        std::rethrow_exception(mFailure);
    }
    return mEnded;
}

void CameraThread::Run()
{
    std::exception_ptr failure;
    try
    {
        Show();
    }
    catch (...)
    {
        failure = std::current_exception();
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mFailure = failure;
    mEnded = true;
    mChanged.notify_all();
}

void CameraThread::Show()
{
    const GlContext context;
    qlt::Camera camera;
    for (bool stop = false; !stop;)
    {
        camera.Update();
        if (mHandler)
        {
            ReadBack(camera, mLastFrame);
            mHandler(mLastFrame);
        }
        const std::lock_guard<std::mutex> lock(mMutex);
        ++mFrames;
        stop = mStopping;
    }
    ReadBack(camera, mLastFrame);
}
