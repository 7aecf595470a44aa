#include "State/PathTable.h"

#include "State/Structures.h"

#include <algorithm>

namespace qltxr
{

namespace
{

bool IsPathCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.';
}

bool IsPath(std::string_view path)
{
    if (path.empty() || path.size() >= XR_MAX_PATH_LENGTH || path.front() != '/')
    {
        return false;
    }
    while (!path.empty())
    {
        path.remove_prefix(1);
        const std::size_t end = std::min(path.find('/'), path.size());
        if (!IsPathPart(path.substr(0, end)))
        {
            return false;
        }
        path.remove_prefix(end);
    }
    return true;
}

} // namespace

bool IsPathPart(std::string_view part)
{
    return std::all_of(part.begin(), part.end(), IsPathCharacter) &&
           std::any_of(part.begin(), part.end(), [](char c) { return c != '.'; });
}

bool IsTopLevelUserPath(std::string_view path)
{
    static constexpr std::string_view PATHS[] = {"/user/hand/left", "/user/hand/right",
                                                 "/user/head", "/user/gamepad", "/user/treadmill"};
    return std::find(std::begin(PATHS), std::end(PATHS), path) != std::end(PATHS);
}

XrPath PathTable::NumberOf(const char* path)
{
    const std::string_view text = FixedText(path, XR_MAX_PATH_LENGTH);
    Require(text.data() != nullptr, XR_ERROR_PATH_FORMAT_INVALID);
    return NumberOf(text);
}

XrPath PathTable::NumberOf(std::string_view path)
{
    Require(IsPath(path), XR_ERROR_PATH_FORMAT_INVALID);
    std::string key(path);
    const auto found = mNumbers.find(key);
    if (found != mNumbers.end())
    {
        return found->second;
    }
    Require(mTexts.size() < CAPACITY, XR_ERROR_PATH_COUNT_EXCEEDED);
    mTexts.reserve(mTexts.size() + 1);
    const auto added = mNumbers.emplace(std::move(key), mTexts.size() + 1).first;
    mTexts.push_back(&added->first);
    return added->second;
}

const std::string& PathTable::TextOf(XrPath number) const
{
    Require(number > 0 && number <= mTexts.size(), XR_ERROR_PATH_INVALID);
    return *mTexts[number - 1];
}

} // namespace qltxr
