#include "Sensors/SensorReport.h"

#include <qlt/Sensors/Params.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"
#include "fakes/ReportWriter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

using qlt::Params;
using qlt::SensorSample;
using qlt::SensorScales;
using qlt::Vec3;

SensorSample Decode(const ReportWriter& report, const SensorScales& scales = SensorScales())
{
    return qlt::DecodeSensorReport(report, scales);
}

void ExpectVector(const Vec3& v, float x, float y, float z)
{
    EXPECT_FLOAT_EQ(v.x(), x);
    EXPECT_FLOAT_EQ(v.y(), y);
    EXPECT_FLOAT_EQ(v.z(), z);
}

} // namespace

TEST(SensorReportTest, FieldsComeFromTheirOffsets)
{
    ReportWriter report(0x89ABCDEFu, 0x01020304u);
    report.U32(36, 0xA1A2A3A4u).U32(40, 0xB1B2B3B4u).U32(56, 0xC1C2C3C4u).U32(60, 0xD1D2D3D4u);
    report.I16(34, -513).U32(44, 70000).U32(48, 0xFFFFFFFEu).U32(52, 3);
    const SensorSample sample = Decode(report);
    EXPECT_EQ(sample.sequence, 0x89ABCDEFu);
    EXPECT_EQ(sample.reservedA, 0xA1A2A3A4u);
    EXPECT_EQ(sample.reservedB, 0xB1B2B3B4u);
    EXPECT_EQ(sample.reservedC, 0xC1C2C3C4u);
    EXPECT_EQ(sample.reservedD, 0xD1D2D3D4u);
    EXPECT_EQ(sample.temperature, -513.0f);
    ExpectVector(sample.position, 70000.0f, -2.0f, 3.0f);
}

// 4294967295 us does not fit into single precision: it becomes 4294967296 before the division.
TEST(SensorReportTest, DeviceTimeGoesThroughSinglePrecision)
{
    EXPECT_EQ(Decode(ReportWriter(1, 5000123)).deviceTimeS,
              static_cast<double>(5000123.0f / 1000000.0f));
    EXPECT_EQ(Decode(ReportWriter(1, 0xFFFFFFFFu)).deviceTimeS,
              static_cast<double>(4294967296.0f / 1000000.0f));
}

TEST(SensorReportTest, VectorsAreTurnedIntoTheTrackersAxesThenCalibrated)
{
    ReportWriter report(1);
    report.I16(16, 100).I16(18, -200).I16(20, 300);
    report.I16(22, 400).I16(24, 32767).I16(26, -32768);
    report.I16(28, 10).I16(30, 20).I16(32, -30);
    const SensorSample sample = Decode(report);
    const Vec3 g = Params::GYROSCOPE_POSITION_OFFSET;
    ExpectVector(sample.gyroscope, 200 - g.x(), 100 - g.y(), 300 - g.z());
    const Vec3 offset = Params::ACCELEROMETER_POSITION_OFFSET;
    const Vec3 factor = Params::ACCELEROMETER_MAGNITUDE_OFFSET;
    ExpectVector(sample.accelerometer, (-32767 - offset.x()) * factor.x(),
                 (400 - offset.y()) * factor.y(), (-32768 - offset.z()) * factor.z());
    ExpectVector(sample.magnetometer, -20, 10, -30);
}

TEST(SensorReportTest, EachSensorHasItsScale)
{
    ReportWriter report(1);
    for (std::size_t offset = 16; offset < 36; offset += 2)
    {
        report.I16(offset, 1000);
    }
    report.U32(44, 1000).U32(48, 1000).U32(52, 1000);
    const SensorSample sample = Decode(report, qlt::HEADSET_SCALES);
    // 1000 counts are 30.517578 degrees a second.
    EXPECT_FLOAT_EQ(sample.gyroscope.y() + Params::GYROSCOPE_POSITION_OFFSET.y(), 0.53263222f);
    EXPECT_FLOAT_EQ(sample.accelerometer.y() / Params::ACCELEROMETER_MAGNITUDE_OFFSET.y() +
                        Params::ACCELEROMETER_POSITION_OFFSET.y(),
                    1000.0f / 8192.0f);
    EXPECT_FLOAT_EQ(sample.magnetometer.y(), 0.14615609f);
    EXPECT_FLOAT_EQ(sample.temperature, 1000.0f / 256.0f);
    ExpectVector(sample.position, 0.1f, 0.1f, 0.1f);
}

// 1000 / 32768 degrees a second as radians, 1 / 8192, the magnetometer's as it was measured, 1 /
// 256, a tenth of a millimetre: each rounded to single precision.
TEST(SensorReportTest, TheScalesOfTheHeadsetAreExact)
{
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.gyroscope), 0x3A0BA058u);
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.accelerometer), 0x39000000u);
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.magnetometer), 0x3919417Au);
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.temperature), 0x3B800000u);
    EXPECT_EQ(Bits(qlt::HEADSET_SCALES.position), 0x38D1B717u);
}

// The counts are z, w, x, y. With w alone the device lies on its back: a quarter turn about x.
// Other rows by hand: q1 = (w, -y, x, z), then the quarter turn from the left, then z reversed.
TEST(SensorReportTest, QuaternionIsRemappedWhateverItsLength)
{
    const float h = std::sqrt(0.5f);
    const struct
    {
        int z, w, x, y;
        float expected[4];
    } rows[] = {
        {0, 16384, 0, 0, {h, h, 0, 0}},  {0, 7, 0, 0, {h, h, 0, 0}},
        {0, 0, 9, 0, {0, 0, h, -h}},     {0, 0, 0, -9, {-h, h, 0, 0}},
        {-32768, 0, 0, 0, {0, 0, h, h}},
    };
    for (const auto& row : rows)
    {
        ReportWriter report(1);
        report.I16(8, row.z).I16(10, row.w).I16(12, row.x).I16(14, row.y);
        const qlt::Quaternion q = Decode(report).quaternion;
        EXPECT_NEAR(q.w(), row.expected[0], 1e-6);
        EXPECT_NEAR(q.x(), row.expected[1], 1e-6);
        EXPECT_NEAR(q.y(), row.expected[2], 1e-6);
        EXPECT_NEAR(q.z(), row.expected[3], 1e-6);
    }
}

TEST(SensorReportTest, AZeroQuaternionReportsAndStaysZero)
{
    AssertionRecorder assertions;
    ReportWriter report(1);
    report.I16(10, 0);
    const qlt::Quaternion q = Decode(report).quaternion;
    EXPECT_EQ(assertions.TakeTexts(),
              std::vector<std::string>{"norm > FLT_EPSILON|Math/Quaternion"});
    EXPECT_EQ(q.Norm2(), 0.0f);
}
