#include "output/OutputFile.h"

#include "output/FileNames.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace
{

// The temporary files of the process, which its signal handler removes.
std::array<std::atomic<const char*>, 8> gTemporaries{};

/// Ends a command that does not catch the signal itself, and leaves no half-written file.
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
        // A command in the background ignores the signal, and some commands handle it themselves.
        if (previous != SIG_DFL)
        {
            std::signal(signal, previous);
        }
    }
}

/// Returns the path in one spelling. Existing folders are looked up, because links may lead to
/// them.
fs::path Normal(const fs::path& path)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error).lexically_normal();
    const fs::path canonical = fs::weakly_canonical(absolute, error);
    return error ? absolute : canonical;
}

bool IsSameFile(const std::string& a, const std::string& b)
{
    const fs::path first = qltkit::OutputFile::FollowLinks(a);
    const fs::path second = qltkit::OutputFile::FollowLinks(b);
    std::error_code error;
    return fs::equivalent(first, second, error) || AreSameName(Normal(first), Normal(second));
}

} // namespace

OutputFile::OutputFile(const std::string& path)
    : mName(path)
    , mIsStandardOutput(!path.empty() && IsStandardOutput(path))
{
    if (mName.empty() || mIsStandardOutput)
    {
        return;
    }
    mFile.emplace(path);
    if (!mFile->TemporaryPath().empty())
    {
        ReplaceTemporary(nullptr, mFile->TemporaryPath().c_str());
        CatchSignals();
    }
}

OutputFile::~OutputFile()
{
    if (mFile)
    {
        ReplaceTemporary(mFile->TemporaryPath().c_str(), nullptr);
    }
}

void OutputFile::Write(const std::string& bytes)
{
    if (mFile)
    {
        mFile->Write(bytes);
    }
    // The position in a file is shared with the printed text, so both go through one stream.
    else if (mIsStandardOutput && mError == 0 &&
             std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size())
    {
        mError = errno;
    }
}

bool OutputFile::Flush()
{
    if (mFile)
    {
        return mFile->Flush();
    }
    if (mIsStandardOutput && mError == 0 && std::fflush(stdout) != 0)
    {
        mError = errno;
    }
    return mError == 0;
}

void OutputFile::Close()
{
    Flush();
    if (mFile)
    {
        ReplaceTemporary(mFile->TemporaryPath().c_str(), nullptr);
        mFile->Close();
    }
    const std::error_code error(mError, std::generic_category());
    if (error && error != std::errc::broken_pipe)
    {
        throw std::runtime_error("cannot write all of " + mName + ": " + error.message());
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
