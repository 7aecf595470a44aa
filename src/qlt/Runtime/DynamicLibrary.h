// Loads libraries that the SDK uses when they are installed. Each wing implements these functions
// for its system.
//
// A loaded library stays loaded until the process ends, because its own threads may still run its
// code after our last object is destroyed.
#pragma once

#include <string>

namespace qlt
{

using LibraryHandle = void*;

/// Loads the library `name`, which is given without prefix and extension. On Windows it tries the
/// folder of the program, the folder of the SDK and System32, in this order. Elsewhere it tries the
/// folder of the SDK. It never tries the current folder or the search path, because anybody may
/// have put a library there. Null when there is no such library and when it cannot be loaded.
LibraryHandle LoadInstalledLibrary(const std::string& name);

/// The address of the exported function `name`; null when the library has none.
void* FindFunction(LibraryHandle library, const char* name);

} // namespace qlt
