#include "qltkit_c_api/Handles.h"

#include <algorithm>
#include <utility>

namespace
{

using qltkit::Guarded;
using qltkit::Required;
using qltkit::ScriptedHeadset;

ScriptedHeadset::Pace PaceOf(std::int32_t pace)
{
    qltkit::Require(pace == QLTKIT_PACE_REAL_TIME || pace == QLTKIT_PACE_FASTEST,
                    "the pace is neither QLTKIT_PACE_REAL_TIME nor QLTKIT_PACE_FASTEST");
    return pace == QLTKIT_PACE_FASTEST ? ScriptedHeadset::Pace::Fastest
                                       : ScriptedHeadset::Pace::RealTime;
}

const ScriptedHeadset& Headset(const qltkit_ScriptedHeadset* headset)
{
    return *Required(headset, "the headset is null").headset;
}

} // namespace

qltkit_Result qltkit_ScriptedHeadset_Open(const char* file, int32_t pace,
                                          qltkit_ScriptedHeadset** headset)
{
    return Guarded(
        [&]
        {
            auto& result = Required(headset, "the place for the headset is null");
            result = new qltkit_ScriptedHeadset{
                qltkit::OpenScriptedHeadset(qltkit::PathOf(file).string(), PaceOf(pace))};
        });
}

qltkit_Result qltkit_ScriptedHeadset_Parse(const char* script, int32_t pace,
                                           qltkit_ScriptedHeadset** headset)
{
    return Guarded(
        [&]
        {
            auto& result = Required(headset, "the place for the headset is null");
            result = new qltkit_ScriptedHeadset{std::make_shared<ScriptedHeadset>(
                qltkit::ParseHeadsetScript(&Required(script, "the script is null")), PaceOf(pace))};
        });
}

qltkit_Result qltkit_ScriptedHeadset_State(const qltkit_ScriptedHeadset* headset)
{
    return Guarded([&] { return Headset(headset).IsOver() ? QLTKIT_END : QLTKIT_OK; });
}

qltkit_Result qltkit_ScriptedHeadset_Truth(const qltkit_ScriptedHeadset* headset,
                                           qltkit_Truth* truth)
{
    return Guarded(
        [&]
        {
            const qltkit::ScriptedTruth known = Headset(headset).Truth();
            auto& result = Required(truth, "the place for the truth is null");
            std::copy(known.orientation.begin(), known.orientation.end(), result.orientation);
            result.sampleNs = known.sampleNs;
            result.arrivalNs = known.arrivalNs;
            result.sequence = known.sequence;
            result.isKnown = known.isKnown ? 1 : 0;
        });
}

void qltkit_ScriptedHeadset_Delete(qltkit_ScriptedHeadset* headset) { delete headset; }
