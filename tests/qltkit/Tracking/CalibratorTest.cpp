#include <qltkit/Tracking/Calibrator.h>

#include <qltkit/Error.h>
#include <qltkit/Headset/ScriptedHeadset.h>
#include <qltkit/Tracking/HeadTracker.h>

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>

namespace
{

using qltkit::Calibration;
using qltkit::CalibrationResult;
using qltkit::Calibrator;
using qltkit::HeadsetScript;
using qltkit::ImuSample;
using qltkit::Vector3;

constexpr double RADIANS = 0.017453292519943295;
constexpr double GRAVITY = 9.80665;

HeadsetScript SixSides() { return qltkit::LoadHeadsetScript(QLT_SCRIPTS "/six_sides.json"); }

/// Gives the reports of a script to a calibrator. `change` may change each sample.
void Play(const HeadsetScript& script, Calibrator& calibrator,
          const std::function<void(ImuSample&)>& change = {})
{
    qltkit::ScriptedHeadset headset(script, qltkit::ScriptedHeadset::Pace::Fastest);
    const auto device = headset.OpenFirst();
    qlt::SensorReport report{};
    for (std::uint32_t length = report.size(); length == report.size();)
    {
        device->EndPoint(1).TransferData(report.data(), length);
        if (length == report.size())
        {
            ImuSample sample = qltkit::ReadImuSample(report);
            if (change)
            {
                change(sample);
            }
            calibrator.Add(sample);
        }
    }
}

std::string Refusal(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const qltkit::Error& error)
    {
        return error.what();
    }
    return "none";
}

} // namespace

TEST(CalibratorTest, TheErrorsOfScriptedHeadsetsAreFoundToAFifth)
{
    struct Case
    {
        std::array<double, 3> gyroscopeBias, gyroscopeScale, accelerometerBias, accelerometerScale;
    };
    const Case cases[] = {
        {{0.6, -0.4, 0.9}, {1.012, 0.985, 1.02}, {0.03, -0.02, 0.04}, {0.97, 1.025, 1.015}},
        {{-3.0, 2.0, -1.0}, {0.96, 1.03, 0.98}, {-0.1, 0.08, 0.05}, {1.05, 0.95, 0.93}},
    };
    for (const Case& one : cases)
    {
        HeadsetScript script = SixSides();
        script.faults[HeadsetScript::Gyroscope].bias = one.gyroscopeBias;
        script.faults[HeadsetScript::Gyroscope].scale = one.gyroscopeScale;
        script.faults[HeadsetScript::Accelerometer].bias = one.accelerometerBias;
        script.faults[HeadsetScript::Accelerometer].scale = one.accelerometerScale;
        Calibrator calibrator;
        Play(script, calibrator);
        ASSERT_EQ(calibrator.GetProgress().step, Calibrator::Step::Done);
        EXPECT_NEAR(calibrator.GetProgress().share, 1.0, 1e-9);
        const CalibrationResult result = calibrator.GetResult();
        for (int axis = 0; axis < 3; ++axis)
        {
            const auto i = static_cast<std::size_t>(axis);
            const auto expectFifth = [axis](double found, double error, double none)
            { EXPECT_NEAR(found, error, std::abs(error - none) / 5.0) << axis; };
            expectFifth(result.calibration.gyroscopeBias[axis] / RADIANS, one.gyroscopeBias[i], 0);
            expectFifth(1 / result.calibration.gyroscopeScale[axis], one.gyroscopeScale[i], 1);
            expectFifth(result.calibration.accelerometerBias[axis] / GRAVITY,
                        one.accelerometerBias[i], 0);
            expectFifth(1 / result.calibration.accelerometerScale[axis], one.accelerometerScale[i],
                        1);
        }
        EXPECT_LT(result.after.rate, result.before.rate / 5.0);
        EXPECT_LT(result.after.gravity, result.before.gravity / 5.0);
        EXPECT_LT(result.after.tilt, result.before.tilt / 5.0);
    }
}

TEST(CalibratorTest, OnlyStillSidesCountAndImplausibleOnesAreRefused)
{
    HeadsetScript script = SixSides();
    script.seconds = 33.0; // before the front points up
    Calibrator partial;
    Play(script, partial,
         [](ImuSample& sample)
         {
             if (sample.sequence % 100 == 0)
             {
                 sample.gyroscope.x = std::nan("");
             }
         });
    EXPECT_EQ(partial.GetProgress().step, Calibrator::Step::Sides);
    EXPECT_FALSE(partial.GetProgress().sides[static_cast<std::size_t>(qltkit::HeadsetSide::Front)]);
    EXPECT_EQ(partial.GetProgress().up, qltkit::HeadsetSide::Back);
    EXPECT_EQ(Refusal([&] { partial.GetResult(); }), "the calibration is not done yet");

    Calibrator restless; // a knock in each second
    Play(SixSides(), restless,
         [](ImuSample& sample)
         { sample.accelerometer.y += sample.timeUs % 1000000 < 5000 ? 3.0 : 0.0; });
    EXPECT_EQ(restless.GetProgress().step, Calibrator::Step::Rest);

    Calibrator stuck; // one axis shows a part of gravity only
    Play(SixSides(), stuck, [](ImuSample& sample) { sample.accelerometer.z *= 0.5; });
    EXPECT_EQ(Refusal([&] { stuck.GetResult(); }).substr(0, 31), "the sides contradict each other");
}

