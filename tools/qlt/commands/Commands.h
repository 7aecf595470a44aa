// The subcommands of qlt. Each one has a file of its own with its options, its command line and its
// work. A subcommand prints its result on standard output and an error as one line on standard
// error.
#pragma once

#include <functional>

namespace CLI
{
class App;
}

/// Does the work of a subcommand with the options that were parsed, and returns the exit code.
using CommandBody = std::function<int()>;

/// Each of these sets up the description and the options of its subcommand, and returns its body,
/// which is called after the command line has been parsed, at most once.
CommandBody AddCamera(CLI::App& command);
CommandBody AddInfo(CLI::App& command);
CommandBody AddMesh(CLI::App& command);
CommandBody AddMonitor(CLI::App& command);
CommandBody AddOpenXr(CLI::App& command); // where the runtime is built
CommandBody AddOptics(CLI::App& command);
CommandBody AddRecord(CLI::App& command);
CommandBody AddReplay(CLI::App& command);
CommandBody AddScript(CLI::App& command);
CommandBody AddSynthesize(CLI::App& command);
CommandBody AddView(CLI::App& command);
