#include "output/Profile.h"

#include <algorithm>
#include <cmath>

namespace vexcli {

namespace {

constexpr double kSamples = 16.0; // to a width
constexpr double kReach = 2.0; // widths from a peak on which it is summed up; 1.5e-5 of it there

} // namespace

QList<QPointF> profileOf(QList<QPointF> peaks, double resolution)
{
    std::sort(peaks.begin(), peaks.end(),
        [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    // A grid on which the width is the same everywhere.
    const double step = std::log1p(1.0 / (kSamples * resolution));
    const double reach = kReach / resolution; // of x
    QList<double> positions;
    qint64 next = 0; // place on the grid; what is before it has been added
    for (qsizetype i = 0; i < peaks.size(); ++i) {
        const double centre = peaks[i].x();
        const auto begin = static_cast<qint64>(std::floor(std::log(centre * (1.0 - reach)) / step));
        const auto end = static_cast<qint64>(std::ceil(std::log(centre * (1.0 + reach)) / step));
        for (next = i == 0 ? begin : std::max(next, begin); next <= end; ++next)
            positions.append(std::exp(double(next) * step));
    }
    for (const QPointF &peak : std::as_const(peaks))
        positions.append(peak.x());
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());

    QList<QPointF> profile;
    qsizetype first = 0; // the first peak that reaches the sample
    for (const double x : std::as_const(positions)) {
        while (first < peaks.size() && peaks[first].x() * (1.0 + reach) < x)
            ++first;
        double height = 0.0;
        for (qsizetype i = first; i < peaks.size(); ++i) {
            const double centre = peaks[i].x();
            if (centre * (1.0 - reach) > x)
                break;
            const double distance = (x - centre) / centre * resolution; // in widths
            height += peaks[i].y() * std::exp(-4.0 * std::log(2.0) * distance * distance);
        }
        profile.append({x, height});
    }
    return profile;
}

} // namespace vexcli
