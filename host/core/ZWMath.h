#pragma once

#include <cmath>
#include <limits>

// Rounding of the host's tools library: half away from zero.
inline double round(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

// Nearest integer, half away from zero, saturated to the range of int so
// that absurd geometry (a card a billion millimetres wide) stays defined.
inline int roundi(double value)
{
    if (std::isnan(value))
        return 0;
    const double r = std::round(value);
    if (r >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (r <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return static_cast<int>(r);
}
