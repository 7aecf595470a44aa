// The command line of qlt. Exit codes: 0 for success, 1 for a failure (one line on standard error),
// 2 for a wrong command line.
#include "commands/Commands.h"
#include "output/StandardOutput.h"
#include "output/Terminal.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <map>

namespace
{

struct Command
{
    const char* name;
    CommandBody (*add)(CLI::App& command);
};

// The help text lists the commands in this order.
constexpr Command COMMANDS[] = {
    {"info", AddInfo},     {"monitor", AddMonitor}, {"view", AddView},
    {"replay", AddReplay}, {"compare", AddCompare}, {"synthesize", AddSynthesize},
    {"mesh", AddMesh},     {"camera", AddCamera},   {"record", AddRecord},
    {"optics", AddOptics}, {"script", AddScript},
#if defined(QLT_HAVE_OPENXR)
    {"openxr", AddOpenXr},
#endif
};

/// Prints why a command line is wrong, or the help that it asks for. Returns the exit code.
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
    app.allow_windows_style_options(false); // on Windows a path may begin with a slash, too
    app.set_version_flag("--version", QLT_VERSION);
    std::map<const CLI::App*, CommandBody> bodies;
    for (const Command& command : COMMANDS)
    {
        CLI::App* subcommand = app.add_subcommand(command.name);
        bodies[subcommand] = command.add(*subcommand);
    }
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return Refuse(app, error);
    }
    return bodies.at(app.get_subcommands().front())();
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
