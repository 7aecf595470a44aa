// How a broken rule leaves the runtime: as an exception inside, as a result code outside.
#pragma once

#include <openxr/openxr.h>

namespace qltxr
{

struct Failure
{
    XrResult result;
};

inline void Require(bool held, XrResult otherwise)
{
    if (!held)
    {
        throw Failure{otherwise};
    }
}

} // namespace qltxr
