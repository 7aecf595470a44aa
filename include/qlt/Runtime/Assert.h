// The library checks its preconditions in every build. It reports a broken precondition and goes on
// as the documentation of the operation says. The handler decides whether the process ends.
#pragma once

#include <qlt/Export.h>

namespace qlt
{

/// Receives the text of the failed condition, the source file without extension ("Sensors/Tracker")
/// and the line. It returns or ends the process. It must not throw, because destructors report,
/// too. Several threads may call it at once. A tracker may call it with its lock held, so it must
/// not call back into the tracker that reports.
using AssertionHandler = void (*)(const wchar_t* condition, const wchar_t* file, unsigned line);

/// Installs `handler` and returns the previous one. Null stands for the default handler, as the
/// argument and as the result. The default passes "Assertion failed: TEXT, file PATH, line N" to
/// the log handler as an error. Any thread.
QLT_API AssertionHandler SetAssertionHandler(AssertionHandler handler) noexcept;

/// Passes a failed condition to the installed handler. Any thread.
QLT_API void ReportAssertion(const wchar_t* condition, const wchar_t* file, unsigned line);

} // namespace qlt
