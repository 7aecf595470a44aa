#include "Setup/System.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace qltxr
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* TEXT_NAME = "quelta-openxr-status";

std::string ReadAll(const fs::path& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool IsPublished(const fs::path& descriptor)
{
    std::error_code error;
    const std::string target = fs::read_symlink(descriptor, error).string();
    return !error && target.rfind("/memfd:" + std::string(TEXT_NAME), 0) == 0;
}

/// Adds the texts of one process. It adds nothing for a process of another user, because its
/// descriptors cannot be listed.
void AddTexts(const fs::path& process, std::vector<std::string>& texts)
{
    std::error_code error;
    for (fs::directory_iterator one(process / "fd", error), end; !error && one != end;
         one.increment(error))
    {
        if (IsPublished(one->path()))
        {
            texts.push_back(ReadAll(one->path()));
        }
    }
}

} // namespace

std::string ProgramFolder() { return fs::read_symlink("/proc/self/exe").parent_path().string(); }

std::string ProgramName() { return fs::read_symlink("/proc/self/exe").filename().string(); }

int ProcessId() { return getpid(); }

PublishedText::PublishedText()
    : mFile(memfd_create(TEXT_NAME, MFD_CLOEXEC))
{
}

PublishedText::~PublishedText()
{
    if (mFile >= 0)
    {
        close(mFile);
    }
}

void PublishedText::Write(const std::string& text) const
{
    if (mFile >= 0 &&
        pwrite(mFile, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()))
    {
        (void)!ftruncate(mFile, static_cast<off_t>(text.size()));
    }
}

std::vector<std::string> ReadPublishedTexts()
{
    std::vector<std::string> texts;
    std::error_code error;
    for (fs::directory_iterator one("/proc", error), end; !error && one != end;
         one.increment(error))
    {
        const std::string name = one->path().filename().string();
        if (name.find_first_not_of("0123456789") == std::string::npos)
        {
            AddTexts(one->path(), texts);
        }
    }
    return texts;
}

int RunProgram(const std::vector<std::string>& arguments)
{
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
    {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    pid_t child = 0;
    const int error = posix_spawnp(&child, pointers[0], nullptr, nullptr, pointers.data(), environ);
    if (error != 0)
    {
        throw std::runtime_error(arguments[0] + " cannot be started: " + std::strerror(error));
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
    {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace qltxr
