#pragma once

#include <qltkit/Capture/Recording.h>
#include <qltkit/Export.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qltkit
{

/// Something odd at a report. A plain value.
struct RecordingFault
{
    /// The number of the report, from 0.
    std::size_t report = 0;

    /// The time of the report since the first one in microseconds, without implausible steps.
    std::int64_t timeUs = 0;

    /// True for a gap or a pause, which a headset may really have.
    bool isPlausible = false;

    /// The end of a sentence about the report, for example "it repeats report 4".
    std::string text;
};

/// The result of CheckRecording.
struct RecordingCheck
{
    /// The faults in the order of the reports.
    std::vector<RecordingFault> faults;

    /// The number of steps from one report to the next.
    std::size_t steps = 0;

    /// The number of steps that no headset makes.
    std::size_t implausibleSteps = 0;

    /// False when the file is something else: when more than a hundredth of the steps are
    /// implausible, or when the file ends after one report and a part of the next.
    bool isRecording = true;
};

/// Distinguishes a recording from other files, and finds its faults. The headset counts its reports
/// one by one and sends one each millisecond, so the sequence and the device time must agree: each
/// report takes 0.25 ms to 4 ms. Gaps and pauses of up to 10 s are plausible. Repeated, swapped,
/// torn and shifted reports and jumps are not. `recording` must have at least one report. Any
/// thread.
QLTKIT_API RecordingCheck CheckRecording(const Recording& recording);

} // namespace qltkit
