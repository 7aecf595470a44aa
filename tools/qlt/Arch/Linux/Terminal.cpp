#include "Terminal.h"

#include <cstdio>

#include <unistd.h>

bool StandardOutputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

StandardOutputToError::StandardOutputToError()
{
    std::fflush(stdout);
    mSaved = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

StandardOutputToError::~StandardOutputToError()
{
    std::fflush(stdout);
    dup2(mSaved, STDOUT_FILENO);
    close(mSaved);
}
