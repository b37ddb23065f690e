#pragma once

namespace bench {

/// Multiply-adds that one call of the functions below does.
inline constexpr long kMultiplyAdds = 100000;

/// As fast as registers allow: independent sums, multiplied and added separately, operands in the
/// nearest cache.
/// @param operands  40 values, aligned to 64 bytes
/// @return a value that depends on every product
double multiplyAddsBaseline(const double *operands);
/// The same with AVX2.
double multiplyAddsAvx2(const double *operands);

} // namespace bench
