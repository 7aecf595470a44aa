#include "Runtime/VRStatus.h"

#include <array>

namespace qlt
{
namespace
{

/// The index is the code. deliberate: the success code has an "Error" text, too.
constexpr std::array<const char*, 35> STATUS_TEXTS = {
    "Error VR_STATUS_OK (0)",
    "Error VR_STATUS_ERROR_ARG (1)",
    "Error VR_STATUS_ERROR_NULL_PTR (2)",
    "Error VR_STATUS_ERROR_FILE_OPEN (3)",
    "Error VR_STATUS_ERROR_FILE_READ (4)",
    "Error VR_STATUS_ERROR_FILE_WRITE (5)",
    "Error VR_STATUS_ERROR_FILE_CLOSE (6)",
    "Error VR_STATUS_ERROR_FILE_STAT (7)",
    "Error VR_STATUS_ERROR_ASSERTION (8)",
    "Error VR_STATUS_ERROR_MEMORY (9)",
    "Error VR_STATUS_ERROR_REGISTER_OFFSET (10)",
    "Error VR_STATUS_ERROR_REGISTER_VALUE (11)",
    "Error VR_STATUS_ERROR_QUEUE_EMPTY (12)",
    "Error VR_STATUS_ERROR_DEVICE_NOT_PRESENT (13)",
    "Error VR_STATUS_ERROR_DEVICE_NOT_INITIALIZED (14)",
    "Error VR_STATUS_ERROR_DEVICE_BUSY (15)",
    "Error VR_STATUS_ERROR_DEVICE_CORRUPTED (16)",
    "Error VR_STATUS_ERROR_TIMEOUT (17)",
    "Error VR_STATUS_ERROR_IOCTL (18)",
    "Error VR_STATUS_ERROR_POLL (19)",
    "Error VR_STATUS_ERROR_MUTEX (20)",
    "Error VR_STATUS_ERROR_SOFTWARE (21)",
    "Error VR_STATUS_ERROR_NOT_IMPLEMENTED (22)",
    "Error VR_STATUS_ERROR_EVENT (23)",
    "Error VR_STATUS_ERROR_SOCKET (24)",
    "Error VR_STATUS_ERROR_SOCKET_READ (25)",
    "Error VR_STATUS_ERROR_SOCKET_WRITE (26)",
    "Error VR_STATUS_ERROR_SOCKET_CONNECTION (27)",
    "Error VR_STATUS_ERROR_SOCKET_CONNECTION_TIMEOUT (28)",
    "Error VR_STATUS_ERROR_NOT_SUPPORTED (29)",
    "Error VR_STATUS_ERROR_PIPE (30)",
    "Error VR_STATUS_ERROR_PIPE_BUSY (31)",
    "Error VR_STATUS_ERROR_PIPE_PENDING (32)",
    "Error VR_STATUS_ERROR_PIPE_DISCONNECTED (33)",
    "Error VR_STATUS_ERROR_PROCESS_ALREADY_RUNNING (34)",
};

} // namespace

std::string StatusText(VR_STATUS code)
{
    const auto index = static_cast<std::int32_t>(code);
    if (index < 0 || index >= static_cast<std::int32_t>(STATUS_TEXTS.size()))
    {
        return "Error VR_STATUS (" + std::to_string(index) + ")";
    }
    return STATUS_TEXTS[static_cast<std::size_t>(index)];
}

} // namespace qlt
