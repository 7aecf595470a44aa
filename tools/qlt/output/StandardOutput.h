// Checks that the printed text reaches its reader.
#pragma once

/// Flushes the printed text. Returns false when this or an earlier write has failed.
bool FlushStandardOutput();

/// Returns the exit code of a command that ends with `code`. When `code` is 0 and printed text was
/// lost, it prints one line on standard error and returns 1. A reader that closes its pipe is no
/// failure.
int CompleteStandardOutput(int code);
