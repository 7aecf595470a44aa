// What the system says about a file's name. One body in each wing.
#pragma once

#include <filesystem>

/// Whether the name leads to the standard output of the process.
bool IsStandardOutput(const std::filesystem::path& path);

/// Whether two names, both in their normal form, are one to the system.
bool AreSameName(const std::filesystem::path& a, const std::filesystem::path& b);
