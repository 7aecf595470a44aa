// The state of the bus over the time of a script, and the rules for the script's lists.
#pragma once

#include <qltkit/Headset/HeadsetScript.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qltkit
{

constexpr double MAX_SCRIPT_SECONDS = 1e6;
constexpr double MAX_DRIFT_PPM = 100000.0;
constexpr double MAX_LATE_MS = 10000.0;

/// The first entry of a script's lists that breaks a rule.
struct ScriptFault
{
    std::string list; // "points" or "events"
    std::size_t index = 0;
    std::string field;
    std::string text; // the end of a sentence that begins with the field
};

/// Checks the rules between entries: the order, and that an unplug event finds its device plugged
/// in.
std::optional<ScriptFault> FindFault(const HeadsetScript& script);

/// Converts seconds into nanoseconds from the beginning of the script.
std::int64_t ToNs(double seconds);

/// The state of the bus between two moments.
struct BusState
{
    std::int64_t fromNs = 0;
    std::size_t plugging = 0; // counts the plug events of the headset; 0 at the beginning
    bool isPlugged = true;
    const HeadsetScript::Event* foreign = nullptr; // the device that is found before the headset
};

class ScriptTimeline
{
public:
    /// `script` must have no fault and must outlive this object. `endNs` is its end.
    ScriptTimeline(const HeadsetScript& script, std::int64_t endNs);

    const BusState& At(std::int64_t ns) const;

    /// The first moment after `ns` at which something is plugged in or unplugged.
    std::optional<std::int64_t> NextChange(std::int64_t ns) const;

private:
    std::vector<BusState> mStates; // ascending
};

} // namespace qltkit
