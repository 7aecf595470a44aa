#include "Commands.h"

#include <qlt/qlt.h>

#include "GlContext.h"
#include "PngFile.h"
#include "TrackerSource.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <GL/glew.h>

namespace
{

using Clock = std::chrono::steady_clock;

/// What the thread of the OpenGL context tells the one that watches the time: an update may wait
/// for ever.
struct Progress
{
    std::mutex mutex;
    std::condition_variable changed;
    unsigned long frames = 0;
    bool ended = false;
    std::exception_ptr failure;
};

std::vector<unsigned char> ReadBack(const qlt::Camera& camera)
{
    std::vector<unsigned char> pixels(static_cast<std::size_t>(qlt::Camera::GetWidth()) *
                                      static_cast<std::size_t>(qlt::Camera::GetHeight()));
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(camera.GetTextureId()));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

void Show(const CameraOptions& options, Clock::time_point end, Progress& progress)
{
    const GlContext context;
    qlt::Camera camera;
    do
    {
        camera.Update();
        const std::lock_guard<std::mutex> lock(progress.mutex);
        ++progress.frames;
    } while (Clock::now() < end);
    if (!options.png.empty())
    {
        WritePng(options.png, qlt::Camera::GetWidth(), qlt::Camera::GetHeight(), 1,
                 ReadBack(camera));
    }
}

} // namespace

int RunCamera(const CameraOptions& options)
{
    RequireHeadset(); // without one the camera itself would end the process
    const auto seconds =
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.seconds));
    const Clock::time_point start = Clock::now();
    Progress progress;
    std::thread shower(
        [&]
        {
            try
            {
                Show(options, start + seconds, progress);
            }
            catch (...)
            {
                progress.failure = std::current_exception();
            }
            const std::lock_guard<std::mutex> lock(progress.mutex);
            progress.ended = true;
            progress.changed.notify_all();
        });
    std::unique_lock<std::mutex> lock(progress.mutex);
    constexpr std::chrono::seconds PATIENCE(5); // for the start, the last frame and the picture
    progress.changed.wait_until(lock, start + seconds + PATIENCE, [&] { return progress.ended; });
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("%lu frames, %.1f frames/s\n", progress.frames,
                static_cast<double>(progress.frames) / elapsed);
    if (!progress.ended)
    {
        std::fprintf(stderr, "qlt: the camera sends no frames\n");
        std::fflush(stdout);
        std::_Exit(1); // the thread that waits for a frame cannot be woken
    }
    lock.unlock();
    shower.join();
    if (progress.failure != nullptr)
    {
        std::rethrow_exception(progress.failure);
    }
    return 0;
}
