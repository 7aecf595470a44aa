// A service library of another version, which has only one entry point.
#include <cstdint>

extern "C" std::int32_t VRHostClientManager_create(std::uint64_t* created)
{
    *created = 1;
    return 0;
}
