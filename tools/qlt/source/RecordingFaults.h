// Reports the faults of a recording to the user.
#pragma once

#include <qltkit/Capture/Recording.h>

#include <string>

/// Lists the faults of `recording` and of its file on standard error, at most twenty of each.
/// Returns false when the file is damaged or its last report is cut off. Throws std::runtime_error
/// when the file is no recording. A capture is always accepted, because it says that its messages
/// are reports.
bool ReportFaults(const qltkit::Recording& recording, const std::string& path);
