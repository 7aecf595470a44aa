#include "Runtime/NativeEvent.h"

#include <windows.h>

namespace qlt
{

static_assert(WAIT_SIGNALLED == WAIT_OBJECT_0 && WAIT_TIMED_OUT == WAIT_TIMEOUT &&
                  WAIT_ERROR == WAIT_FAILED && WAIT_FOREVER == INFINITE,
              "the seam's results are the system's");

NativeEventHandle CreateNativeEvent(const std::wstring& name, bool manualReset)
{
    // CreateEventW makes an unnamed event for an empty name as it does for null.
    return CreateEventW(nullptr, manualReset ? TRUE : FALSE, FALSE, name.c_str());
}

bool SetNativeEvent(NativeEventHandle event) { return SetEvent(event) != FALSE; }

std::uint32_t WaitNativeEvent(NativeEventHandle event, std::uint32_t timeoutMs)
{
    return WaitForSingleObject(event, timeoutMs);
}

std::uint32_t WaitNativeEvents(const NativeEventHandle* events, std::size_t count,
                               std::uint32_t timeoutMs)
{
    return WaitForMultipleObjects(static_cast<DWORD>(count), events, FALSE, timeoutMs);
}

bool CloseNativeEvent(NativeEventHandle event) { return CloseHandle(event) != FALSE; }

} // namespace qlt
