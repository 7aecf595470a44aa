// A service library of another version, which lacks all entry points but one.
#include <cstdint>

extern "C" std::int32_t VRHostClientManager_create(std::uint64_t* created)
{
    *created = 1;
    return 0;
}
