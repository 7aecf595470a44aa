// Operations on the terminal and the standard streams. Each wing implements these functions for its
// system.
#pragma once

/// True when standard output is a terminal, so that a line can be overwritten.
bool StandardOutputIsTerminal();

/// True when standard error is a terminal.
bool StandardErrorIsTerminal();

/// Prepares the standard streams; call it before any file is opened. No file then takes the place
/// of a closed standard stream, and a reader that closes its pipe does not end the process. Returns
/// false when standard output is closed.
bool PrepareStandardStreams();

/// True when this errno of a failed write to standard output means a pipe without a reader.
bool IsClosedPipe(int error);

/// While the object exists, everything that the process writes to standard output goes to standard
/// error. This includes the SDK's progress lines.
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
