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
///     qltkit::OutputFile file("mesh.obj");
///     file.Write(text);
///     file.Close(); // until here an older mesh.obj is untouched
///
/// A regular file has a temporary name beside its own until Close. Links are followed, and the
/// permissions of the older file are kept. Pipes and devices are written under their own name.
///
/// A failed write is remembered, and Flush and Close report it. One thread at a time may use a
/// file.
class QLTKIT_API OutputFile
{
public:
    /// Creates the file. Throws Error when it cannot be created, when the older file may not be
    /// written, and when the path is a folder.
    explicit OutputFile(const std::string& path);

    /// Closes the file. A temporary file that Close has not completed is removed, and the older
    /// file stays as it is.
    ~OutputFile();

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Adds bytes at the end. They may wait in a buffer until Flush or Close. The call does nothing
    /// after a failed write and after Close.
    void Write(std::string_view bytes);

    /// Hands the written bytes to the system. Returns false when that or an earlier write has
    /// failed.
    bool Flush();

    /// Completes the file and gives it its name. Throws Error when a write has failed, for example
    /// on a full disk; the older file and the temporary file are both kept. A reader that closes
    /// its pipe causes no error. A second call does nothing.
    void Close();

    /// The path of the temporary file, also after Close. Empty for a pipe or a device.
    const std::string& TemporaryPath() const noexcept { return mTemporary; }

    /// The file at the end of a chain of at most 40 links. It need not exist. Any thread.
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
