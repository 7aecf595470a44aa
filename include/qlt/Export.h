// What every public header needs to know about the compiler and the system: how a name leaves the
// library. The only file outside the wings that may ask which system it is compiled for.
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

// A private class nested in an exported one, which would otherwise leave the library with it.
#if defined(_WIN32)
#define QLT_LOCAL
#else
#define QLT_LOCAL __attribute__((visibility("hidden")))
#endif

// An inline function that the library exports as well. MSVC does so with every inline member of an
// exported class by itself; GCC and clang emit only what is used, so the one source file that
// stands behind the header asks for all of them with QLT_EMIT_INLINE.
#if defined(QLT_EMIT_INLINE) && defined(__GNUC__) && defined(_WIN32) && !defined(QLT_STATIC)
#define QLT_INLINE __attribute__((used, dllexport)) inline
#elif defined(QLT_EMIT_INLINE) && defined(__GNUC__)
#define QLT_INLINE __attribute__((used)) inline
#else
#define QLT_INLINE inline
#endif

// The same for a free function, which only the library itself may mark on Windows.
#if defined(_WIN32) && !defined(QLT_BUILD)
#define QLT_API_INLINE inline
#else
#define QLT_API_INLINE QLT_API QLT_INLINE
#endif
