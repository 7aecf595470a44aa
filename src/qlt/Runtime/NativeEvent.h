// Seam to the system: event objects and waits. One body in each wing.
//
// An event is signalled or not. A wait on a signalled manual-reset event leaves it signalled; a
// wait on an auto-reset event takes the signal, so that one `Set` releases exactly one waiter. What
// a thread did before `Set` happens before what a waiter does after its wait.
//
// Named events are system-wide on Windows; elsewhere they are shared within the process. Every
// operation may be called from any thread, and sets the last error (SystemError.h) when it fails.
#pragma once

#include <qlt/Runtime/EventHandle.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace qlt
{

constexpr std::uint32_t WAIT_FOREVER = 0xFFFFFFFFU;

/// The results of a wait, with the values that Windows gives them.
constexpr std::uint32_t WAIT_SIGNALLED = 0;
constexpr std::uint32_t WAIT_TIMED_OUT = 258;
constexpr std::uint32_t WAIT_ERROR = 0xFFFFFFFFU;

/// What a creation that failed may return besides null; never a valid handle.
inline NativeEventHandle InvalidEventHandle() noexcept
{
    return reinterpret_cast<NativeEventHandle>(static_cast<std::intptr_t>(-1));
}

/// A new event, not signalled; an empty name makes it unnamed. An existing event of that name is
/// opened instead and keeps its reset mode and state. Null on failure.
NativeEventHandle CreateNativeEvent(const std::wstring& name, bool manualReset);

/// Signals; setting a signalled event changes nothing. False for what is not an event.
bool SetNativeEvent(NativeEventHandle event);

/// Waits until signalled or `timeoutMs` have passed: WAIT_SIGNALLED, WAIT_TIMED_OUT, or WAIT_ERROR
/// at once for what is not an event.
std::uint32_t WaitNativeEvent(NativeEventHandle event, std::uint32_t timeoutMs);

/// How many events one wait takes.
constexpr std::size_t MAX_WAIT_EVENTS = 8;

/// Waits until one of `count` events, 1 .. MAX_WAIT_EVENTS, is signalled: WAIT_SIGNALLED plus the
/// index of the first one that is, WAIT_TIMED_OUT, or WAIT_ERROR at once when one is not an event.
std::uint32_t WaitNativeEvents(const NativeEventHandle* events, std::size_t count,
                               std::uint32_t timeoutMs);

/// Gives the handle back; a named event lives until its last handle is closed. False for what is
/// not an event.
bool CloseNativeEvent(NativeEventHandle event);

} // namespace qlt