TEST(CalibrationTest, AFileIsReadBackExactlyAndOnlyForItsUnitVersionAndChecksum)
{
    Calibration written;
    written.unit = "IXO-0042_b.2";
    written.gyroscopeBias = {0.1 * RADIANS, -1e-5, 0.0};
    written.accelerometerScale = {1.0 / 3.0 + 0.7, 1.0, 0.99};
    const std::string text = CalibrationText(written);
    const Calibration read = qltkit::ParseCalibration(text, "IXO-0042_b.2");
    EXPECT_NEAR(read.gyroscopeBias.x, written.gyroscopeBias.x, 1e-15);
    EXPECT_EQ(read.accelerometerScale.x, written.accelerometerScale.x);
    EXPECT_TRUE(std::isnan(read.celsius));
    EXPECT_EQ(CalibrationText(read), text);

    const auto refusal = [&](const std::string& from, const std::string& to)
    {
        std::string changed = text;
        changed.replace(changed.find(from), from.size(), to);
        return Refusal([&] { qltkit::ParseCalibration(changed, "IXO-0042_b.2", "a.json"); });
    };
    EXPECT_EQ(Refusal([&] { qltkit::ParseCalibration(text, "B", "a.json"); }),
              R"(a.json is the calibration of "IXO-0042_b.2", not of "B")");
    EXPECT_EQ(refusal("\"version\": 1", "\"version\": 2"),
              "a.json has version 2 of the format, but only version 1 can be read; calibrate the "
              "headset again");
    EXPECT_EQ(refusal("0.99]", "0.98]"),
              "a.json was changed or damaged after the calibration: its checksum is wrong");
    EXPECT_EQ(refusal("QueltaKit calibration", "another"),
              "a.json is not a calibration of a headset");
    EXPECT_EQ(Refusal([] { qltkit::ParseCalibration("[]", "B", "a.json"); }),
              "a.json is not a calibration of a headset");
    EXPECT_EQ(refusal("\"unit\"", "\"unit").substr(0, 14), "a.json, line 4");
    for (const char* name : {"", ".hidden", "a/b", "a b", "\xC3\xA9"})
    {
        EXPECT_FALSE(qltkit::IsUnitName(name)) << name;
    }
}

TEST(CalibrationTest, AHeadTrackerCorrectsItsSamples)
{
    // The accelerometer leans by 10 degrees to the right, and the calibration takes that back.
    Calibration calibration;
    calibration.unit = "leaning";
    calibration.accelerometerBias = {GRAVITY * std::sin(10.0 * RADIANS), 0.0, 0.0};
    const std::string file = QLT_TEST_FOLDER "/leaning.json";
    std::ofstream(file, std::ios::binary) << CalibrationText(calibration);
    HeadsetScript script;
    script.seconds = 2.0;
    script.faults[HeadsetScript::Accelerometer].bias = {std::sin(10.0 * RADIANS), 0.0, 0.0};
    const auto tiltWith = [&](const qltkit::HeadTrackerOptions& options)
    {
        auto headset = std::make_unique<qltkit::ScriptedHeadset>(
            script, qltkit::ScriptedHeadset::Pace::Fastest);
        qltkit::ScriptedHeadset& played = *headset;
        const qltkit::HeadTracker tracker(std::move(headset), options);
        while (!played.IsOver())
        {
            std::this_thread::yield();
        }
        const qlt::Quaternion q = tracker.Latest().orientation;
        return 2.0 * std::asin(std::hypot(static_cast<double>(q.x()), static_cast<double>(q.z()))) /
               RADIANS;
    };
    qltkit::HeadTrackerOptions options;
    EXPECT_NEAR(tiltWith(options), 10.0, 0.3);
    options.calibration = file;
    options.unit = "leaning";
    EXPECT_NEAR(tiltWith(options), 0.0, 0.1);
    options.unit = "other";
    EXPECT_NE(Refusal([&] { tiltWith(options); }).find("not of \"other\""), std::string::npos);
    options.calibration = "missing.json";
    EXPECT_EQ(Refusal([&] { tiltWith(options); }), "cannot read missing.json");
    options.filter = qltkit::PoseFilter::Core;
    EXPECT_EQ(Refusal([&] { tiltWith(options); }), "only the kit's filter takes a calibration");
}
