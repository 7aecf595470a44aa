#include "commands/Commands.h"

#include <qlt/qlt.h>
#include <qltkit/Headset/RecordingPlayer.h>

#include "commands/CommandLine.h"
#include "output/LogCapture.h"
#include "output/OutputFile.h"
#include "output/Progress.h"
#include "output/ReportFile.h"
#include "source/HeadsetSearch.h"
#include "source/Interrupt.h"
#include "source/RecordingInput.h"
#include "view/CameraThread.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

namespace
{

struct Options
{
    std::string recording;
    std::string source = "headset"; // headset, simulator or a file
    double seconds = 0.0;           // 0: until interrupted or the file ends
    bool camera = false;            // record the camera's frames, too
};

using SteadyClock = std::chrono::steady_clock;

/// Opens the source, and lists the faults of a recording on standard error.
std::unique_ptr<qltkit::Source> Open(const std::string& name)
{
    if (FileOfSource(name).empty() || IsScript(name))
    {
        return qltkit::OpenSource(name);
    }
    bool whole = true;
    return std::make_unique<qltkit::RecordingPlayer>(LoadInput(name, whole),
                                                     qltkit::RecordingPlayer::Pace::Recorded);
}

qltkit::CaptureOptions OptionsFor(const Options& options, qltkit::Source& source)
{
    qltkit::CaptureOptions capture;
    capture.clock = &source;
    capture.metadata = {
        {"source", options.source},           {"source.usb", source.Name()},
        {"device", qlt::Params::HMD_NAME},    {"device.usb", "04B4:00F1"},
        {"core.version", QLT_VERSION_STRING}, {"command", std::string("qlt ") + QLT_VERSION}};
    return capture;
}

/// Starts the camera, whose frames go into the capture. Null when the user does not want them.
std::unique_ptr<CameraThread> StartCamera(const Options& options, ReportFile& file)
{
    if (!options.camera)
    {
        return nullptr;
    }
    const auto add = [&capture = *file.Capture()](const CameraThread::Pixels& pixels)
    {
        const auto width = static_cast<std::uint32_t>(qlt::Camera::GetWidth());
        const auto height = static_cast<std::uint32_t>(qlt::Camera::GetHeight());
        const auto* const bytes = reinterpret_cast<const char*>(pixels.data());
        capture.AddFrame({width, height, width, "mono8", {bytes, pixels.size()}});
    };
    return std::make_unique<CameraThread>(add);
}

/// Waits until the recording should end, and shows its progress.
void Watch(const Options& options, const qltkit::Source& source, const CameraThread* camera,
           const ReportFile& file)
{
    Progress progress;
    std::string trouble;
    const SteadyClock::time_point start = SteadyClock::now();
    double elapsed = 0.0;
    while (!Interrupted() && !source.IsOver() && !file.HasFailed() &&
           !(camera != nullptr && camera->HasEnded()) &&
           (options.seconds <= 0.0 || elapsed < options.seconds))
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        elapsed = std::chrono::duration<double>(SteadyClock::now() - start).count();
        progress.Show(options.seconds > 0.0 ? elapsed / options.seconds : -1.0,
                      OutputFile::Format("%.1f s, %llu reports", elapsed,
                                         static_cast<unsigned long long>(file.Reports())));
        if (const std::string now = file.Trouble(); now != trouble)
        {
            std::fprintf(stderr, "qlt: %s: %s\n", options.recording.c_str(),
                         now.empty() ? "the data is written again" : now.c_str());
            trouble = now;
        }
    }
}

/// Completes the file, and ends the process. Nothing can wake a thread that waits for a frame.
[[noreturn]] void EndWithoutCamera(ReportFile& file)
{
    try
    {
        std::printf("%s\n", file.Close().c_str());
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "qlt: %s\n", error.what());
    }
    std::fprintf(stderr, "qlt: the camera sends no frames\n");
    std::fflush(stdout);
    std::_Exit(1);
}

/// Runs a tracker on the source, because the headset sends only to a tracker. Returns the number of
/// the camera's frames.
unsigned long Track(const Options& options, qltkit::Source& source, ReportFile& file)
{
    qltkit::ReportTap tap(source, source, file.Sink());
    std::optional<LogCapture> log;
    if (file.Capture() != nullptr)
    {
        log.emplace(*file.Capture());
    }
    qlt::Hmd hmd(tap, source);
    hmd.Start();
    std::unique_ptr<CameraThread> camera = StartCamera(options, file);
    Watch(options, source, camera.get(), file);
    const bool isCameraStopped = camera == nullptr || camera->Stop();
    const unsigned long frames = camera == nullptr ? 0 : camera->Frames();
    file.EndReads();
    if (!FileOfSource(options.source).empty())
    {
        source.Close(); // otherwise the end would wait for a pause in the file
    }
    hmd.Stop();
    source.Close(); // ends the search for a headset
    if (!isCameraStopped)
    {
        EndWithoutCamera(file);
    }
    return frames;
}

int Run(const Options& options)
{
    if (options.camera)
    {
        RequireHeadset(HeadsetPart::Camera); // without a headset the camera would end the process
    }
    const std::unique_ptr<qltkit::Source> source = Open(options.source);
    const std::unique_ptr<ReportFile> file =
        CreateReportFile(options.recording, OptionsFor(options, *source));
    CatchInterrupts();
    if (options.source == "headset")
    {
        SayThatHeadsetIsAwaited();
    }
    const unsigned long frames = Track(options, *source, *file);
    if (file->Reports() == 0 && frames == 0 && !file->HasFailed())
    {
        throw std::runtime_error("no report has come; " + options.recording + " is not written");
    }
    std::printf("%s\n", file->Close().c_str());
    return 0;
}

} // namespace

CommandBody AddRecord(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Write a headset's reports to a file, for replay");
    line.File("recording", options->recording,
              "The file to write: a capture (.mcap), which also has times, events and texts, or "
              "only the reports (.bin)")
        .Required()
        .Check(RefuseReportFile);
    line.Source(options->source);
    line.Seconds(options->seconds, "Stop after this number of seconds");
    line.Flag("--camera", options->camera, "Record the frames of the headset's camera, too");
    line.AfterParsing(
        [options]
        {
            RequireDistinct({FileOfSource(options->source)}, {options->recording});
            Require(!options->camera ||
                        (options->source == "headset" && IsCaptureName(options->recording)),
                    "only a capture (.mcap) of the headset can have the frames of the camera");
        });
    return [options] { return Run(*options); };
}
