#include "output/Terminal.h"

#include <cstdio>

#include <io.h>
#include <windows.h>

namespace
{

// The numbers are descriptors of the C runtime. The DLL and the program share it.
constexpr int STANDARD_OUTPUT = 1;
constexpr int STANDARD_ERROR = 2;

} // namespace

bool StandardOutputIsTerminal() { return _isatty(STANDARD_OUTPUT) != 0; }

bool StandardErrorIsTerminal() { return _isatty(STANDARD_ERROR) != 0; }

bool PrepareStandardStreams()
{
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    return output != nullptr && output != INVALID_HANDLE_VALUE;
}

// Some errors of a pipe have no errno. A write to a pipe fails only when the pipe has no reader, so
// the type of the output is enough.
bool IsClosedPipe(int) { return GetFileType(GetStdHandle(STD_OUTPUT_HANDLE)) == FILE_TYPE_PIPE; }

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
