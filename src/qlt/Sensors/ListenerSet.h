// The listeners of a tracker, in the order of their addresses. Every operation may be called from
// inside an event, also one that raises another event. The tracker's lock guards all of it.
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

    /// The listener is called from the next event on.
    void insert(TrackerListener* listener) { mListeners.emplace(listener, mEvents); }

    /// The listener is not called any more, not even by an event that is on its way.
    void erase(TrackerListener* listener) { mListeners.erase(listener); }

    /// Raises an event: hands every listener to `call`.
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
            // Looked up by address, because the call may have removed this listener or the next.
            next = mListeners.upper_bound(listener);
        }
    }

private:
    Listeners mListeners; // with the number of the last event before each was added
    std::uint64_t mEvents = 0;
};

} // namespace qlt
