// The subcommands of qlt. Each subcommand has its own file with its options and its work. It prints
// its result on standard output, and an error as one line on standard error.
#pragma once

#include "commands/CommandLine.h"

/// Each function adds the description and the options of its subcommand and returns its body. The
/// program calls the body at most once, after it has parsed the command line.
CommandBody AddCalibrate(CommandLine line);
CommandBody AddCamera(CommandLine line);
CommandBody AddCapture(CommandLine line);
CommandBody AddCompare(CommandLine line);
CommandBody AddExport(CommandLine line);
CommandBody AddInfo(CommandLine line);
CommandBody AddMesh(CommandLine line);
CommandBody AddMonitor(CommandLine line);
CommandBody AddOpenXr(CommandLine line); // only in builds with the runtime
CommandBody AddOptics(CommandLine line);
CommandBody AddRecord(CommandLine line);
CommandBody AddReplay(CommandLine line);
CommandBody AddScript(CommandLine line);
CommandBody AddSynthesize(CommandLine line);
CommandBody AddView(CommandLine line);
