#include "commands/Commands.h"

#include "Setup/ActiveRuntime.h"
#include "Setup/System.h"
#include "commands/CommandLine.h"
#include "output/OutputFile.h"
#include "output/PngFile.h"
#include "output/StandardOutput.h"
#include "source/Interrupt.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <thread>

namespace
{

using nlohmann::json;

constexpr int MOST_FRAMES = 1000000;
constexpr int PICTURE_FRAMES = 60; // most programs show their scene by then

struct Options
{
    bool watch = false;
    bool force = false;
    std::string source;
    std::string mirror;
    std::string png;
    int frames = 0; // 0: until the program ends
    std::vector<std::string> program;
};

/// The last status of each session, by process.
using Statuses = std::map<int, json>;

Statuses ReadStatuses()
{
    Statuses statuses;
    for (const std::string& text : qltxr::ReadPublishedTexts())
    {
        const json status =
            json::parse(text, nullptr, false); // parsing fails while the file is being replaced
        if (status.is_object() && status.contains("pid"))
        {
            statuses[status["pid"].get<int>()] = status;
        }
    }
    return statuses;
}

void PrintRuntime()
{
    const std::optional<qltxr::ActiveRuntime> runtime = qltxr::FindActiveRuntime();
    if (!runtime)
    {
        std::printf("runtime   none; qlt openxr enable makes it this one\n");
        return;
    }
    std::printf("runtime   %s%s\n",
                runtime->name.empty() ? "without a name" : runtime->name.c_str(),
                runtime->isOurs ? "" : ", which is not this one");
    std::printf("because   %s: %s\n", runtime->reason.c_str(), runtime->manifest.c_str());
    std::printf("library   %s\n", runtime->library.c_str());
    if (!runtime->mistake.empty())
    {
        std::printf("mistake   %s\n", runtime->mistake.c_str());
    }
}

/// The growth of a count per second between two statuses. 0 when they have the same time.
double RateOf(const char* field, const json& now, const json& before)
{
    const double seconds = (now["time_ns"].get<double>() - before["time_ns"].get<double>()) / 1e9;
    return seconds > 0.0 ? (now[field].get<double>() - before[field].get<double>()) / seconds : 0.0;
}

void PrintSession(const json& now, const json& before)
{
    std::printf("session   %s, process %d\n", now["program"].get<std::string>().c_str(),
                now["pid"].get<int>());
    std::printf("  source    %s, %.0f reports a second\n", now["source"].get<std::string>().c_str(),
                RateOf("reports", now, before));
    std::printf("  output    %s, every %.2f ms\n", now["output"].get<std::string>().c_str(),
                now["period_ms"].get<double>());
    std::printf("  pictures  %.1f a second, %.1f ms to draw, %llu display times missed\n",
                RateOf("pictures", now, before), now["draw_ms"].get<double>(),
                now["missed"].get<unsigned long long>());
    std::printf("  frames    %.1f a second, %llu in all, %llu dropped\n",
                RateOf("frames", now, before), now["frames"].get<unsigned long long>(),
                now["dropped"].get<unsigned long long>());
    for (const json& sentence : now["sentences"])
    {
        std::printf("  said      %s\n", sentence.get<std::string>().c_str());
    }
}

int Status(const Options& options)
{
    PrintRuntime();
    Statuses before = ReadStatuses();
    if (options.watch)
    {
        CatchInterrupts();
    }
    do
    {
        FlushStandardOutput();
        // A session writes its status four times a second, so this pause is long enough for two of
        // them.
        const auto pause = std::chrono::milliseconds(before.empty() && !options.watch ? 0 : 1000);
        std::this_thread::sleep_for(pause);
        const Statuses now = ReadStatuses();
        for (const auto& [process, status] : now)
        {
            const auto earlier = before.find(process);
            PrintSession(status, earlier == before.end() ? status : earlier->second);
        }
        if (now.empty())
        {
            std::printf("session   none\n");
        }
        before = now;
    } while (options.watch && !Interrupted());
    return 0;
}

void SetEnvironment(const char* name, const std::string& value)
{
    if (!value.empty())
    {
        setenv(name, value.c_str(), 1);
    }
}

/// Converts the picture of the runtime, which is a PPM file, to PNG.
void ConvertPicture(const std::filesystem::path& ppm, OutputFile& png)
{
    std::ifstream file(ppm, std::ios::binary);
    std::string kind;
    int width = 0;
    int height = 0;
    int most = 0;
    if (!(file >> kind >> width >> height >> most) || kind != "P6" || width <= 0 || height <= 0)
    {
        throw std::runtime_error("the program has ended before there was a picture");
    }
    file.get();
    std::vector<unsigned char> pixels(std::size_t{3} * static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(height));
    file.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(pixels.size()));
    WritePng(png, width, height, 3, pixels);
}

int RunProgram(const Options& options)
{
    OutputFile png(options.png);
    const std::filesystem::path ppm =
        options.png.empty() ? std::filesystem::path()
                            : std::filesystem::temp_directory_path() /
                                  ("qlt-openxr-" + std::to_string(qltxr::ProcessId()) + ".ppm");
    const int frames = options.frames > 0 ? options.frames : ppm.empty() ? 0 : PICTURE_FRAMES;
    SetEnvironment("XR_RUNTIME_JSON", qltxr::OwnManifest());
    SetEnvironment("QUELTA_SOURCE", options.source);
    SetEnvironment("QUELTA_OPENXR_MIRROR", options.mirror);
    SetEnvironment("QUELTA_OPENXR_PICTURE", ppm.string());
    SetEnvironment("QUELTA_OPENXR_FRAMES", frames > 0 ? std::to_string(frames) : std::string());
    const int code = qltxr::RunProgram(options.program);
    if (!ppm.empty())
    {
        ConvertPicture(ppm, png);
        std::filesystem::remove(ppm);
    }
    return code;
}

void SetUpRun(CommandLine line, Options& options)
{
    line.Rest("program", options.program, "The program and its arguments");
    line.Text("--source", options.source, "The source of the head's orientation");
    line.Text("--mirror", options.mirror, "The size of the window, as 1280x720, or off for none");
    line.Text("--png", options.png, "A picture of what the panel shows after --frames");
    line.Number("--frames", options.frames, 1, MOST_FRAMES,
                "Ask the program to exit after this number of frames");
}

} // namespace

CommandBody AddOpenXr(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Run programs that speak OpenXR on the headset");
    CommandLine status =
        line.Subcommand("status", "Show the active runtime and the state of its sessions");
    status.Flag("--watch", options->watch, "Repeat this until Ctrl-C");
    CommandLine enable =
        line.Subcommand("enable", "Make this runtime the active one for your programs");
    enable.Flag("--force", options->force, "Save the setting of another runtime and replace it");
    CommandLine disable = line.Subcommand("disable", "Undo enable");
    SetUpRun(line.Subcommand("run", "Run one program on this runtime"), *options);
    return [options, status, enable, disable]
    {
        if (status.IsGiven())
        {
            return Status(*options);
        }
        if (!enable.IsGiven() && !disable.IsGiven())
        {
            return RunProgram(*options);
        }
        const std::string done =
            enable.IsGiven() ? qltxr::EnableRuntime(options->force) : qltxr::DisableRuntime();
        std::printf("%s\n", done.c_str());
        return 0;
    };
}
