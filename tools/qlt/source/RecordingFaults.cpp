#include "source/RecordingFaults.h"

#include <qltkit/Capture/RecordingCheck.h>

#include "output/OutputFile.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

namespace
{

constexpr std::size_t MAX_LISTED = 20; // the largest number of faults that are listed

std::string Describe(const qltkit::RecordingFault& fault)
{
    return OutputFile::Format("report %zu (%.3f s): ", fault.report,
                              static_cast<double>(fault.timeUs) / 1e6) +
           fault.text;
}

/// Returns the reason why a file is no recording.
std::string DescribeRefusal(const qltkit::RecordingCheck& check, std::size_t extraBytes)
{
    if (check.steps == 0)
    {
        return "it ends after one report and " + std::to_string(extraBytes) + " of 64 bytes";
    }
    const auto first = std::find_if(check.faults.begin(), check.faults.end(),
                                    [](const auto& fault) { return !fault.isPlausible; });
    return std::to_string(check.implausibleSteps) + " of its " + std::to_string(check.steps) +
           " steps are implausible, the first at " + Describe(*first);
}

/// Lists the faults of the file of a capture.
void ReportProblems(const std::vector<qltkit::CaptureProblem>& problems, const std::string& path)
{
    const std::size_t listed = std::min(problems.size(), MAX_LISTED);
    for (std::size_t i = 0; i < listed; ++i)
    {
        std::cerr << "qlt: " << path << ": " << problems[i].text << '\n';
    }
    if (problems.size() > listed)
    {
        std::cerr << "qlt: " << path << ": and " << problems.size() - listed << " more\n";
    }
}

} // namespace

bool ReportFaults(const qltkit::Recording& recording, const std::string& path)
{
    ReportProblems(recording.problems, path);
    const qltkit::RecordingCheck check = qltkit::CheckRecording(recording);
    const bool isRecording = check.isRecording || qltkit::IsCapture(path);
    std::size_t listed = std::min(check.faults.size(), MAX_LISTED);
    if (!isRecording && check.faults.size() > MAX_LISTED)
    {
        listed = 0; // the error below says enough
    }
    for (std::size_t i = 0; i < listed; ++i)
    {
        std::cerr << "qlt: " << path << ", " << Describe(check.faults[i]) << '\n';
    }
    if (!isRecording)
    {
        throw std::runtime_error(
            path + " is not a recording: " + DescribeRefusal(check, recording.extraBytes));
    }
    if (check.faults.size() > listed)
    {
        std::cerr << "qlt: " << path << ", and " << check.faults.size() - listed << " more\n";
    }
    if (recording.extraBytes != 0)
    {
        std::cerr << "qlt: the last report of " << path << " is cut off after "
                  << recording.extraBytes << " of 64 bytes\n";
    }
    return recording.extraBytes == 0 && recording.problems.empty();
}
