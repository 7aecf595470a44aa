// Stores the lines of the library in a capture.
#pragma once

#include <qlt/Runtime/Log.h>
#include <qltkit/Capture/CaptureWriter.h>

/// While the object exists, a capture gets every line that the library prints. The lines are still
/// printed. One object at a time; no other thread uses the library when it is created or destroyed.
class LogCapture
{
public:
    explicit LogCapture(qltkit::CaptureWriter& capture);
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
};
