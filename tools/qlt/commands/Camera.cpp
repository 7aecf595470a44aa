#include "commands/Commands.h"

#include <qlt/qlt.h>

#include "commands/CommandLine.h"
#include "output/OutputFile.h"
#include "output/PngFile.h"
#include "source/HeadsetSearch.h"
#include "source/Interrupt.h"
#include "view/GlContext.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <GL/glew.h>

namespace
{

struct Options
{
    double seconds = 5.0;
    std::string png; // empty: no picture
};

using Clock = std::chrono::steady_clock;

/// The state that the thread of the OpenGL context shares with the thread that watches the time.
/// Two threads are needed, because an update may wait forever.
struct Progress
{
    std::mutex mutex;
    std::condition_variable changed;
    unsigned long frames = 0;
    bool ended = false;
    std::vector<unsigned char> lastFrame; // grey levels, set at the end
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

void Show(Clock::time_point end, Progress& progress)
{
    const GlContext context;
    qlt::Camera camera;
    do
    {
        camera.Update();
        const std::lock_guard<std::mutex> lock(progress.mutex);
        ++progress.frames;
    } while (Clock::now() < end && !Interrupted());
    progress.lastFrame = ReadBack(camera);
}

/// Waits until the thread has ended. Returns false when it has not ended in time after `end` or an
/// interrupt.
bool WaitForEnd(Progress& progress, std::unique_lock<std::mutex>& lock, Clock::time_point end)
{
    constexpr std::chrono::seconds PATIENCE(5); // the time for the start and the last frame
    while (!progress.ended && Clock::now() < end + PATIENCE)
    {
        progress.changed.wait_for(lock, std::chrono::milliseconds(50));
        end = Interrupted() ? std::min(end, Clock::now()) : end;
    }
    return progress.ended;
}

int Run(const Options& options)
{
    std::optional<OutputFile> png(options.png);
    RequireHeadset(HeadsetPart::Camera); // without a headset the camera would end the process
    CatchInterrupts();
    const auto seconds =
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.seconds));
    const Clock::time_point start = Clock::now();
    Progress progress;
    std::thread shower(
        [&]
        {
            try
            {
                Show(start + seconds, progress);
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
    const bool ended = WaitForEnd(progress, lock, start + seconds);
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("%lu frames, %.1f frames/s\n", progress.frames,
                static_cast<double>(progress.frames) / elapsed);
    if (!ended)
    {
        std::fprintf(stderr, "qlt: the camera sends no frames\n");
        std::fflush(stdout);
        png.reset();
        std::_Exit(1); // nothing can wake a thread that waits for a frame
    }
    lock.unlock();
    shower.join();
    if (progress.failure != nullptr)
    {
        std::rethrow_exception(progress.failure);
    }
    if (!options.png.empty())
    {
        WritePng(*png, qlt::Camera::GetWidth(), qlt::Camera::GetHeight(), 1, progress.lastFrame);
    }
    return 0;
}

} // namespace

CommandBody AddCamera(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Show the frame rate of the headset's camera");
    line.Seconds(options->seconds, "Stop after this number of seconds").ShowDefault();
    line.File("--png", options->png, "Save the last frame as a picture");
    return [options] { return Run(*options); };
}
