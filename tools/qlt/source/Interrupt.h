// Handles Ctrl-C and the request to terminate, for commands that run until the user stops them.
// Such a command then completes its files and ends.
#pragma once

/// After this call the signals do not end the process. Call it after the outputs have been opened,
/// because opening a pipe may wait for its reader.
void CatchInterrupts();

/// True when one of the signals has arrived.
bool Interrupted();
