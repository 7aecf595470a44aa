// Every line that the library prints passes through one handler. Programs without a console install
// their own.
#pragma once

#include <qlt/Export.h>

namespace qlt
{

/// The kind of a line, and the stream that the default handler prints it on.
enum class LogLevel : int
{
    /// Progress and statistics, on standard output.
    Info = 0,

    /// Failures, on standard error.
    Error = 1,
};

/// Receives a line without its line end. It returns and must not throw. Any thread may call it,
/// several threads at once may call it, and a tracker may call it with its lock held, so it must
/// not call back into a tracker. `line` is valid during the call.
using LogHandler = void (*)(LogLevel level, const char* line);

/// Installs `handler` and returns the previous one. Null stands for the default handler, as the
/// argument and as the result. The default prints the line and a line end, and flushes the stream.
/// A call of the previous handler may still be running on another thread when this returns. Any
/// thread.
QLT_API LogHandler SetLogHandler(LogHandler handler) noexcept;

/// Passes a line to the installed handler. Any thread.
QLT_API void WriteLog(LogLevel level, const char* line);

} // namespace qlt
