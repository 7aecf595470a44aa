// A file that has a temporary name until it is finished, and that keeps what the system does not
// take.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace qltkit
{

class PartFile
{
public:
    /// Error when it cannot be created.
    explicit PartFile(const std::filesystem::path& target);

    const std::filesystem::path& TemporaryPath() const { return mPart; }

    /// Keeps the bytes for Write.
    void Append(std::string_view bytes) { mPending += bytes; }

    std::size_t PendingBytes() const { return mPending.size(); }

    /// Hands what is pending to the system. False when that does not take all of it, on a full disk
    /// for one; the rest stays pending, and `reason` says why.
    bool Write(std::string& reason);

    /// Closes and removes the file.
    void Discard();

    /// Closes the file and gives it its name. Error when that fails.
    void Finish();

private:
    std::filesystem::path mTarget;
    std::filesystem::path mPart;
    std::filebuf mFile;
    std::string mPending;
};

} // namespace qltkit
