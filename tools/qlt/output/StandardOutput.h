// Whether what the command prints reaches its reader.
#pragma once

/// Writes out what has been printed; false when that, or something before, has failed.
bool FlushStandardOutput();

/// The exit code of a command that ends with `code`: 1, with one line on standard error, when it
/// would be 0 and something that was printed is lost. A reader that has closed its pipe has had
/// enough, which is no failure.
int CompleteStandardOutput(int code);
