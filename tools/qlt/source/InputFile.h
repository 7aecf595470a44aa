// Files that a command reads.
#pragma once

#include <string>

/// The whole of a file or a pipe. std::runtime_error with one sentence for what is missing, may not
/// be read, or is a folder or a device.
std::string ReadInput(const std::string& path);
