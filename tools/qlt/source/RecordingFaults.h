// What the command says about the faults of a recording.
#pragma once

#include <qltkit/Capture/Recording.h>

#include <string>

/// Names the faults of `recording` on standard error, the first twenty of them one by one. False
/// when its last report is cut off. std::runtime_error when it is no recording.
bool ReportFaults(const qltkit::Recording& recording, const std::string& path);
