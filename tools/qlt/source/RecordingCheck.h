// Whether what a file holds is a recording: the headset counts its reports one by one and sends one
// each millisecond, so both the sequence and the device time tell a report from anything else.
#pragma once

#include "source/Recording.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// From one report to a later one, modulo 2^32, a little backward being negative.
struct RecordingStep
{
    std::int32_t reports;
    std::int32_t timeUs;
};

std::uint32_t DeviceTimeUs(const Recording::Report& report);

RecordingStep StepBetween(const Recording::Report& before, const Recording::Report& after);

/// Whether the step goes on in sequence and time at the headset's rate. Lost reports and a pause of
/// some seconds are plausible.
bool IsPlausible(const RecordingStep& step);

/// What is odd at a report. Reports count from 0.
struct RecordingFault
{
    std::size_t report = 0;
    std::int64_t timeUs = 0; // since the first report, without implausible steps
    bool isPlausible = false;
    std::string text; // "it repeats report 4"
};

struct RecordingCheck
{
    std::vector<RecordingFault> faults; // by report
    std::size_t implausibleSteps = 0;
};

/// Finds gaps, which are plausible, and repeated, swapped, torn and shifted reports and jumps,
/// which are not.
RecordingCheck CheckRecording(const Recording& recording);
