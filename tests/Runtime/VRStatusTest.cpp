#include "Runtime/VRStatus.h"

#include <gtest/gtest.h>

#include <sstream>

TEST(VRStatusTest, EachCodeHasItsNumberAndItsText)
{
#define LIST(...)                                                                                  \
    const VR_STATUS codes[] = {__VA_ARGS__};                                                       \
    std::istringstream names(#__VA_ARGS__)
    // The list is part of the interface. The index of a name is its code.
    LIST(VR_STATUS_OK, VR_STATUS_ERROR_ARG, VR_STATUS_ERROR_NULL_PTR, VR_STATUS_ERROR_FILE_OPEN,
         VR_STATUS_ERROR_FILE_READ, VR_STATUS_ERROR_FILE_WRITE, VR_STATUS_ERROR_FILE_CLOSE,
         VR_STATUS_ERROR_FILE_STAT, VR_STATUS_ERROR_ASSERTION, VR_STATUS_ERROR_MEMORY,
         VR_STATUS_ERROR_REGISTER_OFFSET, VR_STATUS_ERROR_REGISTER_VALUE,
         VR_STATUS_ERROR_QUEUE_EMPTY, VR_STATUS_ERROR_DEVICE_NOT_PRESENT,
         VR_STATUS_ERROR_DEVICE_NOT_INITIALIZED, VR_STATUS_ERROR_DEVICE_BUSY,
         VR_STATUS_ERROR_DEVICE_CORRUPTED, VR_STATUS_ERROR_TIMEOUT, VR_STATUS_ERROR_IOCTL,
         VR_STATUS_ERROR_POLL, VR_STATUS_ERROR_MUTEX, VR_STATUS_ERROR_SOFTWARE,
         VR_STATUS_ERROR_NOT_IMPLEMENTED, VR_STATUS_ERROR_EVENT, VR_STATUS_ERROR_SOCKET,
         VR_STATUS_ERROR_SOCKET_READ, VR_STATUS_ERROR_SOCKET_WRITE,
         VR_STATUS_ERROR_SOCKET_CONNECTION, VR_STATUS_ERROR_SOCKET_CONNECTION_TIMEOUT,
         VR_STATUS_ERROR_NOT_SUPPORTED, VR_STATUS_ERROR_PIPE, VR_STATUS_ERROR_PIPE_BUSY,
         VR_STATUS_ERROR_PIPE_PENDING, VR_STATUS_ERROR_PIPE_DISCONNECTED,
         VR_STATUS_ERROR_PROCESS_ALREADY_RUNNING);
    int number = 0;
    for (std::string name; std::getline(names >> std::ws, name, ','); ++number)
    {
        EXPECT_EQ(codes[number], number);
        EXPECT_EQ(qlt::StatusText(codes[number]),
                  "Error " + name + " (" + std::to_string(number) + ")");
    }
    EXPECT_EQ(number, 35);
    for (const std::int32_t other : {-1, 35, INT32_MAX, INT32_MIN})
    {
        EXPECT_EQ(qlt::StatusText(static_cast<VR_STATUS>(other)),
                  "Error VR_STATUS (" + std::to_string(other) + ")");
    }
}
