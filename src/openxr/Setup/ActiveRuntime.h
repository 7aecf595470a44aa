// Which OpenXR runtime programs of this user get, and how to make it this one. The search is the
// OpenXR loader's own.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qltxr
{

struct ActiveRuntime
{
    std::string manifest; // the file that the loader takes
    std::string reason;   // why that one
    std::string name;     // as the manifest has it, or empty
    std::string library;
    bool isOurs = false;
    std::string mistake; // what is wrong with the manifest, or empty
};

/// Nothing when no runtime is set at all.
std::optional<ActiveRuntime> FindActiveRuntime();

/// The manifest that belongs to the running program, which is installed beside the runtime.
/// std::runtime_error when it is missing.
std::string OwnManifest();

/// Makes this runtime the user's own. An earlier setting of the user's for another runtime is kept
/// beside it with `force`, and without it is left alone with std::runtime_error. A sentence that
/// says what was done.
std::string EnableRuntime(bool force);

/// Takes that back, and puts back what was there before. A sentence that says what was done.
std::string DisableRuntime();

} // namespace qltxr
