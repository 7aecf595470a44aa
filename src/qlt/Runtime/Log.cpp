#include <qlt/Runtime/Log.h>

#include "Runtime/LogLine.h"

#include <atomic>
#include <iostream>
#include <string>

namespace qlt
{
namespace
{

std::atomic<LogHandler> gHandler{nullptr};

} // namespace

std::ostream& StreamOf(LogLevel level) { return level == LogLevel::Info ? std::cout : std::cerr; }

LogHandler SetLogHandler(LogHandler handler) noexcept { return gHandler.exchange(handler); }

void WriteLog(LogLevel level, const char* line)
{
    if (const LogHandler handler = gHandler)
    {
        handler(level, line);
        return;
    }
    // Write the line in one piece, so that lines of several threads do not mix.
    StreamOf(level) << std::string(line) + '\n' << std::flush;
}

} // namespace qlt
