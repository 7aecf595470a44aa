// What the command says about the faults of a recording.
#pragma once

#include <qltkit/Capture/Recording.h>

#include <string>

/// Names the faults of `recording` and of its file on standard error, the first twenty of each one
/// by one. False when the file is damaged or its last report is cut off. std::runtime_error when it
/// is no recording, unless it is a capture, whose reports are surely reports.
bool ReportFaults(const qltkit::Recording& recording, const std::string& path);
