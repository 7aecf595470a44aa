#include "Runtime/VRStatus.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

namespace
{

struct Code
{
    VR_STATUS code;
    const char* name;
};

#define CODE(name)                                                                                 \
    {                                                                                              \
        VR_STATUS_##name, "VR_STATUS_" #name                                                       \
    }

/// The list as clients know it: the place of a name is its code.
constexpr Code CODES[] = {CODE(OK),
                          CODE(ERROR_ARG),
                          CODE(ERROR_NULL_PTR),
                          CODE(ERROR_FILE_OPEN),
                          CODE(ERROR_FILE_READ),
                          CODE(ERROR_FILE_WRITE),
                          CODE(ERROR_FILE_CLOSE),
                          CODE(ERROR_FILE_STAT),
                          CODE(ERROR_ASSERTION),
                          CODE(ERROR_MEMORY),
                          CODE(ERROR_REGISTER_OFFSET),
                          CODE(ERROR_REGISTER_VALUE),
                          CODE(ERROR_QUEUE_EMPTY),
                          CODE(ERROR_DEVICE_NOT_PRESENT),
                          CODE(ERROR_DEVICE_NOT_INITIALIZED),
                          CODE(ERROR_DEVICE_BUSY),
                          CODE(ERROR_DEVICE_CORRUPTED),
                          CODE(ERROR_TIMEOUT),
                          CODE(ERROR_IOCTL),
                          CODE(ERROR_POLL),
                          CODE(ERROR_MUTEX),
                          CODE(ERROR_SOFTWARE),
                          CODE(ERROR_NOT_IMPLEMENTED),
                          CODE(ERROR_EVENT),
                          CODE(ERROR_SOCKET),
                          CODE(ERROR_SOCKET_READ),
                          CODE(ERROR_SOCKET_WRITE),
                          CODE(ERROR_SOCKET_CONNECTION),
                          CODE(ERROR_SOCKET_CONNECTION_TIMEOUT),
                          CODE(ERROR_NOT_SUPPORTED),
                          CODE(ERROR_PIPE),
                          CODE(ERROR_PIPE_BUSY),
                          CODE(ERROR_PIPE_PENDING),
                          CODE(ERROR_PIPE_DISCONNECTED),
                          CODE(ERROR_PROCESS_ALREADY_RUNNING)};

static_assert(sizeof(CODES) / sizeof(CODES[0]) == 35);
static_assert(std::is_same_v<std::underlying_type_t<VR_STATUS>, std::int32_t>);

} // namespace

TEST(VRStatusTest, EachCodeHasItsNumberAndItsText)
{
    int number = 0;
    for (const Code& entry : CODES)
    {
        EXPECT_EQ(entry.code, number);
        EXPECT_EQ(qlt::StatusText(entry.code),
                  std::string("Error ") + entry.name + " (" + std::to_string(number) + ")");
        ++number;
    }
}

TEST(VRStatusTest, ACodeOutsideTheListIsNamedByItsNumber)
{
    for (const std::int32_t number : {-1, 35, 1000, std::numeric_limits<std::int32_t>::max(),
                                      std::numeric_limits<std::int32_t>::min()})
    {
        EXPECT_EQ(qlt::StatusText(static_cast<VR_STATUS>(number)),
                  "Error VR_STATUS (" + std::to_string(number) + ")");
    }
}
