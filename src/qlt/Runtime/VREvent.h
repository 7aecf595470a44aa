// An event of the system with shared ownership. Copies share the event; the last copy that is
// destroyed closes it. An attached event belongs to somebody else and is never closed here. Any
// thread may use the event, but one thread at a time may use a VREvent object, as for a shared
// pointer.
#pragma once

#include "Runtime/NativeEvent.h"

#include <cstdint>
#include <memory>
#include <string>

class VREvent
{
public:
    /// The deleter of attached handles.
    struct null_deleter_t
    {
        void operator()(void*) const noexcept {}
    };

    /// Creates an event that is not signalled and holds it instead of the previous one. An empty
    /// name makes it unnamed. Throws VRExceptionEvent (code 23) when the system returns the invalid
    /// handle. deliberate: a null handle is kept like an event, and the first use of it fails.
    void Create(const std::wstring& name, bool manualReset);

    /// Holds `event` without a name. Its owner closes it.
    void Attach(qlt::NativeEventHandle event);

    /// Signals the event. Throws VRExceptionEvent (code 23) when that fails.
    void Set() const;

    /// Waits for the signal for at most `timeoutMs` milliseconds; 0xFFFFFFFF means no time limit.
    /// Throws VRExceptionTimeout (code 17) when the time has passed and when the wait fails. The
    /// texts of the two cases differ.
    void Wait(std::uint32_t timeoutMs) const;

    /// The handle. Use it to wait for several events, or to signal the event without an exception.
    /// Null when there is no event.
    qlt::NativeEventHandle Handle() const noexcept { return mHandle.get(); }

private:
    std::shared_ptr<void> mHandle;
    std::wstring mName;
};
