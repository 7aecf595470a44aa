#include "source/RecordingInput.h"

#include <qltkit/Headset/ScriptedHeadset.h>

#include "source/RecordingFaults.h"

#include <filesystem>
#include <stdexcept>

namespace
{

/// Reads the reports of a script as a tracker would read them.
std::vector<qlt::SensorReport> PlayScript(qltkit::ScriptedHeadset& headset)
{
    std::vector<qlt::SensorReport> reports;
    while (!headset.IsOver())
    {
        const auto device = headset.OpenFirst();
        // After a failed read, and for a device that is not the headset, a tracker searches again.
        std::uint32_t length = qlt::SENSOR_REPORT_SIZE;
        while (device != nullptr && device->ProductId() == 0x00F1 && !headset.IsOver() &&
               length == qlt::SENSOR_REPORT_SIZE)
        {
            qlt::SensorReport report{};
            device->EndPoint(1).TransferData(report.data(), length);
            if (length == qlt::SENSOR_REPORT_SIZE)
            {
                reports.push_back(report);
            }
        }
        if (!headset.IsOver())
        {
            headset.SleepNs(1000000000);
        }
    }
    return reports;
}

} // namespace

bool IsScript(const std::string& path)
{
    return std::filesystem::path(path).extension() == ".json";
}

qltkit::Recording LoadInput(const std::string& path, bool& whole)
{
    if (!IsScript(path))
    {
        qltkit::Recording recording = qltkit::LoadRecording(path);
        whole = ReportFaults(recording, path);
        return recording;
    }
    qltkit::HeadsetScript script = qltkit::LoadHeadsetScript(path);
    if (script.seconds <= 0.0 && script.motion != qltkit::HeadsetScript::Motion::Recording)
    {
        throw std::runtime_error(path + " has no end, so its field \"seconds\" is missing here");
    }
    qltkit::ScriptedHeadset headset(std::move(script), qltkit::ScriptedHeadset::Pace::Fastest);
    std::vector<qlt::SensorReport> reports = PlayScript(headset);
    if (reports.empty())
    {
        throw std::runtime_error(path + " gives no report");
    }
    whole = true;
    return qltkit::RecordingOf(std::move(reports));
}
