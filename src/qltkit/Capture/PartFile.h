#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace qltkit
{

/// A file with a temporary name until it is finished. It keeps the bytes that the system has not
/// taken yet. One thread at a time.
class PartFile
{
public:
    /// Creates the temporary file. Throws Error when it cannot be created.
    explicit PartFile(const std::filesystem::path& target);

    const std::filesystem::path& TemporaryPath() const { return mPart; }

    /// Stores the bytes for Write.
    void Append(std::string_view bytes) { mPending += bytes; }

    std::size_t PendingBytes() const { return mPending.size(); }

    /// Gives the pending bytes to the system. Returns false when the system does not take all of
    /// them, for example on a full disk. The rest stays pending, and `reason` gets the reason.
    bool Write(std::string& reason);

    /// Closes and removes the file.
    void Discard();

    /// Closes the file and gives it its final name. Throws Error when that fails.
    void Finish();

private:
    std::filesystem::path mTarget;
    std::filesystem::path mPart;
    std::filebuf mFile;
    std::string mPending;
};

} // namespace qltkit
