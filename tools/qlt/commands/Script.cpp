#include "commands/Commands.h"

#include <qlt/qlt.h>
#include <qltkit/Headset/ScriptedHeadset.h>

#include "commands/CommandLine.h"
#include "output/OutputFile.h"
#include "output/ScriptPicture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace
{

using qltkit::ScriptedHeadset;

constexpr double DEG_PER_RAD = 57.29577951308232;
constexpr double MOMENTS = 450.0; // the number of moments in a picture

struct Options
{
    std::string script;
    double seconds = 60.0; // the length of a run when the script is longer or has no end
    std::string svg;       // empty: no picture
};

struct Played
{
    std::vector<ScriptMoment> moments;
    std::size_t reports = 0;
    std::size_t connections = 0;
    double seconds = 0.0;
};

ScriptMoment::Triple InDegrees(double a, double b, double c)
{
    return {a * DEG_PER_RAD, b * DEG_PER_RAD, c * DEG_PER_RAD};
}

/// Returns yaw, pitch and roll. Whole turns are added to the yaw so that it is near `nearDeg`.
ScriptMoment::Triple AnglesOf(const qlt::Quaternion& q, double nearDeg)
{
    const double w = static_cast<double>(q.w());
    const double x = static_cast<double>(q.x());
    const double y = static_cast<double>(q.y());
    const double z = static_cast<double>(q.z());
    auto angles = InDegrees(std::atan2(2.0 * (x * z + y * w), 1.0 - 2.0 * (x * x + y * y)),
                            std::asin(std::clamp(2.0 * (x * w - y * z), -1.0, 1.0)),
                            std::atan2(2.0 * (x * y + z * w), 1.0 - 2.0 * (x * x + z * z)));
    angles[0] += 360.0 * std::round((nearDeg - angles[0]) / 360.0);
    return angles;
}

/// Reads a script as a tracker would, and waits for nothing.
class ScriptRun
{
public:
    ScriptRun(const qltkit::HeadsetScript& script, double seconds)
        : mHeadset(script, ScriptedHeadset::Pace::Fastest)
        , mEndS(seconds)
        , mFilter(mHeadset)
    {
    }

    Played Play()
    {
        while (!mHeadset.IsOver() && mPlayed.seconds < mEndS)
        {
            const auto device = mHeadset.OpenFirst();
            if (device == nullptr || !IsHeadset(*device))
            {
                mHeadset.SleepNs(1000000000);
                continue;
            }
            ++mPlayed.connections;
            while (ReadOne(device->EndPoint(1)) && !mHeadset.IsOver() && mPlayed.seconds < mEndS)
            {
            }
        }
        return std::move(mPlayed);
    }

private:
    static bool IsHeadset(const qlt::VendorUsbDevice& device)
    {
        return device.VendorId() == 0x04B4 && device.ProductId() == 0x00F1;
    }

    bool ReadOne(qlt::UsbEndPoint& endPoint)
    {
        qlt::SensorReport report{};
        std::uint32_t length = qlt::SENSOR_REPORT_SIZE;
        endPoint.TransferData(report.data(), length);
        mPlayed.seconds = static_cast<double>(mHeadset.NowNs()) / 1e9;
        if (length != qlt::SENSOR_REPORT_SIZE)
        {
            return false;
        }
        ++mPlayed.reports;
        const qlt::SensorSample sample = qlt::DecodeSensorReport(report);
        mFilter.Fuse(sample.accelerometer, sample.gyroscope, sample.magnetometer, 0.0f);
        if (mPlayed.moments.empty() ||
            mPlayed.seconds >= mPlayed.moments.back().seconds + mEndS / MOMENTS)
        {
            AddMoment(sample);
        }
        return true;
    }

    void AddMoment(const qlt::SensorSample& sample)
    {
        const qltkit::ScriptedTruth truth = mHeadset.Truth();
        ScriptMoment moment;
        moment.seconds = mPlayed.seconds;
        double nearDeg = mPlayed.moments.empty() ? 0.0 : mPlayed.moments.back().trackedDeg[0];
        if (truth.isKnown)
        {
            moment.headDeg = InDegrees(truth.angles.yaw, truth.angles.pitch, truth.angles.roll);
            nearDeg = (*moment.headDeg)[0];
        }
        moment.trackedDeg = AnglesOf(mFilter.GetQuaternion(), nearDeg);
        moment.gyroscopeDegS = InDegrees(static_cast<double>(sample.gyroscope.x()),
                                         static_cast<double>(sample.gyroscope.y()),
                                         static_cast<double>(sample.gyroscope.z()));
        moment.temperatureC = static_cast<double>(sample.temperature);
        mPlayed.moments.push_back(moment);
    }

    ScriptedHeadset mHeadset;
    const double mEndS;
    qlt::SensorFusion mFilter;
    Played mPlayed;
};

int Run(const Options& options)
{
    const qltkit::HeadsetScript script =
        qltkit::LoadHeadsetScript(std::filesystem::u8path(options.script));
    OutputFile picture(options.svg);
    const double seconds =
        script.seconds > 0.0 ? std::min(script.seconds, options.seconds) : options.seconds;
    const Played played = ScriptRun(script, seconds).Play();
    if (!options.svg.empty())
    {
        if (played.moments.empty())
        {
            throw std::runtime_error(options.script + " gives no report that could be drawn");
        }
        DrawScript(picture, script, played.moments, seconds, 3.0 * seconds / MOMENTS);
    }
    picture.Close();
    std::printf("%s: %.1f s, reports: %zu, connections: %zu, events: %zu\n", options.script.c_str(),
                played.seconds, played.reports, played.connections, script.events.size());
    return 0;
}

} // namespace

CommandBody AddScript(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Check the script of a scripted headset, and draw it");
    line.File("script", options->script, "The script, a JSON file").Required();
    line.File("--svg", options->svg, "Draw the head, the gyroscope, and the events over time");
    line.Seconds(options->seconds, "Stop after this number of seconds of the script").ShowDefault();
    line.AfterParsing([options] { RequireDistinct({options->script}, {options->svg}); });
    return [options] { return Run(*options); };
}
