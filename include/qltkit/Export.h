// QLTKIT_API exports a name from QueltaKit, as QLT_API of qlt/Export.h does for the core.
#pragma once

#include <qlt/Export.h>

#if defined(_WIN32)
#if defined(QLTKIT_BUILD)
#define QLTKIT_API __declspec(dllexport)
#else
#define QLTKIT_API __declspec(dllimport)
#endif
#else
#define QLTKIT_API __attribute__((visibility("default")))
#endif
