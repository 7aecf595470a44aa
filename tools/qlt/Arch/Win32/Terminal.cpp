#include "Terminal.h"

#include <cstdio>

#include <io.h>

namespace
{

// The C runtime's descriptors, which the DLL and the program share.
constexpr int STANDARD_OUTPUT = 1;
constexpr int STANDARD_ERROR = 2;

} // namespace

bool StandardOutputIsTerminal() { return _isatty(STANDARD_OUTPUT) != 0; }

StandardOutputToError::StandardOutputToError()
{
    std::fflush(stdout);
    mSaved = _dup(STANDARD_OUTPUT);
    _dup2(STANDARD_ERROR, STANDARD_OUTPUT);
}

StandardOutputToError::~StandardOutputToError()
{
    std::fflush(stdout);
    _dup2(mSaved, STANDARD_OUTPUT);
    _close(mSaved);
}
