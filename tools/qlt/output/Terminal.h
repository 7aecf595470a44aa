// What the command asks of the terminal it runs in. One body in each wing.
#pragma once

/// Whether standard output is a terminal and a line on it may be written over.
bool StandardOutputIsTerminal();

/// Before any file is opened: no file takes the place of a standard stream that is closed, and a
/// reader that closes its pipe does not end the process. False when standard output is closed.
bool PrepareStandardStreams();

/// Whether a write to standard output that failed with this errno has met a pipe without a reader.
bool IsClosedPipe(int error);

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
