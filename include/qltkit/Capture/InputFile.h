#pragma once

#include <qltkit/Export.h>

#include <string>

namespace qltkit
{

/// Returns all bytes of a file, or of a pipe up to its end. The call waits until a pipe ends.
/// Throws Error with one sentence when there is no such file, when it cannot be read, and when it
/// is a folder or a device. Any thread.
QLTKIT_API std::string ReadInput(const std::string& path);

} // namespace qltkit
