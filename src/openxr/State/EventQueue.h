// The events that wait for the program, the oldest first. The caller serialises all operations.
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

    /// Adds a change of the origin of the space `type`. `origin` is the new origin in the old
    /// space.
    void OriginChange(XrSession session, XrReferenceSpaceType type, XrTime time,
                      const XrPosef& origin);

    /// Writes the next event into `buffer`. Returns false and writes nothing when no event waits.
    /// When the queue was full, the number of lost events comes before the other events.
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
