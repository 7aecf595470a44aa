#include "Capture/PartFile.h"

#include <qltkit/Capture/OutputFile.h>
#include <qltkit/Error.h>

#include "Capture/FileBytes.h"

#include <cerrno>
#include <system_error>

namespace qltkit
{

namespace
{

constexpr std::size_t MAX_KEPT_BYTES = 8 << 20;

std::string LastReason()
{
    return errno == 0 ? "it failed" : std::generic_category().message(errno);
}

/// Returns "walk.part.mcap" for "walk.mcap", so the extension still shows the type. A file that a
/// killed process has left is not overwritten. A pipe or a device keeps its name.
std::filesystem::path PartOf(const std::filesystem::path& target)
{
    std::error_code ignored;
    const auto kind = std::filesystem::status(target, ignored).type();
    if (kind == std::filesystem::file_type::fifo || kind == std::filesystem::file_type::character)
    {
        return target;
    }
    std::filesystem::path part;
    int attempt = 1;
    do
    {
        part = target;
        std::filesystem::path ending = attempt == 1 ? ".part" : ".part" + std::to_string(attempt);
        ending += target.extension();
        part.replace_extension(ending);
        ++attempt;
    } while (std::filesystem::exists(part, ignored));
    return part;
}

} // namespace

PartFile::PartFile(const std::filesystem::path& target)
    : mTarget(OutputFile::FollowLinks(target))
    , mPart(PartOf(mTarget))
{
    std::error_code ignored;
    if (std::filesystem::is_directory(target, ignored))
    {
        throw Error("cannot write " + TextOf(target) + ": it is a folder");
    }
    // The file has no buffer, so it reports how many bytes the system has taken.
    mFile.pubsetbuf(nullptr, 0);
    errno = 0;
    if (mFile.open(mPart, std::ios::out | std::ios::binary | std::ios::trunc) == nullptr)
    {
        throw Error("cannot write " + TextOf(mPart) + ": " + LastReason());
    }
}

bool PartFile::Write(std::string& reason)
{
    if (mPending.empty())
    {
        return true;
    }
    errno = 0;
    const std::streamsize taken =
        mFile.sputn(mPending.data(), static_cast<std::streamsize>(mPending.size()));
    if (taken < static_cast<std::streamsize>(mPending.size()))
    {
        reason = LastReason();
    }
    mPending.erase(0, static_cast<std::size_t>(taken));
    if (mPending.capacity() > MAX_KEPT_BYTES && mPending.empty())
    {
        mPending.shrink_to_fit();
    }
    return mPending.empty();
}

void PartFile::Discard()
{
    mFile.close();
    if (mPart != mTarget)
    {
        std::error_code ignored;
        std::filesystem::remove(mPart, ignored);
    }
}

void PartFile::Finish()
{
    errno = 0;
    if (mFile.close() == nullptr)
    {
        throw Error("cannot write all of " + TextOf(mPart) + ": " + LastReason());
    }
    if (mPart == mTarget)
    {
        return;
    }
    std::error_code error;
    std::filesystem::rename(mPart, mTarget, error);
    if (error)
    {
        throw Error("cannot rename " + TextOf(mPart) + " to " + TextOf(mTarget) + ": " +
                    error.message());
    }
}

} // namespace qltkit
