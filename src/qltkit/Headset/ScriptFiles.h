// The files of a script.
#pragma once

#include <qlt/Sensors/SensorReport.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace qltkit
{

/// The contents of a regular file. Error when it cannot be read or has more than `limit` bytes.
std::string ReadSmallFile(const std::filesystem::path& path, std::size_t limit);

/// The file called `name`, in UTF-8 and with slashes, in `folder` or a folder inside. Error, as the
/// end of a sentence that begins with the field, when it leads out of `folder` or is no file.
std::filesystem::path PathInside(const std::filesystem::path& folder, const std::string& name);

/// The reports of a capture (.mcap), or of a file that holds them one after another. Error, as the
/// end of such a sentence, when it cannot be read, is damaged or cut off, or holds none.
std::vector<qlt::SensorReport> ReadReports(const std::filesystem::path& path);

} // namespace qltkit
