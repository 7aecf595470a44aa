// The command line of qlt. Exit codes: 0 done, 1 failed (one line on standard error), 2 not
// understood.
#include "Commands.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <iostream>

namespace
{

constexpr int MAX_RESOLUTION = 4096;

void AddMonitor(CLI::App& app, MonitorOptions& options)
{
    CLI::App* command = app.add_subcommand("monitor", "Show a tracker's orientation live");
    command
        ->add_option("--source", options.source,
                     "simulator, headset, or a recording, which plays at its own pace")
        ->capture_default_str();
    command->add_option("--seconds", options.seconds, "Stop after so many seconds")
        ->check(CLI::PositiveNumber);
    command->add_option("--csv", options.csv, "Write every orientation to this file");
    command->add_flag("--objects", options.objects,
                      "Show the first objects that the host service tracks, too");
}

void AddView(CLI::App& app, ViewOptions& options)
{
    CLI::App* command = app.add_subcommand(
        "view", "Look around in a scene as the headset shows it; D: lens on and off, R or space: "
                "here is forward, Esc: close");
    command
        ->add_option("--source", options.source,
                     "simulator, headset, or a recording, which plays at its own pace")
        ->capture_default_str();
    command->add_option("--png", options.png,
                        "Instead of a window: save one picture, of a moment some seconds in");
    command->add_option("--seconds", options.seconds, "Close after so many seconds; that moment")
        ->check(CLI::PositiveNumber);
}

void AddReplay(CLI::App& app, ReplayOptions& options)
{
    CLI::App* command = app.add_subcommand(
        "replay", "Run a recording through the headset tracker, as fast as it goes");
    command->add_option("recording", options.recording, "64-byte sensor reports, one after another")
        ->required();
    command->add_option("--truth", options.truth, "Measured orientations to compare with");
    command->add_option("--csv", options.csv,
                        "Write the orientation after every report to this file");
    command->add_flag("--json", options.json, "Print one JSON object and nothing else");
}

void AddSynthesize(CLI::App& app, SynthesizeOptions& options)
{
    CLI::App* command = app.add_subcommand(
        "synthesize", "Write the recording of a software headset that turns, nods and rests");
    command->add_option("recording", options.recording, "The file to write")->required();
    command->add_option("--truth", options.truth, "Write the true orientations to this file");
    command->add_option("--seconds", options.seconds, "Length of the recording")
        ->check(CLI::Range(0.001, 3600.0))
        ->capture_default_str();
    command->add_option("--seed", options.seed, "Another seed, another motion")
        ->capture_default_str();
    command->add_flag("--ideal", options.ideal, "Sensors without bias and noise");
}

/// "WxH" in cells, as a validator that also stores it.
std::string ParseResolution(const std::string& text, MeshOptions& options)
{
    char rest = 0;
    int x = 0;
    int y = 0;
    const bool isPair = std::sscanf(text.c_str(), "%dx%d%c", &x, &y, &rest) == 2;
    if (!isPair || x < 1 || y < 1 || x > MAX_RESOLUTION || y > MAX_RESOLUTION)
    {
        return "must be WxH, each from 1 to " + std::to_string(MAX_RESOLUTION);
    }
    options.resX = x;
    options.resY = y;
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
    command->add_option("--svg", options.svg, "Draw it: a grid as the panel shows it to the lens");
    command->add_option("--obj", options.obj, "Write it for other programs");
    command->add_option("--csv", options.csv, "Write its vertices as numbers");
}

void AddOptics(CLI::App& app, std::string& svg)
{
    app.add_subcommand("optics", "Draw the measured lens")
        ->add_option("--svg", svg, "The file to draw")
        ->required();
}

void AddCamera(CLI::App& app, CameraOptions& options)
{
    CLI::App* command = app.add_subcommand("camera", "Show the frame rate of the headset's camera");
    command->add_option("--seconds", options.seconds, "Stop after so many seconds")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    command->add_option("--png", options.png, "Save the last frame as a picture");
}

void AddRecord(CLI::App& app, RecordOptions& options)
{
    CLI::App* command =
        app.add_subcommand("record", "Write the headset's reports down as they come, for replay");
    command->add_option("recording", options.recording, "The file to write")->required();
    command->add_option("--seconds", options.seconds, "Stop after so many seconds")
        ->check(CLI::PositiveNumber);
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
        return app.exit(error) == 0 ? 0 : 2;
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
    try
    {
        return Run(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::cerr << "qlt: " << error.what() << '\n';
        return 1;
    }
}
