// One line of the log, written as to a stream: LogLine(LogLevel::Error) << "error " << code; The
// line goes to the handler at the end of the statement.
#pragma once

#include <qlt/Runtime/Log.h>

#include <sstream>

namespace qlt
{

/// The stream that the default handler prints a line on.
std::ostream& StreamOf(LogLevel level);

class LogLine
{
public:
    /// deliberate: the line takes its number format from the stream, because the camera's stream
    /// leaves standard error in hexadecimal.
    explicit LogLine(LogLevel level)
        : mLevel(level)
    {
        mText.flags(StreamOf(level).flags());
    }
    ~LogLine() { WriteLog(mLevel, mText.str().c_str()); }
    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

    template <typename Value>
    LogLine& operator<<(const Value& value)
    {
        mText << value;
        return *this;
    }

private:
    LogLevel mLevel;
    std::ostringstream mText;
};

} // namespace qlt
