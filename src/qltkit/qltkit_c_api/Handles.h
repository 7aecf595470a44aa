// The objects behind the handles that more than one file uses.
#pragma once

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Headset/ScriptedHeadset.h>
#include <qltkit/Tracking/HeadTracker.h>

#include "qltkit_c_api/Guard.h"

#include <memory>

struct qltkit_ScriptedHeadset
{
    std::shared_ptr<qltkit::ScriptedHeadset> headset;
};

struct qltkit_CaptureWriter
{
    std::shared_ptr<qltkit::CaptureWriter> writer;
};

namespace qltkit
{

inline PoseFilter FilterOf(std::int32_t filter)
{
    Require(filter == QLTKIT_FILTER_KIT || filter == QLTKIT_FILTER_CORE,
            "the filter is neither QLTKIT_FILTER_KIT nor QLTKIT_FILTER_CORE");
    return filter == QLTKIT_FILTER_KIT ? PoseFilter::Kit : PoseFilter::Core;
}

} // namespace qltkit
