// A violation of a rule of the interface. It is an exception inside the runtime, and the program
// gets its result code.
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
