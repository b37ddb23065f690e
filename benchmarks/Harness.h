#pragma once

#include <functional>
#include <string>

namespace bench {

/// The counter of a benchmark whose iteration does the same to so many items. Its time is that of
/// one.
constexpr const char *kItems = "items";

/// A row of the summary: how much faster @p fast is than @p slow.
///
/// Both are names of benchmarks; the medians of their times in this run are compared.
struct Comparison
{
    std::string name;
    std::string slow;
    std::string fast;
    double floor; ///< smallest acceptable ratio
    double factor = 1.0; ///< the ratio is slow / fast times this
};

/// Adds a row to the summary.
void compare(const Comparison &comparison);

/// Ends the process with a message when @p isEqual is false: a fast wrong answer is worth nothing.
void requireEqual(bool isEqual, const std::string &what);

/// Adds benchmarks and comparisons when the program starts.
struct Registration
{
    explicit Registration(std::function<void()> add);
};

} // namespace bench
