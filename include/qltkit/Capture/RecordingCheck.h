#pragma once

#include <qltkit/Capture/Recording.h>
#include <qltkit/Export.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qltkit
{

/// Something odd at a report.
struct RecordingFault
{
    std::size_t report = 0;   // its number, from 0
    std::int64_t timeUs = 0;  // since the first report, without implausible steps
    bool isPlausible = false; // a gap or a pause, which a headset may really have
    std::string text;         // "it repeats report 4"
};

/// The result of CheckRecording.
struct RecordingCheck
{
    std::vector<RecordingFault> faults; // in the order of the reports

    /// Steps from one report to the next: all, and those that no headset makes.
    std::size_t steps = 0;
    std::size_t implausibleSteps = 0;

    /// False when more than a hundredth of the steps are implausible, and when the file ends after
    /// one report and a part of the next: the file is something else.
    bool isRecording = true;
};

/// Tells a recording from other files, and finds its faults. The headset counts its reports one by
/// one and sends one each millisecond, so the sequence and the device time must agree. Gaps and
/// pauses of up to 10 s are plausible. Repeated, swapped, torn and shifted reports and jumps are
/// not. Any thread.
QLTKIT_API RecordingCheck CheckRecording(const Recording& recording);

} // namespace qltkit
