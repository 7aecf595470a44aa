#include "output/LogCapture.h"

#include <atomic>
#include <cstdio>

namespace
{

std::atomic<qltkit::CaptureWriter*> gCapture{nullptr};

void Take(qlt::LogLevel level, const char* line)
{
    const bool isError = level == qlt::LogLevel::Error;
    std::FILE* const stream = isError ? stderr : stdout;
    std::fprintf(stream, "%s\n", line);
    std::fflush(stream);
    if (qltkit::CaptureWriter* const capture = gCapture)
    {
        capture->AddText(isError ? qltkit::CaptureLevel::Error : qltkit::CaptureLevel::Info, line);
    }
}

} // namespace

LogCapture::LogCapture(qltkit::CaptureWriter& capture)
{
    gCapture = &capture;
    qlt::SetLogHandler(Take);
}

LogCapture::~LogCapture()
{
    qlt::SetLogHandler(nullptr);
    gCapture = nullptr;
}
