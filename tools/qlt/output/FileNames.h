// Questions to the system about the names of files. Each wing implements these functions for its
// system.
#pragma once

#include <filesystem>

/// True when the name leads to the standard output of the process.
bool IsStandardOutput(const std::filesystem::path& path);

/// True when two names are the same for the system. Both must be in their normal form.
bool AreSameName(const std::filesystem::path& a, const std::filesystem::path& b);
