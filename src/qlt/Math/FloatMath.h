// Trigonometry in single precision with the same bits on every system. Each function rounds the
// result of the double function once, because the float functions of the C libraries differ in the
// last bit for some inputs.
#pragma once

#include <cmath>

namespace qlt
{

inline float Sin(float x) { return static_cast<float>(std::sin(static_cast<double>(x))); }

inline float Cos(float x) { return static_cast<float>(std::cos(static_cast<double>(x))); }

inline float Tan(float x) { return static_cast<float>(std::tan(static_cast<double>(x))); }

inline float Acos(float x) { return static_cast<float>(std::acos(static_cast<double>(x))); }

inline float Atan(float x) { return static_cast<float>(std::atan(static_cast<double>(x))); }

inline float Atan2(float y, float x)
{
    return static_cast<float>(std::atan2(static_cast<double>(y), static_cast<double>(x)));
}

} // namespace qlt
