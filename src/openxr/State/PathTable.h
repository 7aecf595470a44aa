// Paths and their numbers. The caller serialises all operations.
#pragma once

#include "State/Failure.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qltxr
{

class PathTable
{
public:
    static constexpr std::size_t CAPACITY = 65536;

    /// The same number for the same path; XR_ERROR_PATH_FORMAT_INVALID for what is none, and
    /// XR_ERROR_PATH_COUNT_EXCEEDED for too many.
    XrPath NumberOf(const char* path);
    XrPath NumberOf(std::string_view path);

    /// XR_ERROR_PATH_INVALID for a number that no path has.
    const std::string& TextOf(XrPath number) const;

private:
    std::unordered_map<std::string, XrPath> mNumbers;
    std::vector<const std::string*> mTexts; // by number - 1, of the keys above
};

/// True for what may stand between two slashes.
bool IsPathPart(std::string_view part);

/// One of the user paths that an action may be split by, as /user/hand/left is.
bool IsTopLevelUserPath(std::string_view path);

} // namespace qltxr
