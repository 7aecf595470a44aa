// The command line of qlt. Exit codes: 0 done, 1 failed (one line on standard error), 2 not
// understood.
#include "Commands.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

namespace
{

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

int Run(int argc, char** argv)
{
    CLI::App app("The command of the QueltaSDK.", "qlt");
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // a path may begin with a slash there, too
    app.set_version_flag("--version", QLT_VERSION);
    MonitorOptions monitor;
    ReplayOptions replay;
    SynthesizeOptions synthesize;
    app.add_subcommand("info", "Show the version, the device's constants and what is connected");
    AddMonitor(app, monitor);
    AddReplay(app, replay);
    AddSynthesize(app, synthesize);
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
    if (app.got_subcommand("replay"))
    {
        return RunReplay(replay);
    }
    return app.got_subcommand("synthesize") ? RunSynthesize(synthesize) : RunInfo();
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
