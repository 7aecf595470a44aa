// Reads the files of a script.
#pragma once

#include <qlt/Sensors/SensorReport.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace qltkit
{

/// Returns the content of a regular file. Throws Error when it cannot be read or has more than
/// `limit` bytes.
std::string ReadSmallFile(const std::filesystem::path& path, std::size_t limit);

/// Returns the path of the file `name` in `folder` or in a folder inside it. `name` is in UTF-8
/// with slashes. Throws Error when the path is outside `folder` or is no file. The text of the
/// Error is the end of a sentence that begins with the field.
std::filesystem::path PathInside(const std::filesystem::path& folder, const std::string& name);

/// Reads the reports of a capture (.mcap), or of a file that contains reports one after another.
/// Throws Error with such a text when the file cannot be read, is damaged or truncated, or contains
/// no report.
std::vector<qlt::SensorReport> ReadReports(const std::filesystem::path& path);

} // namespace qltkit
