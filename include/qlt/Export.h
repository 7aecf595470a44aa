// Macros that say whether the library exports a name. Every public header uses them. No other file
// outside the wings may ask which system it is compiled for.
#pragma once

#if defined(QLT_STATIC)
#define QLT_API
#elif defined(_WIN32)
#if defined(QLT_BUILD)
#define QLT_API __declspec(dllexport)
#else
#define QLT_API __declspec(dllimport)
#endif
#else
#define QLT_API __attribute__((visibility("default")))
#endif

// Marks a private class inside an exported class. Without the mark the library would export both.
#if defined(_WIN32)
#define QLT_LOCAL
#else
#define QLT_LOCAL __attribute__((visibility("hidden")))
#endif

// Marks an inline function that the library exports as well. MSVC exports every inline member of an
// exported class. GCC and clang emit only the functions that are used, so the source file of the
// header defines QLT_EMIT_INLINE and emits all of them.
#if defined(QLT_EMIT_INLINE) && defined(__GNUC__) && defined(_WIN32) && !defined(QLT_STATIC)
#define QLT_INLINE __attribute__((used, dllexport)) inline
#elif defined(QLT_EMIT_INLINE) && defined(__GNUC__)
#define QLT_INLINE __attribute__((used)) inline
#else
#define QLT_INLINE inline
#endif

// Does the same for a free function. On Windows only the library itself may export one.
#if defined(_WIN32) && !defined(QLT_BUILD)
#define QLT_API_INLINE inline
#else
#define QLT_API_INLINE QLT_API QLT_INLINE
#endif
