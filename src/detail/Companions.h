#pragma once

// What the sources use of the companion libraries, errors and results aside.
#include <vex_common_core_mini/Convolution.h>
#include <vex_common_core_mini/CsvWriter.h>
#include <vex_common_stable/Drives.h>
#include <vex_common_stable/FileUtils.h>
#include <vex_common_stable/JsonUtils.h>
#include <vex_common_stable/PlotBase.h>

#include <QtGlobal>

namespace vex::detail {

/// Gives the values of two signals by one call of evaluate() for each.
template <typename Plot>
class PointByPoint
{
public:
    PointByPoint(const Plot &a, const Plot &b)
        : m_a(a)
        , m_b(b)
    {
    }

    void evaluate(const double *x, double *ya, double *yb, qsizetype count)
    {
        for (qsizetype i = 0; i < count; ++i) {
            ya[i] = m_a.evaluate(x[i], 1, 0);
            yb[i] = m_b.evaluate(x[i], 1, 0);
        }
    }

private:
    const Plot &m_a;
    const Plot &m_b;
};

/// What gives the values of two ascending signals at ascending positions: the companion's own
/// cursor where it has one, so that the rule is always the companion's.
template <typename Plot>
struct PairCursorOf
{
    using Type = PointByPoint<Plot>;
};
template <typename Plot>
requires requires
{
    typename Plot::PairCursor;
}
struct PairCursorOf<Plot>
{
    using Type = typename Plot::PairCursor;
};

} // namespace vex::detail
