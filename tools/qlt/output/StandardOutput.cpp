#include "output/StandardOutput.h"

#include "output/Terminal.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <system_error>

namespace
{

int gError = 0; // errno of the first failure

} // namespace

bool FlushStandardOutput()
{
    // When standard output has no buffer, the last print has failed already and set errno.
    if (gError == 0 && (std::fflush(stdout) != 0 || std::ferror(stdout) != 0))
    {
        gError = errno != 0 ? errno : EIO;
    }
    return gError == 0;
}

int CompleteStandardOutput(int code)
{
    if (FlushStandardOutput() || IsClosedPipe(gError) ||
        code != 0) // a code above 0 has been explained already
    {
        return code;
    }
    std::cerr << "qlt: cannot write to standard output: " << std::generic_category().message(gError)
              << '\n';
    return 1;
}
