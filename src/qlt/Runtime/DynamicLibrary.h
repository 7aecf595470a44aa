// Seam to the system: libraries that the SDK uses where they are installed. One body in each wing.
//
// A loaded library stays loaded until the process ends: its own threads may still run in it when
// the last of our objects goes.
#pragma once

#include <string>

namespace qlt
{

using LibraryHandle = void*;

/// Loads `name` (without prefix and extension) from where an application's own files are, and from
/// nowhere else: on Windows beside the program, beside the SDK, then System32; elsewhere beside the
/// SDK. Never from the current folder or the search path, where anybody may have put one. Null when
/// it is not there or cannot be loaded.
LibraryHandle LoadInstalledLibrary(const std::string& name);

/// The address of an exported function; null when there is none of that name.
void* FindFunction(LibraryHandle library, const char* name);

} // namespace qlt
