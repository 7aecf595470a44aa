// The precondition check of every source file. A file that checks defines QLT_SOURCE_FILE, the path
// that its assertions report, before it uses them.
#pragma once

#include <qlt/Runtime/Assert.h>

/// Reports `condition` with the given line when it does not hold, and goes on. The lines that
/// clients know their assertions by are part of the interface; they need not be those of the
/// source.
#define QLT_CHECK_LINE(condition, line)                                                            \
    ((condition) ? void() : ::qlt::ReportAssertion(L## #condition, QLT_SOURCE_FILE, (line)))

/// The same with the line where it stands, and for a condition that is known by another text.
#define QLT_CHECK(condition) QLT_CHECK_LINE(condition, __LINE__)
#define QLT_CHECK_TEXT(condition, text)                                                            \
    ((condition) ? void() : ::qlt::ReportAssertion((text), QLT_SOURCE_FILE, __LINE__))
