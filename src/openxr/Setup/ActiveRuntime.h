// Finds the OpenXR runtime that this user's programs get, and makes this runtime the active one.
// The search is the same as that of the OpenXR loader.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qltxr
{

struct ActiveRuntime
{
    std::string manifest; // the file that the loader takes
    std::string reason;   // the reason for this choice
    std::string name;     // the name in the manifest, or empty
    std::string library;
    bool isOurs = false;
    std::string mistake; // the fault of the manifest, or empty
};

/// Returns nothing when no runtime is set.
std::optional<ActiveRuntime> FindActiveRuntime();

/// Returns the path of the manifest that is installed with the running program, beside the runtime.
/// Throws std::runtime_error when it is missing.
std::string OwnManifest();

/// Makes this runtime the active one of the user, and returns a sentence that says what was done.
/// When the user has set another runtime, the call throws std::runtime_error and changes nothing.
/// With `force` it saves that setting beside the new one.
std::string EnableRuntime(bool force);

/// Undoes EnableRuntime and restores the saved setting. Returns a sentence that says what was done.
std::string DisableRuntime();

} // namespace qltxr
