// The precondition check of every source file. A file that checks defines QLT_SOURCE_FILE, the path
// that its assertions report, before it uses them.
//
// Each macro makes the text of its own argument: handed on to another macro first, FLT_EPSILON
// would be reported by its value.
#pragma once

#include <qlt/Runtime/Assert.h>

/// Reports `text` when `condition` does not hold, and goes on.
#define QLT_CHECK_AS(condition, text, line)                                                        \
    ((condition) ? void() : ::qlt::ReportAssertion((text), QLT_SOURCE_FILE, (line)))

/// The lines that clients know these conditions by are part of the interface; they need not be
/// those of the source.
#define QLT_CHECK_LINE(condition, line) QLT_CHECK_AS(condition, L## #condition, line)

/// The same with the line where it stands, and for a condition that is known by another text.
#define QLT_CHECK(condition) QLT_CHECK_AS(condition, L## #condition, __LINE__)
#define QLT_CHECK_TEXT(condition, text) QLT_CHECK_AS(condition, text, __LINE__)
