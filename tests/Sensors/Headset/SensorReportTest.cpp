#include <qlt/Sensors/SensorReport.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/EventLog.h"
#include "fakes/ExpectNear.h"
#include "fakes/FloatBits.h"
#include "fakes/ReportWriter.h"

#include <gtest/gtest.h>

// Single precision cannot hold 4294967295 us, so it becomes 4294967296 before the division.
TEST(SensorReportTest, FieldsComeFromTheirOffsets)
{
    ReportWriter report(0x89ABCDEFu, 0xFFFFFFFFu);
    report.U32(36, 0xA1A2A3A4u).U32(40, 0xB1B2B3B4u).U32(56, 0xC1C2C3C4u).U32(60, 0xD1D2D3D4u);
    report.I16(34, -513).U32(44, 70000).U32(48, 0xFFFFFFFEu).U32(52, 3);
    const qlt::SensorSample s = qlt::DecodeSensorReport(report, {});
    EXPECT_EQ((std::array{s.sequence, s.reservedA, s.reservedB, s.reservedC, s.reservedD}),
              (std::array{0x89ABCDEFu, 0xA1A2A3A4u, 0xB1B2B3B4u, 0xC1C2C3C4u, 0xD1D2D3D4u}));
    EXPECT_EQ(s.deviceTimeS, static_cast<double>(4294967296.0f / 1000000.0f));
    EXPECT_EQ(s.temperature, -513.0f);
    EXPECT_EQ(Text(s.position), "70000 -2 3");
}

// The scaled counts (x, y, z) become (-y, x, z). The calibration subtracts the middle of the range
// and multiplies the accelerometer by half of the range. 1000 counts are 30.517578 degrees a
// second, 1000 / 8192 g, 0.14615609 gauss, 3.90625 degrees Celsius or 0.1 m. Each scale is the
// nearest float.
TEST(SensorReportTest, VectorsAreTurnedIntoTheTrackersAxesThenCalibrated)
{
    ReportWriter report(1);
    report.I16(16, 1000).I16(18, -2000).I16(20, 3000);
    report.I16(22, 4000).I16(24, 32767).I16(26, -32768);
    report.I16(28, 1000).I16(30, 2000).I16(32, -3000);
    report.I16(34, 1000).U32(44, 1000).U32(48, 1000).U32(52, 1000);
    const qlt::SensorSample sample = qlt::DecodeSensorReport(report);
    EXPECT_EQ(Text(sample.gyroscope), "1.06709 0.537966 1.60288");
    EXPECT_EQ(Text(sample.accelerometer), "-3.61741 0.464763 -3.59194");
    EXPECT_EQ(Text(sample.magnetometer), "-0.292312 0.146156 -0.438468");
    EXPECT_EQ(sample.temperature, 3.90625f);
    EXPECT_EQ(Text(sample.position), "0.1 0.1 0.1");
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.gyroscope), 0x3A0BA058u);
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.magnetometer), 0x3919417Au);
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.position), 0x38D1B717u);
}

// The counts are z, w, x, y. When only w is set, the device lies on its back, which is a quarter
// turn about x. The other rows are calculated by hand: q1 = (w, -y, x, z), then the quarter turn
// from the left, then z reversed.
TEST(SensorReportTest, TheQuaternionIsRemappedForEveryLength)
{
    AssertionRecorder assertions;
    const float h = std::sqrt(0.5f);
    const std::pair<std::array<int, 4>, qlt::Quaternion> rows[] = {
        {{0, 16384, 0, 0}, {h, h, 0, 0}},  {{0, 7, 0, 0}, {h, h, 0, 0}},
        {{0, 0, 9, 0}, {0, 0, h, -h}},     {{0, 0, 0, -9}, {-h, h, 0, 0}},
        {{-32768, 0, 0, 0}, {0, 0, h, h}}, {{0, 0, 0, 0}, {}}, // this is reported
    };
    for (const auto& [counts, expected] : rows)
    {
        EXPECT_TRUE(assertions.Take().empty());
        ReportWriter report(1);
        report.I16(8, counts[0]).I16(10, counts[1]).I16(12, counts[2]).I16(14, counts[3]);
        ExpectNear(qlt::DecodeSensorReport(report, {}).quaternion, expected, 1e-6f);
    }
    EXPECT_EQ(assertions.TakeTexts().at(0), "norm > FLT_EPSILON|Math/Quaternion");
}
