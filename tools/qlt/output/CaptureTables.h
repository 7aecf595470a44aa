// Writes a capture as tables, one for each channel.
#pragma once

#include <qlt/Math/Quaternion.h>
#include <qltkit/Capture/CaptureItem.h>

#include "output/OutputFile.h"

#include <map>
#include <memory>
#include <string>

/// CSV files in a folder: raw.csv, events.csv, log.csv and camera.csv. A file exists only when
/// there are such items. Times are Unix times in nanoseconds. The frames of the camera become
/// pictures in the same folder: camera-1.png, camera-2.png and so on.
class CaptureTables
{
public:
    /// Creates the folder if it is missing. Throws std::runtime_error when that fails.
    explicit CaptureTables(const std::string& folder);

    /// Adds an item. `orientation` is that of the head after the report. Returns false for an item
    /// of a foreign channel, which is left out.
    bool Add(const qltkit::CaptureItem& item, const qlt::Quaternion& orientation);

    /// Completes the files. Throws std::runtime_error when a write has failed.
    void Close();

private:
    OutputFile& Table(const std::string& name, const char* columns);
    std::string WriteFrame(const qltkit::CaptureFrame& frame);

    const std::string mFolder;
    std::map<std::string, std::unique_ptr<OutputFile>> mTables; // by their names
    std::string mRow;
    std::size_t mFrames = 0;
};
