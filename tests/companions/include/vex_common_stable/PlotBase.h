#pragma once

#include <QList>
#include <QPointF>

#include <algorithm>

namespace vex {

/// A signal by other rules than the stand-in's: from each sample on to the next one it stays as
/// high as there, and nothing is offered for many positions.
class PlotBase
{
public:
    enum ComputeAreaMethod {
        Steps
    };

    virtual ~PlotBase() = default;
    PlotBase() = default;
    PlotBase(const PlotBase &) = default;
    PlotBase &operator=(const PlotBase &) = default;

    QList<QPointF> &points() { return m_points; }
    const QList<QPointF> &points() const { return m_points; }

    double evaluate(double x, int, int) const
    {
        double y = 0.0;
        for (const QPointF &point : m_points)
            y = point.x() <= x ? point.y() : y;
        return y;
    }

    double computeAreaNoUnitConversion(double start, double end, bool, ComputeAreaMethod) const
    {
        double area = 0.0;
        for (qsizetype i = 0; i < m_points.size(); ++i) {
            const double next = i + 1 < m_points.size() ? m_points[i + 1].x() : end;
            area += m_points[i].y() * (std::min(next, end) - std::max(m_points[i].x(), start));
        }
        return area;
    }

    QPointF getMaxTimeIntensity(double, double) const { return {7.0, 1.0}; }

private:
    QList<QPointF> m_points;
};

} // namespace vex
