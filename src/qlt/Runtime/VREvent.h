// An event of the system under shared ownership: copies share the event, the last one closes it.
// An event that somebody else owns is attached and never closed here. Any thread may use an event;
// one VREvent object belongs to one thread at a time, as a shared pointer does.
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

    /// Holds a new event, not signalled, instead of the one held before; an empty name makes it
    /// unnamed. Throws VRExceptionEvent (code 23) when the system gives the invalid handle
    /// (deliberate: a null handle is kept as if it were an event, and the first use of it fails).
    void Create(const std::wstring& name, bool manualReset);

    /// Holds `event`, which stays its owner's to close, without a name.
    void Attach(qlt::NativeEventHandle event);

    /// Throws VRExceptionEvent (code 23) when the system refuses.
    void Set() const;

    /// Throws VRExceptionTimeout (code 17) when `timeoutMs` have passed (0xFFFFFFFF: never) and
    /// also when the wait fails; the texts differ.
    void Wait(std::uint32_t timeoutMs) const;

    /// For waits on several events and for signalling without an exception; null when empty.
    qlt::NativeEventHandle Handle() const noexcept { return mHandle.get(); }

private:
    std::shared_ptr<void> mHandle;
    std::wstring mName;
};
