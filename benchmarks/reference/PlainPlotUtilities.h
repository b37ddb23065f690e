#pragma once

#include <vex/PlotBase.h>

#include <QList>

#include <algorithm>
#include <cmath>
#include <optional>

/// Comparing signals written out step by step: what the library's answers and times are compared
/// with. Failures are empty.
namespace plain {

using Positions = QList<double>;
using MaybePositions = std::optional<Positions>;
using vex::PlotBase;

/// Ascending, NaN last.
inline bool isBefore(double p, double q)
{
    return p < q || (std::isnan(q) && !std::isnan(p));
}

inline std::optional<double> guessSamplingInterval(const PlotBase &plot)
{
    const QList<QPointF> &points = plot.points();
    if (points.size() < 2)
        return {};
    Positions gaps;
    for (qsizetype i = 1; i < points.size(); ++i)
        gaps.append(std::fabs(points[i].x() - points[i - 1].x()));
    std::sort(gaps.begin(), gaps.end(), isBefore);
    return gaps[(points.size() - 1) / 2];
}

inline void removeCloseValues(Positions *values, double tolerance)
{
    if (values->isEmpty())
        return;
    Positions kept{values->constFirst()};
    for (qsizetype i = 1; i < values->size(); ++i) {
        if (!(std::fabs(values->at(i) - kept.constLast()) < tolerance))
            kept.append(values->at(i));
    }
    *values = kept;
}

inline MaybePositions mergeDomains(const PlotBase &a, const PlotBase &b)
{
    const QList<QPointF> &p = a.points();
    const QList<QPointF> &q = b.points();
    Positions list;
    for (const QPointF &point : p)
        list.append(point.x());
    for (const QPointF &point : q)
        list.append(point.x());
    if (p.isEmpty() || q.isEmpty())
        return list;
    if (p.size() == 1 && q.size() == 1) {
        list.append((q.first().x() + p.first().x()) * 0.5);
    } else if (std::fabs(p.first().y()) > 1e-12 || std::fabs(p.last().y()) > 1e-12
        || std::fabs(q.first().y()) > 1e-12 || std::fabs(q.last().y()) > 1e-12) {
        const double low = std::min(p.first().x(), q.first().x());
        const double high = std::max(p.last().x(), q.last().x());
        const auto dx = guessSamplingInterval(p.size() > q.size() ? a : b);
        if (!dx)
            return {};
        for (const double v :
            {p.first().x() - *dx, p.last().x() + *dx, q.first().x() - *dx, q.last().x() + *dx})
            list.append(std::max(std::min(v, high), low));
    }
    std::sort(list.begin(), list.end(), isBefore);
    removeCloseValues(&list, 1e-6);
    return list;
}

inline PlotBase abs(const PlotBase &plot)
{
    PlotBase result;
    for (const QPointF &point : plot.points())
        result.points().append(QPointF(point.x(), std::fabs(point.y())));
    return result;
}

inline std::optional<PlotBase> subtract(const PlotBase &a, const PlotBase &b)
{
    const MaybePositions domain = mergeDomains(a, b);
    if (!domain)
        return {};
    PlotBase result;
    for (const double x : *domain)
        result.points().append(QPointF(x, a.evaluate(x, 1, 0) - b.evaluate(x, 1, 0)));
    return result;
}

inline std::optional<double> relativeAreaOfError(const PlotBase &a, const PlotBase &b)
{
    const auto difference = subtract(a, b);
    if (!difference)
        return {};
    const PlotBase d = abs(*difference);
    if (d.points().size() < 2)
        return 0.0;
    const auto area = [&d](const PlotBase &plot) {
        return plot.computeAreaNoUnitConversion(
            d.points().first().x(), d.points().last().x(), false, PlotBase::Trapezoid);
    };
    const double areaA = area(abs(a));
    const double areaB = area(abs(b));
    if (std::fabs(areaA) > 1e-12 && std::fabs(areaB) > 1e-12)
        return area(d) / std::min(areaA, areaB);
    if (std::fabs(areaA) <= 1e-12 && std::fabs(areaB) <= 1e-12)
        return 0.0;
    return area(d) / std::max(areaA, areaB);
}

inline double correlation(const Positions &x, const Positions &y)
{
    if (x.isEmpty())
        return 0.0;
    const auto n = static_cast<double>(x.size());
    double meanX = 0.0;
    for (const double value : x)
        meanX += value;
    meanX /= n;
    double meanY = 0.0;
    for (const double value : y)
        meanY += value;
    meanY /= n;
    double sxy = 0.0;
    double sxx = 0.0;
    double syy = 0.0;
    for (qsizetype i = 0; i < x.size(); ++i) {
        sxy += (x[i] - meanX) * (y[i] - meanY);
        sxx += (x[i] - meanX) * (x[i] - meanX);
        syy += (y[i] - meanY) * (y[i] - meanY);
    }
    if (std::fabs(sxx) <= 1e-12 || std::fabs(syy) <= 1e-12)
        return 0.0;
    return sxy / std::sqrt(sxx * syy);
}

inline std::optional<double> pearsonsCorrelation(const PlotBase &a, const PlotBase &b)
{
    const MaybePositions domain = mergeDomains(a, b);
    if (!domain)
        return {};
    Positions ya;
    Positions yb;
    for (const double x : *domain) {
        ya.append(a.evaluate(x, 1, 0));
        yb.append(b.evaluate(x, 1, 0));
    }
    return correlation(ya, yb);
}

inline bool isZeroPlot(const PlotBase &plot)
{
    for (const QPointF &point : plot.points()) {
        if (std::fabs(point.y()) > 1e-12)
            return false;
    }
    return true;
}

inline std::optional<bool> plotSame(
    const PlotBase &a, const PlotBase &b, double maxRelativeArea, double minCorrelation)
{
    if (isZeroPlot(a) != isZeroPlot(b))
        return false;
    if (isZeroPlot(a))
        return true;
    const auto area = relativeAreaOfError(a, b);
    if (!area)
        return {};
    if (*area > maxRelativeArea)
        return false;
    const auto correlation = pearsonsCorrelation(a, b);
    if (!correlation)
        return {};
    return !(minCorrelation > *correlation);
}

} // namespace plain
