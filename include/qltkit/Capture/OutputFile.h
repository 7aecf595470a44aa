#pragma once

#include <qltkit/Export.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace qltkit
{

/// A file that replaces an older file of its name only when it is complete.
///
/// A regular file has a temporary name beside its own until Close. Links are followed, and the
/// permissions of the older file are kept. Pipes and devices are written under their own name.
///
/// A failed write is remembered, and Flush and Close report it. One thread at a time.
class QLTKIT_API OutputFile
{
public:
    /// Error when the file cannot be created, or when the older file may not be written.
    explicit OutputFile(const std::string& path);

    /// Removes a temporary file that was not closed.
    ~OutputFile();

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Does nothing after a failed write.
    void Write(std::string_view bytes);

    /// Hands the written bytes to the system. False when that or an earlier write has failed.
    bool Flush();

    /// Completes the file and gives it its name. Error when a write has failed, for example on a
    /// full disk; the older file and the temporary file are both kept. A reader that closes its
    /// pipe causes no error. A second call does nothing.
    void Close();

    /// Empty for a pipe or a device.
    const std::string& TemporaryPath() const noexcept { return mTemporary; }

    /// The file at the end of a chain of links. It need not exist.
    static std::filesystem::path FollowLinks(std::filesystem::path path);

private:
    void OpenTemporary();

    std::string mName; // as the caller wrote it
    std::filesystem::path mPath;
    std::string mTemporary;
    std::FILE* mFile = nullptr;
    int mError = 0; // errno of the first failure
};

} // namespace qltkit
