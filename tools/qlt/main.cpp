// The command line of qlt. Exit codes: 0 for success, 1 for a failure (one line on standard error),
// 2 for a wrong command line.
#include "commands/Commands.h"
#include "output/StandardOutput.h"
#include "output/Terminal.h"

#include <exception>
#include <iostream>

namespace
{

// The help text lists the commands in this order.
const std::vector<Command> COMMANDS = {
    {"info", AddInfo},
    {"monitor", AddMonitor},
    {"view", AddView},
    {"replay", AddReplay},
    {"compare", AddCompare},
    {"calibrate", AddCalibrate},
    {"synthesize", AddSynthesize},
    {"mesh", AddMesh},
    {"camera", AddCamera},
    {"record", AddRecord},
    {"optics", AddOptics},
    {"script", AddScript},
    {"capture", AddCapture},
    {"export", AddExport},
#if defined(QLT_HAVE_OPENXR)
    {"openxr", AddOpenXr},
#endif
};

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
        return CompleteStandardOutput(RunCommand(COMMANDS, argc, argv));
    }
    catch (const std::exception& error)
    {
        std::cerr << "qlt: " << error.what() << '\n';
        return CompleteStandardOutput(1);
    }
}
