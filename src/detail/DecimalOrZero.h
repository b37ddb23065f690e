#pragma once

#include <limits>

namespace vex::detail {

/// @p text as a decimal integer, with blanks around it and a sign if it has them; 0 for anything
/// else and for what an int does not hold. Allocates nothing.
constexpr int decimalOrZero(const char *text)
{
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (isBlank(*text))
        ++text;
    const bool isNegative = *text == '-';
    if (*text == '-' || *text == '+')
        ++text;
    if (*text < '0' || *text > '9')
        return 0;
    constexpr long long kMost = std::numeric_limits<int>::max();
    long long value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        value = value * 10 + (*text - '0');
        if (value > kMost + (isNegative ? 1 : 0))
            return 0;
    }
    while (isBlank(*text))
        ++text;
    return *text == '\0' ? static_cast<int>(isNegative ? -value : value) : 0;
}

} // namespace vex::detail
