#include "Headset/ScriptFiles.h"

#include <qltkit/Capture/CaptureReader.h>
#include <qltkit/Error.h>

#include <algorithm>
#include <fstream>

namespace qltkit
{

namespace
{

namespace fs = std::filesystem;

/// True when the path is `folder` or below it after all links are followed.
bool IsInside(const fs::path& folder, const fs::path& path)
{
    std::error_code error;
    const fs::path root = fs::weakly_canonical(folder, error);
    const fs::path target = fs::weakly_canonical(path, error);
    return !error && std::mismatch(root.begin(), root.end(), target.begin(), target.end()).first ==
                         root.end();
}

/// True for a relative name that is valid on every system and does not go up.
bool IsPlainName(const std::string& name)
{
    const fs::path path = fs::u8path(name);
    return !name.empty() && name.front() != '/' &&
           std::none_of(name.begin(), name.end(),
                        [](unsigned char c) { return c < ' ' || c == '\\' || c == ':'; }) &&
           std::find(path.begin(), path.end(), "..") == path.end();
}

/// Reads the reports of a capture and ignores its other items.
std::vector<qlt::SensorReport> ReadCapture(const fs::path& path, std::uintmax_t size)
{
    std::vector<qlt::SensorReport> reports;
    reports.reserve(static_cast<std::size_t>(size / qlt::SENSOR_REPORT_SIZE));
    CaptureReader reader(path);
    CaptureItem item;
    while (reader.Next(item))
    {
        if (item.kind == CaptureItem::Kind::Report)
        {
            reports.push_back(item.report);
        }
    }
    if (reader.ProblemCount() > 0)
    {
        throw Error(reader.Problems().front().text);
    }
    return reports;
}

/// Reads the reports of a file that contains only reports.
std::vector<qlt::SensorReport> ReadPlain(const fs::path& path, std::uintmax_t size)
{
    if (size % qlt::SENSOR_REPORT_SIZE != 0)
    {
        throw Error(std::to_string(size) + " bytes are no whole reports of 64");
    }
    std::vector<qlt::SensorReport> reports(
        static_cast<std::size_t>(size / qlt::SENSOR_REPORT_SIZE));
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(reports.data()), static_cast<std::streamsize>(size));
    if (!file)
    {
        throw Error("the system does not give it");
    }
    return reports;
}

} // namespace

std::string ReadSmallFile(const fs::path& path, std::size_t limit)
{
    std::error_code ignored;
    std::ifstream file;
    if (fs::is_regular_file(path, ignored))
    {
        file.open(path, std::ios::binary);
    }
    std::string bytes(limit + 1, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.is_open() || file.bad())
    {
        throw Error("cannot read " + path.u8string());
    }
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > limit)
    {
        throw Error(path.u8string() + " is larger than " + std::to_string(limit) + " bytes");
    }
    return bytes;
}

fs::path PathInside(const fs::path& folder, const std::string& name)
{
    if (folder.empty())
    {
        throw Error("needs a script that is a file itself");
    }
    fs::path path = folder / fs::u8path(name);
    if (!IsPlainName(name) || !IsInside(folder, path))
    {
        throw Error("must be a file in the script's folder, with / between folders");
    }
    return path;
}

std::vector<qlt::SensorReport> ReadReports(const fs::path& path)
{
    std::error_code error;
    const std::uintmax_t size = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
    if (error || size == 0)
    {
        throw Error(error ? "does not exist" : "is empty");
    }
    std::vector<qlt::SensorReport> reports;
    try
    {
        reports = path.extension() == ".mcap" ? ReadCapture(path, size) : ReadPlain(path, size);
    }
    catch (const Error& problem)
    {
        throw Error(std::string("cannot be read: ") + problem.what());
    }
    if (reports.empty())
    {
        throw Error("holds no report");
    }
    return reports;
}

} // namespace qltkit
