#include <qltkit/Tracking/Calibration.h>

#include <qltkit/Error.h>

#include "Capture/Crc32.h"
#include "Headset/JsonFields.h"
#include "Headset/ScriptFiles.h"
#include "Tracking/Angles.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace qltkit
{
namespace
{

constexpr const char* FORMAT = "QueltaKit calibration";
constexpr std::string_view CHECKSUM = "  \"checksum\"";
constexpr std::size_t MAX_FILE_SIZE = 10000;

constexpr Range SCALES = {0.5, 2.0};
constexpr Range GYROSCOPE_BIASES = {-50.0, 50.0}; // degrees per second
constexpr Range ACCELEROMETER_BIASES = {-10.0, 10.0};
constexpr Range CELSIUS = {-100.0, 150.0};
constexpr Range VERSIONS = {0.0, 1e9};

/// The shortest text from which the same number is read again, in every locale.
std::string TextOf(double value)
{
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

std::string TextOf(const Vector3& v)
{
    return "[" + TextOf(v.x) + ", " + TextOf(v.y) + ", " + TextOf(v.z) + "]";
}

std::string SensorText(const char* name, const Vector3& bias, const Vector3& scale)
{
    return std::string("  \"") + name + "\": {\"bias\": " + TextOf(bias) +
           ", \"scale\": " + TextOf(scale) + "},\n";
}

std::string ChecksumOf(std::string_view text)
{
    std::array<char, 16> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x", Crc32Of(text));
    return digits.data();
}

Vector3 VectorIn(JsonFields& fields, const char* name, Range range)
{
    const auto [x, y, z] = fields.Vector(name, range);
    return {x, y, z};
}

void CheckVersion(JsonFields& fields, const std::string& name)
{
    if (fields.Text("format") != FORMAT)
    {
        throw Error(name + " is not a calibration of a headset");
    }
    const std::int64_t version = fields.Whole("version", VERSIONS);
    if (version != Calibration::VERSION)
    {
        throw Error(name + " has version " + std::to_string(version) + " of the format, but only " +
                    "version " + std::to_string(Calibration::VERSION) +
                    " can be read; calibrate the headset again");
    }
}

void CheckChecksum(JsonFields& fields, std::string_view text, const std::string& name)
{
    const std::string stored = fields.Text("checksum");
    // The checksum covers everything before its own line.
    if (stored != ChecksumOf(text.substr(0, text.rfind(CHECKSUM))))
    {
        throw Error(name + " was changed or damaged after the calibration: its checksum is wrong");
    }
}

void ReadSensor(JsonFields fields, Range biases, Vector3& bias, Vector3& scale)
{
    bias = VectorIn(fields, "bias", biases);
    scale = VectorIn(fields, "scale", SCALES);
    fields.RefuseOthers();
}

Vector3 Scaled(const Vector3& v, const Vector3& scale)
{
    return {v.x * scale.x, v.y * scale.y, v.z * scale.z};
}

} // namespace

bool IsUnitName(std::string_view name)
{
    constexpr std::size_t MAX_LENGTH = 64;
    const auto isAllowed = [](char c)
    {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               c == '.' || c == '-' || c == '_';
    };
    return !name.empty() && name.size() <= MAX_LENGTH && name.front() != '.' &&
           std::all_of(name.begin(), name.end(), isAllowed);
}

ImuSample Calibrated(const ImuSample& sample, const Calibration& calibration)
{
    ImuSample corrected = sample;
    corrected.gyroscope =
        Scaled(sample.gyroscope - calibration.gyroscopeBias, calibration.gyroscopeScale);
    corrected.accelerometer = Scaled(sample.accelerometer - calibration.accelerometerBias,
                                     calibration.accelerometerScale);
    return corrected;
}

std::string CalibrationText(const Calibration& c)
{
    std::string text = "{\n";
    text += std::string("  \"format\": \"") + FORMAT + "\",\n";
    text += "  \"version\": " + std::to_string(Calibration::VERSION) + ",\n";
    text += "  \"unit\": \"" + c.unit + "\",\n";
    text += SensorText("gyroscope", c.gyroscopeBias * DEGREES_PER_RADIAN, c.gyroscopeScale);
    text += SensorText("accelerometer", c.accelerometerBias, c.accelerometerScale);
    if (std::isfinite(c.celsius))
    {
        text += "  \"celsius\": " + TextOf(c.celsius) + ",\n";
    }
    const std::string checksum = ChecksumOf(text);
    return text + std::string(CHECKSUM) + ": \"" + checksum + "\"\n}\n";
}

Calibration ParseCalibration(std::string_view text, const std::string& unit,
                             const std::string& name)
{
    const JsonValue json = ParseJson(text, name);
    if (json.kind != JsonValue::Kind::Object)
    {
        throw Error(name + " is not a calibration of a headset");
    }
    JsonFields fields(json, "", name);
    CheckVersion(fields, name);
    CheckChecksum(fields, text, name);
    Calibration c;
    c.unit = fields.Text("unit");
    ReadSensor(fields.Object("gyroscope"), GYROSCOPE_BIASES, c.gyroscopeBias, c.gyroscopeScale);
    c.gyroscopeBias = c.gyroscopeBias * (1.0 / DEGREES_PER_RADIAN);
    ReadSensor(fields.Object("accelerometer"), ACCELEROMETER_BIASES, c.accelerometerBias,
               c.accelerometerScale);
    if (fields.Has("celsius"))
    {
        c.celsius = fields.Number("celsius", CELSIUS);
    }
    fields.RefuseOthers();
    if (c.unit != unit)
    {
        throw Error(name + " is the calibration of " + Quoted(c.unit) + ", not of " + Quoted(unit));
    }
    return c;
}

Calibration LoadCalibration(const std::filesystem::path& file, const std::string& unit)
{
    return ParseCalibration(ReadSmallFile(file, MAX_FILE_SIZE), unit, file.u8string());
}

} // namespace qltkit
