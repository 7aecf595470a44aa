// What the command asks of the terminal it runs in. One body in each wing.
#pragma once

/// Whether standard output is a terminal and a line on it may be written over.
bool StandardOutputIsTerminal();

/// While it lives, everything that the process writes to standard output, the SDK's progress lines
/// included, goes to standard error.
class StandardOutputToError
{
public:
    StandardOutputToError();
    ~StandardOutputToError();
    StandardOutputToError(const StandardOutputToError&) = delete;
    StandardOutputToError& operator=(const StandardOutputToError&) = delete;

private:
    int mSaved;
};
