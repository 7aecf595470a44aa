// Preconditions of this library are checked in every build. A failed one is reported and the
// operation goes on as its documentation says; whether the process ends is for the handler to
// decide.
//
// Threads: any. A handler may be called from any thread, from several at once, and while a tracker
// holds its lock: it must not call back into the tracker that reports.
#pragma once

#include <qlt/Export.h>

namespace qlt
{

/// Receives the text of the failed condition, the source file without extension ("Sensors/Tracker")
/// and the line. Returns, or ends the process; it must not throw, destructors report too.
using AssertionHandler = void (*)(const wchar_t* condition, const wchar_t* file, unsigned line);

/// Installs `handler` and returns the previous one (null: the default was installed). Null restores
/// the default, which prints "Assertion failed: TEXT, file PATH, line N" on standard error and
/// returns.
QLT_API AssertionHandler SetAssertionHandler(AssertionHandler handler) noexcept;

/// Hands a failed condition to the installed handler.
QLT_API void ReportAssertion(const wchar_t* condition, const wchar_t* file, unsigned line);

} // namespace qlt
