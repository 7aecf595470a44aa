// How a name leaves QueltaKit: the kit's counterpart of qlt/Export.h.
#pragma once

#include <qlt/Export.h>

#if defined(QLTKIT_STATIC)
#define QLTKIT_API
#elif defined(_WIN32)
#if defined(QLTKIT_BUILD)
#define QLTKIT_API __declspec(dllexport)
#else
#define QLTKIT_API __declspec(dllimport)
#endif
#else
#define QLTKIT_API __attribute__((visibility("default")))
#endif
