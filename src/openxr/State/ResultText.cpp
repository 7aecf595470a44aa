#include "State/ResultText.h"

#include <openxr/openxr_reflection.h>

#include <cstdio>

namespace qltxr
{

namespace
{

struct Named
{
    int value;
    const char* name;
};

#define QLT_NAMED(name, value) {value, #name},
constexpr Named RESULTS[] = {XR_LIST_ENUM_XrResult(QLT_NAMED)};
constexpr Named STRUCTURES[] = {XR_LIST_ENUM_XrStructureType(QLT_NAMED)};

// The last entry of each list is the upper bound of the enumeration, which is not one of its
// values.
template <std::size_t SIZE>
const char* NameOf(const Named (&names)[SIZE], int value)
{
    for (const Named* entry = names; entry != names + SIZE - 1; ++entry)
    {
        if (entry->value == value)
        {
            return entry->name;
        }
    }
    return nullptr;
}

} // namespace

void WriteResultText(XrResult value, char (&text)[XR_MAX_RESULT_STRING_SIZE])
{
    const int number = value;
    const char* unknown = number < 0 ? "XR_UNKNOWN_FAILURE_" : "XR_UNKNOWN_SUCCESS_";
    const char* name = NameOf(RESULTS, number);
    name != nullptr ? std::snprintf(text, sizeof(text), "%s", name)
                    : std::snprintf(text, sizeof(text), "%s%d", unknown, number);
}

void WriteStructureText(XrStructureType value, char (&text)[XR_MAX_STRUCTURE_NAME_SIZE])
{
    const int number = value;
    const char* name = NameOf(STRUCTURES, number);
    name != nullptr ? std::snprintf(text, sizeof(text), "%s", name)
                    : std::snprintf(text, sizeof(text), "XR_UNKNOWN_STRUCTURE_TYPE_%d", number);
}

} // namespace qltxr
