// The command line of qlt. Exit codes: 0 done, 1 failed (one line on standard error), 2 not
// understood.
#include "commands/Commands.h"
#include "commands/OptionChecks.h"
#include "output/StandardOutput.h"
#include "output/Terminal.h"

#include <algorithm>
#include <exception>
#include <iostream>

namespace
{

constexpr int MAX_RESOLUTION = 4096;

CLI::Option* AddSeconds(CLI::App& command, double& seconds, const std::string& text)
{
    return RequireNumber(command.add_option("--seconds", seconds, text), 0.001, MAX_SECONDS);
}

void AddSource(CLI::App& command, std::string& source)
{
    RequireName(
        command.add_option("--source", source,
                           "simulator, headset, or a recording, which plays at its own pace"))
        ->capture_default_str();
}

void AddMonitor(CLI::App& app, MonitorOptions& options)
{
    CLI::App* command = app.add_subcommand("monitor", "Show a tracker's orientation live");
    AddSource(*command, options.source);
    AddSeconds(*command, options.seconds, "Stop after so many seconds");
    RequireName(command->add_option("--csv", options.csv, "Write every orientation to this file"));
    command->add_flag("--objects", options.objects,
                      "Show the first objects that the host service tracks, too");
    command->callback([&options]
                      { RequireDistinct({FileOfSource(options.source)}, {options.csv}); });
}

void AddView(CLI::App& app, ViewOptions& options)
{
    CLI::App* command = app.add_subcommand(
        "view", "Look around in a scene as the headset shows it; D: lens on and off, R or space: "
                "here is forward, Esc: close");
    AddSource(*command, options.source);
    RequireName(
        command->add_option("--png", options.png,
                            "Instead of a window: save one picture, of a moment some seconds in"));
    AddSeconds(*command, options.seconds, "Close after so many seconds; that moment");
    command->callback([&options]
                      { RequireDistinct({FileOfSource(options.source)}, {options.png}); });
}

void AddReplay(CLI::App& app, ReplayOptions& options)
{
    CLI::App* command = app.add_subcommand(
        "replay", "Run a recording through the headset tracker, as fast as it goes");
    RequireName(command->add_option("recording", options.recording,
                                    "64-byte sensor reports, one after another"))
        ->required();
    RequireName(
        command->add_option("--truth", options.truth, "Measured orientations to compare with"));
    RequireName(command->add_option("--csv", options.csv,
                                    "Write the orientation after every report to this file"));
    command->add_flag("--json", options.json, "Print one JSON object and nothing else");
    command->callback(
        [&options] {
            RequireDistinct({options.recording, options.truth}, {options.csv});
        });
}

void AddSynthesize(CLI::App& app, SynthesizeOptions& options)
{
    CLI::App* command = app.add_subcommand(
        "synthesize", "Write the recording of a software headset that turns, nods and rests");
    RequireName(command->add_option("recording", options.recording, "The file to write"))
        ->required();
    RequireName(
        command->add_option("--truth", options.truth, "Write the true orientations to this file"));
    RequireNumber(command->add_option("--seconds", options.seconds, "Length of the recording"),
                  0.001, 3600.0)
        ->capture_default_str();
    RequireNumber(command->add_option("--seed", options.seed, "Another seed, another motion"),
                  std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max())
        ->capture_default_str();
    command->add_flag("--ideal", options.ideal, "Sensors without bias and noise");
    command->callback([&options] { RequireDistinct({}, {options.recording, options.truth}); });
}

/// "WxH" in cells, as a validator that also stores it.
std::string ParseResolution(const std::string& text, MeshOptions& options)
{
    const std::size_t middle = std::min(text.find('x'), text.size());
    const auto x = ParseNumber(text.substr(0, middle), 1, MAX_RESOLUTION);
    const auto y = ParseNumber(text.substr(std::min(middle + 1, text.size())), 1, MAX_RESOLUTION);
    if (!x || !y)
    {
        return "must be WxH, each from 1 to " + std::to_string(MAX_RESOLUTION);
    }
    options.resX = *x;
    options.resY = *y;
    return {};
}

void AddMesh(CLI::App& app, MeshOptions& options)
{
    CLI::App* command =
        app.add_subcommand("mesh", "Build the lens mesh of one eye, and draw or write it");
    command
        ->add_option_function<std::string>(
            "--eye", [&options](const std::string& eye) { options.rightEye = eye == "right"; },
            "left or right")
        ->check(CLI::IsMember({"left", "right"}))
        ->default_str("left");
    command->add_option("--resolution", "Cells across and down, as WxH")
        ->default_str("32x36")
        ->check([&options](const std::string& text) { return ParseResolution(text, options); });
    command->add_flag("--strip", options.strip, "One triangle strip instead of a list");
    RequireName(command->add_option("--svg", options.svg,
                                    "Draw it: a grid as the panel shows it to the lens"));
    RequireName(command->add_option("--obj", options.obj, "Write it for other programs"));
    RequireName(command->add_option("--csv", options.csv, "Write its vertices as numbers"));
    command->callback([&options] { RequireDistinct({}, {options.svg, options.obj, options.csv}); });
}

void AddOptics(CLI::App& app, std::string& svg)
{
    CLI::App* command = app.add_subcommand("optics", "Draw the measured lens");
    RequireName(command->add_option("--svg", svg, "The file to draw"))->required();
}

void AddCamera(CLI::App& app, CameraOptions& options)
{
    CLI::App* command = app.add_subcommand("camera", "Show the frame rate of the headset's camera");
    AddSeconds(*command, options.seconds, "Stop after so many seconds")->capture_default_str();
    RequireName(command->add_option("--png", options.png, "Save the last frame as a picture"));
}

void AddRecord(CLI::App& app, RecordOptions& options)
{
    CLI::App* command =
        app.add_subcommand("record", "Write the headset's reports down as they come, for replay");
    RequireName(command->add_option("recording", options.recording, "The file to write"))
        ->required();
    AddSeconds(*command, options.seconds, "Stop after so many seconds");
}

/// Says why a command line is not understood, or gives the help that it asks for.
int Refuse(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> rest = app.remaining();
    if (app.get_subcommands().empty() && !rest.empty())
    {
        std::cerr << '"' << rest.front() << "\" is not a command of qlt\n"
                  << "Run with --help for more information.\n";
        return 2;
    }
    return app.exit(error) == 0 ? 0 : 2;
}

int Run(int argc, char** argv)
{
    CLI::App app("The command of the QueltaSDK.", "qlt");
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // a path may begin with a slash there, too
    app.set_version_flag("--version", QLT_VERSION);
    MonitorOptions monitor;
    ViewOptions view;
    ReplayOptions replay;
    SynthesizeOptions synthesize;
    MeshOptions mesh;
    CameraOptions camera;
    RecordOptions record;
    std::string opticsSvg;
    app.add_subcommand("info", "Show the version, the device's constants and what is connected");
    AddMonitor(app, monitor);
    AddView(app, view);
    AddReplay(app, replay);
    AddSynthesize(app, synthesize);
    AddMesh(app, mesh);
    AddCamera(app, camera);
    AddRecord(app, record);
    AddOptics(app, opticsSvg);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return Refuse(app, error);
    }
    if (app.got_subcommand("monitor"))
    {
        return RunMonitor(monitor);
    }
    if (app.got_subcommand("view"))
    {
        return RunView(view);
    }
    if (app.got_subcommand("replay"))
    {
        return RunReplay(replay);
    }
    if (app.got_subcommand("synthesize"))
    {
        return RunSynthesize(synthesize);
    }
    if (app.got_subcommand("camera"))
    {
        return RunCamera(camera);
    }
    if (app.got_subcommand("record"))
    {
        return RunRecord(record);
    }
    if (app.got_subcommand("mesh"))
    {
        return RunMesh(mesh);
    }
    return app.got_subcommand("optics") ? RunOptics(opticsSvg) : RunInfo();
}

} // namespace

int main(int argc, char** argv)
{
    if (!PrepareStandardStreams())
    {
        std::cerr << "qlt: standard output is closed\n";
        return 1;
    }
    try
    {
        return CompleteStandardOutput(Run(argc, argv));
    }
    catch (const std::exception& error)
    {
        std::cerr << "qlt: " << error.what() << '\n';
        return CompleteStandardOutput(1);
    }
}
