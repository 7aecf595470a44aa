// The side door of the fake nvapi64.dll: what its driver has and who sees its calls. Plain types
// only, because the fake is a library with a runtime of its own.
#pragma once

#include <cstdint>

struct NvApiScript
{
    std::uint32_t displays = 2;
    std::uint32_t modes = 2;
    std::uint32_t pixelFormat = 21; // of the first mode
    void* surface = nullptr;        // the shared handle
    void* frameEvent = nullptr;

    /// Sees every call with its arguments, and returns its status.
    std::int32_t (*onCall)(void* context, const char* call) = nullptr;
    void* context = nullptr;
};

/// The exported function that sets the script; without one there is no display.
using SetNvApiScript = void (*)(const NvApiScript* script);
constexpr const char* SET_NVAPI_SCRIPT = "nvapi_SetScript";
