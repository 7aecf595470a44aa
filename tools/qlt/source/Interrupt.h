// Ctrl-C, and a request to terminate, for commands that go on until the user has enough: they end
// in good order and complete what they write.
#pragma once

/// From now on the signals no longer end the process. After the outputs have been opened: to open a
/// pipe may wait for its reader.
void CatchInterrupts();

/// Whether one of them has come.
bool Interrupted();
