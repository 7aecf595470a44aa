#include "State/EventQueue.h"

#include <algorithm>
#include <cstring>

namespace qltxr
{

template <typename Data>
void EventQueue::Push(XrSession session, const Data& data)
{
    static_assert(sizeof(Data) <= sizeof(XrEventDataBuffer));
    if (mEvents.size() == CAPACITY)
    {
        ++mLost;
        return;
    }
    Event& event = mEvents.emplace_back();
    event.session = session;
    std::memcpy(&event.data, &data, sizeof(Data));
}

void EventQueue::SessionState(XrSession session, XrSessionState state, XrTime time)
{
    Push(session, XrEventDataSessionStateChanged{XR_TYPE_EVENT_DATA_SESSION_STATE_CHANGED, nullptr,
                                                 session, state, time});
}

void EventQueue::OriginChange(XrSession session, XrReferenceSpaceType type, XrTime time,
                              const XrPosef& origin)
{
    Push(session,
         XrEventDataReferenceSpaceChangePending{XR_TYPE_EVENT_DATA_REFERENCE_SPACE_CHANGE_PENDING,
                                                nullptr, session, type, time, XR_TRUE, origin});
}

bool EventQueue::Poll(XrEventDataBuffer& buffer)
{
    if (mLost > 0)
    {
        const XrEventDataEventsLost lost{XR_TYPE_EVENT_DATA_EVENTS_LOST, nullptr, mLost};
        std::memcpy(&buffer, &lost, sizeof(lost));
        mLost = 0;
        return true;
    }
    if (mEvents.empty())
    {
        return false;
    }
    buffer = mEvents.front().data;
    mEvents.pop_front();
    return true;
}

void EventQueue::Forget(XrSession session)
{
    const auto isOf = [session](const Event& event) { return event.session == session; };
    mEvents.erase(std::remove_if(mEvents.begin(), mEvents.end(), isOf), mEvents.end());
}

} // namespace qltxr
