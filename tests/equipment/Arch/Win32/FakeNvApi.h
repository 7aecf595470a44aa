// The control interface of the fake nvapi64.dll: the contents of its driver and the observer of its
// calls. It uses plain types only, because the fake is a library with its own runtime.
#pragma once

#include <cstdint>

struct NvApiScript
{
    std::uint32_t displays = 2;
    std::uint32_t modes = 2;
    std::uint32_t pixelFormat = 21; // the pixel format of the first mode
    void* surface = nullptr;        // the handle that the driver shares
    void* frameEvent = nullptr;

    /// Receives every call with its arguments and returns its status.
    std::int32_t (*onCall)(void* context, const char* call) = nullptr;
    void* context = nullptr;
};

/// The exported function that sets the script. Without a script there is no display.
using SetNvApiScript = void (*)(const NvApiScript* script);
constexpr const char* SET_NVAPI_SCRIPT = "nvapi_SetScript";
