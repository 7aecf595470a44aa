// Text in the manner of std::printf.
#pragma once

#include <cstdio>
#include <string>

namespace qltkit
{

/// The result has at most 255 characters.
template <typename... Values>
std::string Format(const char* format, Values... values)
{
    char text[256] = {};
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

} // namespace qltkit
