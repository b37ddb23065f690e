// Compiled once for each instruction set, as the function VEX_LIMIT.
#include "MultiplyAddLimit.h"

#include <experimental/simd>

namespace bench {

double VEX_LIMIT(const double *operands)
{
    using Vector = std::experimental::native_simd<double>;
    constexpr int kWidth = static_cast<int>(Vector::size());
    constexpr int kChains = 10; // hides the latency of an addition and leaves room in 16 registers
    Vector sums[kChains];
    for (Vector &sum : sums)
        sum = 0.0;
    for (long done = 0; done < kMultiplyAdds; done += kChains * kWidth) {
        // a new factor each time, so that no product can be kept
        const Vector factor = operands[done % 32];
#pragma GCC unroll 16
        for (int chain = 0; chain < kChains; ++chain) {
            const Vector operand(operands + chain * kWidth, std::experimental::vector_aligned);
            sums[chain] += factor * operand;
        }
    }
    double result = 0.0;
    for (const Vector &sum : sums)
        result += std::experimental::reduce(sum);
    return result;
}

} // namespace bench
