// The precondition checks of all source files. A file defines QLT_SOURCE_FILE, the path that its
// assertions report, before it uses them.
//
// Each macro turns its own argument into text. If it passed the argument to another macro first,
// the report would show the value of FLT_EPSILON instead of its name.
#pragma once

#include <qlt/Runtime/Assert.h>

/// Reports `text` when `condition` is false, and continues.
#define QLT_CHECK_AS(condition, text, line)                                                        \
    ((condition) ? void() : ::qlt::ReportAssertion((text), QLT_SOURCE_FILE, (line)))

/// Reports a fixed line, which may differ from the line in this source. Clients identify the
/// condition by it, so it is part of the interface.
#define QLT_CHECK_LINE(condition, line) QLT_CHECK_AS(condition, L## #condition, line)

/// Both report the line of the check in this source. QLT_CHECK_TEXT reports `text` instead of the
/// text of the condition.
#define QLT_CHECK(condition) QLT_CHECK_AS(condition, L## #condition, __LINE__)
#define QLT_CHECK_TEXT(condition, text) QLT_CHECK_AS(condition, text, __LINE__)
