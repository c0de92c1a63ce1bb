#pragma once

#include <limits>

// "Not set / no data": the smallest positive normal double. Compared exactly.
inline constexpr double ZW_NO_VALUE = std::numeric_limits<double>::min();

inline bool IsNoValue(double value)
{
    return value == ZW_NO_VALUE;
}
