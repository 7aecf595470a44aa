// What is plugged in when, by a script, and the rules that its lists keep.
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

/// The first place of a script's lists where a rule is broken.
struct ScriptFault
{
    std::string list; // "points" or "events"
    std::size_t index = 0;
    std::string field;
    std::string text; // the end of a sentence that begins with the field
};

/// Checks what no single number tells: order, and what is plugged in when it is to be unplugged.
std::optional<ScriptFault> FindFault(const HeadsetScript& script);

/// Nanoseconds from the beginning of the script.
std::int64_t ToNs(double seconds);

/// The state of the bus between two moments.
struct BusState
{
    std::int64_t fromNs = 0;
    std::size_t plugging = 0; // counts how often the headset was plugged in; 0: the first time
    bool isPlugged = true;
    const HeadsetScript::Event* foreign = nullptr; // the device that is ahead of the headset
};

class ScriptTimeline
{
public:
    /// `script`, which must outlive this, has no fault. `endNs` is where it ends.
    ScriptTimeline(const HeadsetScript& script, std::int64_t endNs);

    const BusState& At(std::int64_t ns) const;

    /// The first moment after `ns` at which something is plugged in or unplugged.
    std::optional<std::int64_t> NextChange(std::int64_t ns) const;

private:
    std::vector<BusState> mStates; // ascending
};

} // namespace qltkit
