#include "Setup/ActiveRuntime.h"

#include "Setup/System.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace qltxr
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* LIBRARY = "libquelta_openxr.so";
constexpr const char* KEPT = ".before-quelta"; // the suffix of a saved setting

// Newer loaders look for the first name before the second one. Older loaders know only the second
// name.
constexpr const char* NAMES[] = {"active_runtime.x86_64.json", "active_runtime.json"};

std::string Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

fs::path UserFolder()
{
    const std::string home = Environment("XDG_CONFIG_HOME");
    return fs::path(home.empty() ? Environment("HOME") + "/.config" : home) / "openxr" / "1";
}

/// Returns the folders that the loader searches, in its order.
std::vector<fs::path> Folders()
{
    std::vector<fs::path> folders = {UserFolder()};
    const std::string list = Environment("XDG_CONFIG_DIRS");
    std::istringstream stream(list.empty() ? "/etc/xdg" : list);
    for (std::string folder; std::getline(stream, folder, ':');)
    {
        folders.push_back(fs::path(folder) / "openxr" / "1");
    }
    folders.emplace_back("/usr/local/etc/openxr/1");
    folders.emplace_back("/etc/openxr/1");
    return folders;
}

bool Exists(const fs::path& path)
{
    std::error_code error;
    return fs::symlink_status(path, error).type() != fs::file_type::not_found && !error;
}

void ReadManifest(ActiveRuntime& runtime)
{
    std::ifstream file(runtime.manifest);
    if (!file)
    {
        runtime.mistake = "it cannot be read";
        return;
    }
    try
    {
        const nlohmann::json manifest = nlohmann::json::parse(file);
        runtime.name = manifest.at("runtime").value("name", "");
        runtime.library = manifest.at("runtime").at("library_path").get<std::string>();
        runtime.isOurs = fs::path(runtime.library).filename() == LIBRARY;
    }
    catch (const nlohmann::json::exception& error)
    {
        runtime.mistake = error.what();
        return;
    }
    // A path with a slash is relative to the manifest. The system searches for a name without a
    // slash.
    const fs::path library(runtime.library);
    const fs::path whole = fs::weakly_canonical(runtime.manifest).parent_path() / library;
    if (library.has_parent_path() && !fs::exists(whole))
    {
        runtime.mistake = "its library " + whole.lexically_normal().string() + " does not exist";
    }
    runtime.library =
        library.has_parent_path() ? whole.lexically_normal().string() : runtime.library;
}

ActiveRuntime Describe(const fs::path& manifest, const std::string& reason)
{
    ActiveRuntime runtime;
    runtime.manifest = manifest.string();
    runtime.reason = reason;
    ReadManifest(runtime);
    return runtime;
}

bool IsOurs(const fs::path& path) { return Describe(path, "").isOurs; }

} // namespace

std::optional<ActiveRuntime> FindActiveRuntime()
{
    const std::string variable = Environment("XR_RUNTIME_JSON");
    if (!variable.empty())
    {
        return Describe(variable, "the environment variable XR_RUNTIME_JSON names it");
    }
    for (const fs::path& folder : Folders())
    {
        for (const char* name : NAMES)
        {
            if (Exists(folder / name))
            {
                const bool isUsers = folder == UserFolder();
                return Describe(folder / name,
                                isUsers ? "it is the user's own setting"
                                        : "it is the setting of all users of this machine");
            }
        }
    }
    return std::nullopt;
}

std::string OwnManifest()
{
    const fs::path manifest =
        (fs::path(ProgramFolder()) / "../share/openxr/1/openxr_quelta.json").lexically_normal();
    if (!fs::exists(manifest))
    {
        throw std::runtime_error("the runtime's manifest " + manifest.string() +
                                 " is missing: the command belongs into the folder bin beside it");
    }
    return manifest.string();
}

std::string EnableRuntime(bool force)
{
    const std::string manifest = OwnManifest();
    const fs::path folder = UserFolder();
    for (const char* name : NAMES)
    {
        const fs::path path = folder / name;
        if (Exists(path) && !IsOurs(path) && !force)
        {
            throw std::runtime_error(path.string() + " is the setting for another runtime, " +
                                     Describe(path, "").name + "; --force puts it aside");
        }
    }
    fs::create_directories(folder);
    for (const char* name : NAMES)
    {
        const fs::path path = folder / name;
        if (Exists(path) && !IsOurs(path))
        {
            fs::rename(path, path.string() + KEPT);
        }
    }
    const fs::path path = folder / NAMES[1];
    fs::remove(path);
    fs::create_symlink(manifest, path);
    return path.string() + " now leads to " + manifest;
}

std::string DisableRuntime()
{
    std::string done;
    for (const char* name : NAMES)
    {
        const fs::path path = UserFolder() / name;
        const fs::path kept = path.string() + KEPT;
        if (Exists(path) && IsOurs(path))
        {
            fs::remove(path);
            done = path.string() + " is removed";
        }
        if (Exists(kept) && !Exists(path))
        {
            fs::rename(kept, path);
            done = path.string() + " is as it was before";
        }
    }
    return done.empty() ? "the user's own setting was not this runtime; nothing is changed" : done;
}

} // namespace qltxr
