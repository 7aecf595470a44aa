// The listeners of a tracker, in the order of their addresses. A listener may call every operation
// during an event, and it may raise another event. The tracker's lock guards the set.
#pragma once

#include <cstdint>
#include <map>

namespace qlt
{

class TrackerListener;

class ListenerSet
{
    using Listeners = std::map<TrackerListener*, std::uint64_t>;

public:
    bool empty() const { return mListeners.empty(); }
    Listeners::const_iterator find(TrackerListener* listener) const
    {
        return mListeners.find(listener);
    }
    Listeners::const_iterator end() const { return mListeners.end(); }

    /// The next event is the first one that calls the listener.
    void insert(TrackerListener* listener) { mListeners.emplace(listener, mEvents); }

    /// No event calls the listener any more, not even an event that is being raised.
    void erase(TrackerListener* listener) { mListeners.erase(listener); }

    /// Raises an event: passes every listener to `call`.
    template <typename Call>
    void ForEach(const Call& call)
    {
        const std::uint64_t event = ++mEvents;
        for (auto next = mListeners.begin(); next != mListeners.end();)
        {
            TrackerListener* const listener = next->first;
            if (next->second < event)
            {
                call(*listener);
            }
            // Search by address, because the call may have removed this listener or the next one.
            next = mListeners.upper_bound(listener);
        }
    }

private:
    Listeners mListeners; // each with the number of the last event before it was added
    std::uint64_t mEvents = 0;
};

} // namespace qlt
