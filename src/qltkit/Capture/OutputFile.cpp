#include <qltkit/Capture/OutputFile.h>

#include <qltkit/Error.h>

#include "Capture/DeviceName.h"
#include "Capture/Format.h"

#include <cerrno>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace qltkit
{

namespace
{

/// Returns true when another file may be renamed to this one.
bool IsRegular(const fs::path& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    return !IsDeviceName(path) && (!fs::exists(status) || fs::is_regular_file(status));
}

} // namespace

fs::path OutputFile::FollowLinks(fs::path path)
{
    constexpr int MAX_LINKS = 40;
    std::error_code error;
    for (int i = 0; i < MAX_LINKS && fs::is_symlink(fs::symlink_status(path, error)); ++i)
    {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

OutputFile::OutputFile(const std::string& path)
    : mName(path)
    , mPath(FollowLinks(path))
{
    std::error_code error;
    if (fs::is_directory(mPath, error))
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
        throw Error("cannot write " + mName + ": " + std::generic_category().message(errno));
    }
}

OutputFile::~OutputFile()
{
    if (mFile == nullptr)
    {
        return;
    }
    std::fclose(mFile);
    if (!mTemporary.empty())
    {
        std::remove(mTemporary.c_str());
    }
}

void OutputFile::OpenTemporary()
{
    std::error_code error;
    const fs::file_status status = fs::status(mPath, error);
    if (fs::exists(status))
    {
        // A file must not be replaced when it must not be written.
        std::FILE* old = std::fopen(mPath.string().c_str(), "r+b");
        if (old == nullptr)
        {
            return;
        }
        std::fclose(old);
    }
    mTemporary = mPath.string() + Format(".%08x.part", std::random_device()());
    mFile = std::fopen(mTemporary.c_str(), "wb");
    if (mFile != nullptr && fs::exists(status))
    {
        fs::permissions(mTemporary, status.permissions(), error);
    }
}

void OutputFile::Write(std::string_view bytes)
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
    if (std::fclose(mFile) != 0 && mError == 0)
    {
        mError = errno;
    }
    mFile = nullptr;
    std::error_code error(mError, std::generic_category());
    if (!mTemporary.empty() && !error)
    {
        fs::rename(mTemporary, mPath, error);
    }
    if (error && error != std::errc::broken_pipe)
    {
        throw Error("cannot write all of " + mName + ": " + error.message() +
                    (mTemporary.empty() ? "" : "; what has been written is in " + mTemporary));
    }
}

} // namespace qltkit
