#include <vex_common_core_mini/Convolution.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace vex::core {

namespace {

/// Values in the middle, where all @p taps factors meet a value: the compiler vectorises over k.
template <std::size_t taps>
void middle(const double *values, const double *factors, double *out, std::size_t count)
{
    for (std::size_t k = 0; k < count; ++k) {
        double sum = 0.0;
        for (std::size_t j = 0; j < taps; ++j)
            sum += factors[j] * values[k + taps - 1 - j];
        out[k] = sum;
    }
}

/// The sum for one position, whatever part of the factors reaches it.
double valueAt(const std::vector<double> &a, const std::vector<double> &b, std::size_t k)
{
    double sum = 0.0;
    const std::size_t first = k < a.size() ? 0 : k - a.size() + 1;
    for (std::size_t j = first; j < b.size() && j <= k; ++j)
        sum += b[j] * a[k - j];
    return sum;
}

} // namespace

bool convForReal(
    const std::vector<double> &a, const std::vector<double> &b, std::vector<double> &out)
{
    if (&out == &a || &out == &b) {
        std::vector<double> fresh;
        const bool isAny = convForReal(a, b, fresh);
        out.swap(fresh);
        return isAny;
    }
    out.clear();
    if (a.empty() || b.empty())
        return false;
    out.resize(a.size() + b.size() - 1);
    using Middle = void (*)(const double *, const double *, double *, std::size_t);
    constexpr Middle kMiddle[] = {middle<1>, middle<2>, middle<3>, middle<4>, middle<5>, middle<6>};
    std::size_t begin = 0;
    std::size_t end = 0; // of what kMiddle has done
    if (b.size() <= std::size(kMiddle) && a.size() >= b.size()) {
        begin = b.size() - 1;
        end = a.size();
        kMiddle[b.size() - 1](a.data(), b.data(), out.data() + begin, end - begin);
    }
    for (std::size_t k = 0; k < begin; ++k)
        out[k] = valueAt(a, b, k);
    for (std::size_t k = std::max(begin, end); k < out.size(); ++k)
        out[k] = valueAt(a, b, k);
    return true;
}

} // namespace vex::core
