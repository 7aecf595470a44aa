#include "output/CaptureTables.h"

#include <qlt/Sensors/SensorReport.h>

#include "output/PngFile.h"

#include <charconv>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace
{

using Kind = qltkit::CaptureItem::Kind;

constexpr const char* RAW_COLUMNS =
    "time_ns,device_time_us,sequence,gyroscope_x_rad_s,gyroscope_y_rad_s,gyroscope_z_rad_s,"
    "accelerometer_x_g,accelerometer_y_g,accelerometer_z_g,magnetometer_x_gauss,"
    "magnetometer_y_gauss,magnetometer_z_gauss,temperature_c,qw,qx,qy,qz\n";

/// Appends the shortest text that gives the same number again.
template <typename Number>
void AppendCell(std::string& row, Number value)
{
    char text[32];
    row.append(text, std::to_chars(text, text + sizeof text, value).ptr);
    row += ',';
}

void AppendCells(std::string& row, const qlt::Vec3& v)
{
    AppendCell(row, v.x());
    AppendCell(row, v.y());
    AppendCell(row, v.z());
}

void AppendText(std::string& row, const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
    {
        row += text + ',';
        return;
    }
    row += '"';
    for (const char c : text)
    {
        row += c;
        if (c == '"')
        {
            row += c; // a quote in a cell is written twice
        }
    }
    row += "\",";
}

void AppendReport(std::string& row, const qltkit::CaptureItem& item, const qlt::Quaternion& q)
{
    const qlt::SensorSample sample = qlt::DecodeSensorReport(item.report);
    AppendCell(row, item.deviceTimeUs);
    AppendCell(row, item.sequence);
    AppendCells(row, sample.gyroscope);
    AppendCells(row, sample.accelerometer);
    AppendCells(row, sample.magnetometer);
    AppendCell(row, sample.temperature);
    AppendCell(row, q.w());
    AppendCells(row, q.v());
}

} // namespace

CaptureTables::CaptureTables(const std::string& folder)
    : mFolder(folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder))
    {
        throw std::runtime_error("cannot create the folder " + folder +
                                 (error ? ": " + error.message() : ""));
    }
}

bool CaptureTables::Add(const qltkit::CaptureItem& item, const qlt::Quaternion& orientation)
{
    mRow.clear();
    AppendCell(mRow, item.logTimeNs);
    OutputFile* table = nullptr;
    switch (item.kind)
    {
    case Kind::Report:
        table = &Table("raw.csv", RAW_COLUMNS);
        AppendReport(mRow, item, orientation);
        break;
    case Kind::Event:
        table = &Table("events.csv", "time_ns,event,detail\n");
        AppendText(mRow, item.name);
        AppendText(mRow, item.text);
        break;
    case Kind::Text:
        table = &Table("log.csv", "time_ns,level,text\n");
        AppendCell(mRow, static_cast<int>(item.level));
        AppendText(mRow, item.text);
        break;
    case Kind::Frame:
        table = &Table("camera.csv", "time_ns,width,height,encoding,picture\n");
        AppendCell(mRow, item.frame.width);
        AppendCell(mRow, item.frame.height);
        AppendText(mRow, item.frame.encoding);
        AppendText(mRow, WriteFrame(item.frame));
        break;
    default:
        return false;
    }
    mRow.back() = '\n';
    table->Write(mRow);
    return true;
}

void CaptureTables::Close()
{
    for (const auto& [name, table] : mTables)
    {
        table->Close();
    }
}

OutputFile& CaptureTables::Table(const std::string& name, const char* columns)
{
    std::unique_ptr<OutputFile>& table = mTables[name];
    if (table == nullptr)
    {
        table = std::make_unique<OutputFile>((std::filesystem::path(mFolder) / name).string());
        table->Write(columns);
    }
    return *table;
}

/// Returns the name of the picture. Empty for pixels that are not grey levels.
std::string CaptureTables::WriteFrame(const qltkit::CaptureFrame& frame)
{
    if (frame.encoding != "mono8" || frame.width == 0 || frame.width > frame.step)
    {
        return {};
    }
    std::string name = "camera-" + std::to_string(++mFrames) + ".png";
    std::vector<unsigned char> pixels;
    pixels.reserve(static_cast<std::size_t>(frame.width) * frame.height);
    for (std::size_t row = 0; row < frame.height; ++row)
    {
        const std::string_view line = frame.pixels.substr(row * frame.step, frame.width);
        pixels.insert(pixels.end(), line.begin(), line.end());
    }
    OutputFile file((std::filesystem::path(mFolder) / name).string());
    WritePng(file, static_cast<int>(frame.width), static_cast<int>(frame.height), 1, pixels);
    return name;
}
