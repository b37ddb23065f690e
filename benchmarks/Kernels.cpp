#include "Kernels.h"

#include "Harness.h"
#include "MultiplyAddLimit.h"

#include <benchmark/benchmark.h>

#include <array>

namespace bench {

namespace {

const Registration registration([] {
    for (const KernelCase &kernel : kernels()) {
        benchmark::RegisterBenchmark(
            ("limit/" + kernel.name).c_str(), [=](benchmark::State &state) {
                alignas(64) std::array<double, 40> operands;
                operands.fill(1e-9);
                for (auto _ : state) {
                    benchmark::DoNotOptimize(operands.data());
                    benchmark::DoNotOptimize(kernel.limit(operands.data()));
                }
            });
    }
});

} // namespace

std::vector<KernelCase> kernels()
{
    std::vector<KernelCase> all{
        {"sse2", vex::detail::convolveBaseline, multiplyAddsBaseline, false}};
#if defined(VEX_HAVE_AVX2_KERNEL)
    if (vex::detail::fastestKernel() == vex::detail::convolveAvx2)
        all.push_back({"avx2", vex::detail::convolveAvx2, multiplyAddsAvx2, true});
#endif
    return all;
}

void compareWithLimit(
    const std::string &name, const KernelCase &kernel, double multiplyAdds, double floor)
{
    compare({name + ", share of the limit", "limit/" + kernel.name, name, floor,
        multiplyAdds / static_cast<double>(kMultiplyAdds)});
}

} // namespace bench
