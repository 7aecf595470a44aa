// Events of the system, and waits for them. Each wing implements these functions for its system.
//
// An event is signalled or not. A wait for a manual-reset event leaves it signalled. A wait for an
// auto-reset event takes the signal, so one `Set` releases exactly one waiter. Everything that a
// thread did before `Set` happens before everything that the waiter does after its wait.
//
// Named events are system-wide on Windows; elsewhere they are shared within the process. Any thread
// may call every operation. An operation that fails sets the last error (SystemError.h).
#pragma once

#include <qlt/Runtime/EventHandle.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace qlt
{

constexpr std::uint32_t WAIT_FOREVER = 0xFFFFFFFFU;

/// The results of a wait. They have the values of Windows.
constexpr std::uint32_t WAIT_SIGNALLED = 0;
constexpr std::uint32_t WAIT_TIMED_OUT = 258;
constexpr std::uint32_t WAIT_ERROR = 0xFFFFFFFFU;

/// A failed creation may return this value instead of null. It is never a valid handle.
inline NativeEventHandle InvalidEventHandle() noexcept
{
    return reinterpret_cast<NativeEventHandle>(static_cast<std::intptr_t>(-1));
}

/// Creates an event that is not signalled; an empty name makes it unnamed. When an event of that
/// name exists, the call opens it and leaves its reset mode and state unchanged. Null on failure.
NativeEventHandle CreateNativeEvent(const std::wstring& name, bool manualReset);

/// Signals the event. A signalled event stays signalled. False when `event` is not an event.
bool SetNativeEvent(NativeEventHandle event);

/// Waits until the event is signalled (WAIT_SIGNALLED) or `timeoutMs` milliseconds have passed
/// (WAIT_TIMED_OUT). When `event` is not an event, it returns WAIT_ERROR at once.
std::uint32_t WaitNativeEvent(NativeEventHandle event, std::uint32_t timeoutMs);

/// The largest number of events in one wait.
constexpr std::size_t MAX_WAIT_EVENTS = 8;

/// Waits until one of `count` events is signalled; `count` is in 1 .. MAX_WAIT_EVENTS. The result
/// is WAIT_SIGNALLED plus the index of the first signalled event, or WAIT_TIMED_OUT. When one of
/// them is not an event, it returns WAIT_ERROR at once.
std::uint32_t WaitNativeEvents(const NativeEventHandle* events, std::size_t count,
                               std::uint32_t timeoutMs);

/// Closes the handle. A named event lives until its last handle is closed. False when `event` is
/// not an event.
bool CloseNativeEvent(NativeEventHandle event);

} // namespace qlt
