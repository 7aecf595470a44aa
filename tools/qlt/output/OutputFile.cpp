#include "output/OutputFile.h"

#include "output/FileNames.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <random>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace
{

// The temporary files of the process, for its signal handler.
std::array<std::atomic<const char*>, 8> gTemporaries{};

/// For a command that does not catch the signal itself: it ends, and leaves nothing half-written.
void RemoveTemporaries(int signal)
{
    for (const auto& temporary : gTemporaries)
    {
        if (const char* name = temporary)
        {
            std::remove(name);
        }
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void ReplaceTemporary(const char* from, const char* to)
{
    for (auto& temporary : gTemporaries)
    {
        const char* expected = from;
        if (temporary.compare_exchange_strong(expected, to))
        {
            return;
        }
    }
}

void CatchSignals()
{
    for (const int signal : {SIGINT, SIGTERM})
    {
        const auto previous = std::signal(signal, RemoveTemporaries);
        if (previous != SIG_DFL) // ignored in the background, or the command's own
        {
            std::signal(signal, previous);
        }
    }
}

/// The file that a chain of links ends at; it need not exist.
fs::path FollowLinks(fs::path path)
{
    constexpr int MAX_LINKS = 40;
    std::error_code error;
    for (int i = 0; i < MAX_LINKS && fs::is_symlink(fs::symlink_status(path, error)); ++i)
    {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

/// In one spelling. Folders that exist are looked up, because links may lead to them.
fs::path Normal(const fs::path& path)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error).lexically_normal();
    const fs::path canonical = fs::weakly_canonical(absolute, error);
    return error ? absolute : canonical;
}

bool IsSameFile(const std::string& a, const std::string& b)
{
    const fs::path first = FollowLinks(a);
    const fs::path second = FollowLinks(b);
    std::error_code error;
    return fs::equivalent(first, second, error) || AreSameName(Normal(first), Normal(second));
}

/// Whether the file is, or will be, one that another may be renamed to.
bool IsRegular(const fs::path& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    return !IsDeviceName(path) && (!fs::exists(status) || fs::is_regular_file(status));
}

} // namespace

OutputFile::OutputFile(const std::string& path)
    : mName(path)
{
    if (!mName.empty())
    {
        Open();
    }
}

OutputFile::~OutputFile()
{
    if (mFile != nullptr && mFile != stdout)
    {
        std::fclose(mFile);
    }
    if (mFile != nullptr && !mTemporary.empty())
    {
        ReplaceTemporary(mTemporary.c_str(), nullptr);
        std::remove(mTemporary.c_str());
    }
}

void OutputFile::Open()
{
    std::error_code error;
    mPath = FollowLinks(mName);
    if (IsStandardOutput(mName))
    {
        mFile = stdout; // whose position in a file is shared with what is printed
    }
    else if (fs::is_directory(mPath, error))
    {
        errno = EISDIR;
    }
    else if (IsRegular(mPath))
    {
        OpenTemporary();
    }
    else
    {
        mFile = std::fopen(mPath.string().c_str(), "wb");
    }
    if (mFile == nullptr)
    {
        throw std::runtime_error("cannot write " + mName + ": " +
                                 std::generic_category().message(errno));
    }
}

void OutputFile::OpenTemporary()
{
    std::error_code error;
    const fs::file_status status = fs::status(mPath, error);
    if (fs::exists(status))
    {
        // A file that may not be written may not be replaced, either.
        std::FILE* old = std::fopen(mPath.string().c_str(), "r+b");
        if (old == nullptr)
        {
            return;
        }
        std::fclose(old);
    }
    mTemporary = mPath.string() + Format(".%08x.part", std::random_device()());
    mFile = std::fopen(mTemporary.c_str(), "wb");
    if (mFile == nullptr)
    {
        return;
    }
    ReplaceTemporary(nullptr, mTemporary.c_str());
    CatchSignals();
    if (fs::exists(status))
    {
        fs::permissions(mTemporary, status.permissions(), error);
    }
}

void OutputFile::Write(const std::string& bytes)
{
    if (mFile != nullptr && mError == 0 &&
        std::fwrite(bytes.data(), 1, bytes.size(), mFile) != bytes.size())
    {
        mError = errno;
    }
}

bool OutputFile::Flush()
{
    if (mFile != nullptr && mError == 0 && std::fflush(mFile) != 0)
    {
        mError = errno;
    }
    return mError == 0;
}

void OutputFile::Close()
{
    if (mFile == nullptr)
    {
        return;
    }
    Flush();
    if (mFile != stdout && std::fclose(mFile) != 0 && mError == 0)
    {
        mError = errno;
    }
    mFile = nullptr;
    ReplaceTemporary(mTemporary.c_str(), nullptr);
    std::error_code error(mError, std::generic_category());
    if (!mTemporary.empty() && !error)
    {
        fs::rename(mTemporary, mPath, error);
    }
    if (error && error != std::errc::broken_pipe)
    {
        throw std::runtime_error(
            "cannot write all of " + mName + ": " + error.message() +
            (mTemporary.empty() ? "" : "; what has been written is in " + mTemporary));
    }
}

std::string DescribeClash(const std::vector<std::string>& inputs,
                          const std::vector<std::string>& outputs)
{
    for (std::size_t i = 0; i < outputs.size(); ++i)
    {
        for (const std::string& input : inputs)
        {
            if (!outputs[i].empty() && !input.empty() && IsSameFile(outputs[i], input))
            {
                return outputs[i] + " would be both read and written";
            }
        }
        for (std::size_t j = 0; j < i; ++j)
        {
            if (!outputs[i].empty() && !outputs[j].empty() && IsSameFile(outputs[i], outputs[j]))
            {
                return outputs[i] + " would be written twice";
            }
        }
    }
    return {};
}
