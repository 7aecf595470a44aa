#include "qltkit_c_api/Handles.h"

#include <qltkit/Capture/Recording.h>
#include <qltkit/Tracking/Replay.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

struct qltkit_Recording
{
    explicit qltkit_Recording(qltkit::Recording loaded);

    qltkit::Recording recording;
    std::vector<std::uint32_t> sequence;
    std::array<std::vector<float>, 3> vectors; // gyroscope, accelerometer, magnetometer
    std::vector<float> temperature;
};

qltkit_Recording::qltkit_Recording(qltkit::Recording loaded)
    : recording(std::move(loaded))
{
    sequence.reserve(recording.reports.size());
    temperature.reserve(recording.reports.size());
    for (auto& column : vectors)
    {
        column.reserve(3 * recording.reports.size());
    }
    for (const qlt::SensorReport& report : recording.reports)
    {
        const qlt::SensorSample sample = qlt::DecodeSensorReport(report);
        sequence.push_back(sample.sequence);
        temperature.push_back(sample.temperature);
        const std::array<qlt::Vec3, 3> read = {sample.gyroscope, sample.accelerometer,
                                               sample.magnetometer};
        for (std::size_t i = 0; i < read.size(); ++i)
        {
            vectors[i].insert(vectors[i].end(), {read[i].x(), read[i].y(), read[i].z()});
        }
    }
}

namespace
{

using qltkit::Guarded;
using qltkit::Required;

const qltkit_Recording& Get(const qltkit_Recording* recording)
{
    return Required(recording, "the recording is null");
}

} // namespace

qltkit_Result qltkit_Recording_Open(const char* file, qltkit_Recording** recording)
{
    return Guarded(
        [&]
        {
            auto& result = Required(recording, "the place for the recording is null");
            result = new qltkit_Recording(qltkit::LoadRecording(qltkit::PathOf(file).string()));
        });
}

qltkit_Result qltkit_Recording_Columns(const qltkit_Recording* recording, qltkit_Columns* columns)
{
    return Guarded(
        [&]
        {
            const qltkit_Recording& from = Get(recording);
            Required(columns, "the place for the columns is null") = {
                from.recording.reports.size(),
                from.recording.hostTimesNs.empty() ? nullptr : from.recording.hostTimesNs.data(),
                from.recording.timesUs.data(),
                from.sequence.data(),
                from.vectors[0].data(),
                from.vectors[1].data(),
                from.vectors[2].data(),
                from.temperature.data(),
                from.recording.reports.front().data()};
        });
}

const char* qltkit_Recording_Problem(const qltkit_Recording* recording, uint64_t index)
{
    if (recording == nullptr || index >= recording->recording.problems.size())
    {
        return nullptr;
    }
    return recording->recording.problems[static_cast<std::size_t>(index)].text.c_str();
}

qltkit_Result qltkit_Recording_Replay(const qltkit_Recording* recording, int32_t filter,
                                      float* orientations)
{
    return Guarded(
        [&]
        {
            float* place = &Required(orientations, "the place for the orientations is null");
            for (const qlt::Quaternion& q :
                 qltkit::Replay(Get(recording).recording, qltkit::FilterOf(filter)))
            {
                const std::array<float, 4> parts = {q.w(), q.x(), q.y(), q.z()};
                place = std::copy(parts.begin(), parts.end(), place);
            }
        });
}

void qltkit_Recording_Delete(qltkit_Recording* recording) { delete recording; }
