// The subcommands of qlt. Each subcommand has its own file with its options and its work. It prints
// its result on standard output, and an error as one line on standard error.
#pragma once

#include <functional>

namespace CLI
{
class App;
}

/// Runs a subcommand with its parsed options and returns the exit code.
using CommandBody = std::function<int()>;

/// Each function adds the description and the options of its subcommand and returns its body. The
/// program calls the body at most once, after it has parsed the command line.
CommandBody AddCamera(CLI::App& command);
CommandBody AddCompare(CLI::App& command);
CommandBody AddInfo(CLI::App& command);
CommandBody AddMesh(CLI::App& command);
CommandBody AddMonitor(CLI::App& command);
CommandBody AddOpenXr(CLI::App& command); // only in builds with the runtime
CommandBody AddOptics(CLI::App& command);
CommandBody AddRecord(CLI::App& command);
CommandBody AddReplay(CLI::App& command);
CommandBody AddScript(CLI::App& command);
CommandBody AddSynthesize(CLI::App& command);
CommandBody AddView(CLI::App& command);
