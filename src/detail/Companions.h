#pragma once

#include "detail/Lists.h"

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

    void evaluate(const double *x, const QPointF *const *, const QPointF *const *, double *ya,
        double *yb, qsizetype count) const
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

/// What gives the values of two ascending signals where it is known between which samples a
/// position lies: the companion's own class where it has one, so that the rule is always the
/// companion's.
template <typename Plot>
struct PairValuesOf
{
    using Type = PointByPoint<Plot>;
};
template <typename Plot>
requires requires
{
    typename Plot::PairValues;
}
struct PairValuesOf<Plot>
{
    using Type = typename Plot::PairValues;
};

/// The area under a signal from @p start to @p end.
template <typename Plot>
double areaOf(const Plot &plot, double start, double end)
{
    // the companion's name for the only method is its own
    constexpr auto method = typename Plot::ComputeAreaMethod(0);
    return plot.computeAreaNoUnitConversion(start, end, false, method);
}

/// Adds up the area under points that come some at a time by keeping all of them.
template <typename Plot>
class StoredArea
{
public:
    /// @param most  as many points as there can be
    explicit StoredArea(qsizetype most) { m_plot.points() = listWithRoom<QPointF>(most); }

    void add(const double *x, const double *y, qsizetype count)
    {
        for (qsizetype i = 0; i < count; ++i)
            m_plot.points().append(QPointF(x[i], y[i]));
    }

    double area() const
    {
        const auto &points = m_plot.points();
        return points.isEmpty() ? 0.0
                                : areaOf(m_plot, points.constFirst().x(), points.constLast().x());
    }

private:
    Plot m_plot;
};

/// What adds up the area under at most @p most finite points of ascending x: the companion's own
/// class where it has one, which keeps none of them.
template <typename Plot>
auto areaSumOf(qsizetype most)
{
    if constexpr (requires { typename Plot::AreaSum; })
        return typename Plot::AreaSum();
    else
        return StoredArea<Plot>(most);
}

} // namespace vex::detail
