// Loads the files that a command can play.
#pragma once

#include <qltkit/Capture/Recording.h>

#include <string>

/// Loads the recording that a command plays: a capture, a recording, or a headset script (.json).
/// The reports of a script are made as fast as possible. The faults are listed on standard error.
/// `whole` becomes false when the file is damaged or truncated. Throws std::runtime_error with one
/// sentence when the file cannot be read, when it is no recording, and when the script has no end.
qltkit::Recording LoadInput(const std::string& path, bool& whole);

/// True for the file of a headset script.
bool IsScript(const std::string& path);
