#include "Headset/ScriptTimeline.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qltkit
{

namespace
{

using Kind = HeadsetScript::EventKind;

std::optional<ScriptFault> FindFaultInPoints(const HeadsetScript& script)
{
    const auto& points = script.points;
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        if (!(points[i].atS >= 0.0 && points[i].atS <= MAX_SCRIPT_SECONDS) ||
            (i > 0 && points[i].atS <= points[i - 1].atS))
        {
            return ScriptFault{"points", i, "at", "must be later than in the point before"};
        }
    }
    if (script.motion == HeadsetScript::Motion::Angles && points.empty())
    {
        return ScriptFault{"points", 0, "points", "must have a point"};
    }
    return std::nullopt;
}

/// Returns the reason why the event cannot happen on this bus, or changes the bus and returns an
/// empty text.
std::string Happen(const HeadsetScript::Event& event, BusState& bus)
{
    switch (event.kind)
    {
    case Kind::Unplug:
        return std::exchange(bus.isPlugged, false) ? "" : "cannot be: the headset is unplugged";
    case Kind::Plug:
        ++bus.plugging;
        return std::exchange(bus.isPlugged, true) ? "cannot be: the headset is plugged in" : "";
    case Kind::ForeignPlug:
        return std::exchange(bus.foreign, &event) == nullptr ? ""
                                                             : "cannot be: there is one already";
    case Kind::ForeignUnplug:
        return std::exchange(bus.foreign, nullptr) == nullptr ? "cannot be: there is none" : "";
    default:
        return bus.isPlugged || event.kind == Kind::ClockDrift || event.kind == Kind::Stick
                   ? ""
                   : "cannot be: the headset is unplugged";
    }
}

std::optional<ScriptFault> FindFaultInEvents(const HeadsetScript& script)
{
    const double end = script.seconds > 0.0 ? script.seconds : MAX_SCRIPT_SECONDS;
    double last = 0.0;
    BusState bus;
    for (std::size_t i = 0; i < script.events.size(); ++i)
    {
        const HeadsetScript::Event& event = script.events[i];
        if (!(event.atS >= last))
        {
            return ScriptFault{"events", i, "at", "must not be earlier than in the event before"};
        }
        if (event.atS > end)
        {
            return ScriptFault{"events", i, "at", "is after the end of the script"};
        }
        last = event.atS;
        const std::string problem = Happen(event, bus);
        if (!problem.empty())
        {
            return ScriptFault{"events", i, "event", problem};
        }
    }
    return std::nullopt;
}

} // namespace

std::int64_t ToNs(double seconds) { return std::llround(seconds * 1e9); }

std::optional<ScriptFault> FindFault(const HeadsetScript& script)
{
    const auto fault = FindFaultInPoints(script);
    return fault ? fault : FindFaultInEvents(script);
}

ScriptTimeline::ScriptTimeline(const HeadsetScript& script, std::int64_t endNs)
    : mStates(1)
{
    BusState bus;
    for (const HeadsetScript::Event& event : script.events)
    {
        const BusState before = bus;
        Happen(event, bus);
        if (bus.plugging != before.plugging || bus.isPlugged != before.isPlugged ||
            bus.foreign != before.foreign)
        {
            bus.fromNs = ToNs(event.atS);
            mStates.push_back(bus);
        }
    }
    bus.isPlugged = false;
    bus.fromNs = endNs;
    mStates.push_back(bus);
}

const BusState& ScriptTimeline::At(std::int64_t ns) const
{
    const auto after =
        std::upper_bound(mStates.begin(), mStates.end(), ns,
                         [](std::int64_t at, const BusState& state) { return at < state.fromNs; });
    return after == mStates.begin() ? mStates.front() : *(after - 1);
}

std::optional<std::int64_t> ScriptTimeline::NextChange(std::int64_t ns) const
{
    for (const BusState& state : mStates)
    {
        if (state.fromNs > ns && state.fromNs < std::numeric_limits<std::int64_t>::max())
        {
            return state.fromNs;
        }
    }
    return std::nullopt;
}

} // namespace qltkit
