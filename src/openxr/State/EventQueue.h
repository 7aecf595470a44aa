// The events that wait for the program, oldest first. The caller serialises all operations.
#pragma once

#include <openxr/openxr.h>

#include <cstdint>
#include <deque>

namespace qltxr
{

class EventQueue
{
public:
    static constexpr std::size_t CAPACITY = 256;

    void SessionState(XrSession session, XrSessionState state, XrTime time);

    /// `type` is the space that gets another origin; `origin` is the new one in the old one.
    void OriginChange(XrSession session, XrReferenceSpaceType type, XrTime time,
                      const XrPosef& origin);

    /// False, with nothing written, when no event waits. Events that found the queue full are
    /// reported as lost, before the others.
    bool Poll(XrEventDataBuffer& buffer);

    /// Forgets the events of a session.
    void Forget(XrSession session);

private:
    struct Event
    {
        XrSession session;
        XrEventDataBuffer data;
    };

    template <typename Data>
    void Push(XrSession session, const Data& data);

    std::deque<Event> mEvents;
    std::uint32_t mLost = 0;
};

} // namespace qltxr
