// Every function of the C interface uses these helpers. They turn exceptions into results and check
// arguments.
#pragma once

#include <qltkit/qltkit_c_api.h>

#include <filesystem>
#include <string>
#include <type_traits>

namespace qltkit
{

/// An argument that is null or outside its range. The text is the sentence for the caller.
struct ArgumentError
{
    std::string text;
};

/// Throws ArgumentError when `condition` is false.
inline void Require(bool condition, const char* text)
{
    if (!condition)
    {
        throw ArgumentError{text};
    }
}

/// Returns the object behind a pointer. Throws ArgumentError when the pointer is null.
template <typename Object>
Object& Required(Object* pointer, const char* text)
{
    Require(pointer != nullptr, text);
    return *pointer;
}

/// Stores the sentence about the current exception for this thread, and returns its result.
qltkit_Result ResultOfException() noexcept;

/// Runs the body of a function. The body returns nothing or a result.
template <typename Body>
qltkit_Result Guarded(const Body& body) noexcept
{
    try
    {
        if constexpr (std::is_void_v<decltype(body())>)
        {
            body();
            return QLTKIT_OK;
        }
        else
        {
            return body();
        }
    }
    catch (...)
    {
        return ResultOfException();
    }
}

/// Returns the path of a file whose name is given in UTF-8.
inline std::filesystem::path PathOf(const char* file)
{
    return std::filesystem::u8path(&Required(file, "the name of the file is null"));
}

} // namespace qltkit
