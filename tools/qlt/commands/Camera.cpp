#include "commands/Commands.h"

#include <qlt/qlt.h>

#include "commands/CommandLine.h"
#include "output/OutputFile.h"
#include "output/PngFile.h"
#include "source/HeadsetSearch.h"
#include "source/Interrupt.h"
#include "view/CameraThread.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace
{

struct Options
{
    double seconds = 5.0;
    std::string png; // empty: no picture
};

int Run(const Options& options)
{
    using Clock = std::chrono::steady_clock;
    std::optional<OutputFile> png(options.png);
    RequireHeadset(HeadsetPart::Camera); // without a headset the camera would end the process
    CatchInterrupts();
    const std::chrono::duration<double> length(options.seconds);
    const Clock::time_point start = Clock::now();
    CameraThread camera;
    while (!Interrupted() && !camera.HasEnded() && Clock::now() - start < length)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const bool ended = camera.Stop();
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("%lu frames, %.1f frames/s\n", camera.Frames(),
                static_cast<double>(camera.Frames()) / elapsed);
    if (!ended)
    {
        std::fprintf(stderr, "qlt: the camera sends no frames\n");
        std::fflush(stdout);
        png.reset();
        std::_Exit(1); // nothing can wake a thread that waits for a frame
    }
    if (!options.png.empty())
    {
        WritePng(*png, qlt::Camera::GetWidth(), qlt::Camera::GetHeight(), 1, camera.LastFrame());
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
