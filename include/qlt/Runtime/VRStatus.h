#pragma once

#include <cstdint>

/// The status codes that a VRException carries. The numbers never change, because programs store
/// and compare them.
///
/// The library itself makes four of them:
///
/// - VR_STATUS_ERROR_NULL_PTR: the host service reports success but returns no object.
/// - VR_STATUS_ERROR_TIMEOUT: a wait for an event has timed out or failed.
/// - VR_STATUS_ERROR_SOFTWARE: a wait for several events at once has failed.
/// - VR_STATUS_ERROR_EVENT: an event could not be created or signalled.
///
/// Every other code comes from the host service, and the library passes it on unchanged.
enum VR_STATUS : std::int32_t
{
    VR_STATUS_OK = 0,
    VR_STATUS_ERROR_ARG = 1,
    VR_STATUS_ERROR_NULL_PTR = 2,
    VR_STATUS_ERROR_FILE_OPEN = 3,
    VR_STATUS_ERROR_FILE_READ = 4,
    VR_STATUS_ERROR_FILE_WRITE = 5,
    VR_STATUS_ERROR_FILE_CLOSE = 6,
    VR_STATUS_ERROR_FILE_STAT = 7,
    VR_STATUS_ERROR_ASSERTION = 8,
    VR_STATUS_ERROR_MEMORY = 9,
    VR_STATUS_ERROR_REGISTER_OFFSET = 10,
    VR_STATUS_ERROR_REGISTER_VALUE = 11,
    VR_STATUS_ERROR_QUEUE_EMPTY = 12,
    VR_STATUS_ERROR_DEVICE_NOT_PRESENT = 13,
    VR_STATUS_ERROR_DEVICE_NOT_INITIALIZED = 14,
    VR_STATUS_ERROR_DEVICE_BUSY = 15,
    VR_STATUS_ERROR_DEVICE_CORRUPTED = 16,
    VR_STATUS_ERROR_TIMEOUT = 17,
    VR_STATUS_ERROR_IOCTL = 18,
    VR_STATUS_ERROR_POLL = 19,
    VR_STATUS_ERROR_MUTEX = 20,
    VR_STATUS_ERROR_SOFTWARE = 21,
    VR_STATUS_ERROR_NOT_IMPLEMENTED = 22,
    VR_STATUS_ERROR_EVENT = 23,
    VR_STATUS_ERROR_SOCKET = 24,
    VR_STATUS_ERROR_SOCKET_READ = 25,
    VR_STATUS_ERROR_SOCKET_WRITE = 26,
    VR_STATUS_ERROR_SOCKET_CONNECTION = 27,
    VR_STATUS_ERROR_SOCKET_CONNECTION_TIMEOUT = 28,
    VR_STATUS_ERROR_NOT_SUPPORTED = 29,
    VR_STATUS_ERROR_PIPE = 30,
    VR_STATUS_ERROR_PIPE_BUSY = 31,
    VR_STATUS_ERROR_PIPE_PENDING = 32,
    VR_STATUS_ERROR_PIPE_DISCONNECTED = 33,
    VR_STATUS_ERROR_PROCESS_ALREADY_RUNNING = 34,
};
