// The picture of a headset script: what the head does, what the headset reports, and what happens.
#pragma once

#include <qltkit/Headset/HeadsetScript.h>

#include "output/OutputFile.h"

#include <array>
#include <optional>
#include <vector>

/// A moment of a script that was played.
struct ScriptMoment
{
    using Triple = std::array<double, 3>;

    double seconds = 0.0;          // the arrival of the report
    std::optional<Triple> headDeg; // truth: yaw, pitch, roll; nothing for a recording
    Triple trackedDeg{};           // the estimate of the tracker's filter
    Triple gyroscopeDegS{};        // the reported values in the tracker's frame
    double temperatureC = 0.0;
};

/// Draws the picture. The times of `moments` ascend and are at most `endS`. A step of more than
/// `gapS` seconds between two moments is a time without reports.
void DrawScript(OutputFile& file, const qltkit::HeadsetScript& script,
                const std::vector<ScriptMoment>& moments, double endS, double gapS);
