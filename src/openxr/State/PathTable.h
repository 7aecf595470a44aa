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

    /// Returns the number of a path, which is always the same. Throws XR_ERROR_PATH_FORMAT_INVALID
    /// when the text is no path, and XR_ERROR_PATH_COUNT_EXCEEDED when there are too many paths.
    XrPath NumberOf(const char* path);
    XrPath NumberOf(std::string_view path);

    /// Returns the path of a number. Throws XR_ERROR_PATH_INVALID when no path has this number.
    const std::string& TextOf(XrPath number) const;

private:
    std::unordered_map<std::string, XrPath> mNumbers;
    std::vector<const std::string*> mTexts; // the keys above, indexed by number - 1
};

/// Returns true when the text may stand between two slashes of a path.
bool IsPathPart(std::string_view part);

/// Returns true for a user path that can be a subaction path, such as /user/hand/left.
bool IsTopLevelUserPath(std::string_view path);

} // namespace qltxr
