#include "plot/Axes.h"

#include <QPen>
#include <QValueAxis>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr int kShortLabel = 7; // characters, that need no exponent
constexpr qsizetype kRowLength = 77; // characters of all labels in a row
constexpr double kRoundings = 1e-9; // relative, of a step

int powerOf(double number)
{
    return static_cast<int>(std::floor(std::log10(number) + kRoundings));
}

/// The longest label of a scale, characters.
qsizetype longestLabel(const Scale &scale)
{
    qsizetype longest = 0;
    for (const QString &label : scale.labels)
        longest = std::max(longest, label.size());
    return longest;
}

} // namespace

double niceStep(double length, int parts)
{
    const double power = std::pow(10.0, powerOf(length / parts));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (length / (factor * power) <= parts * (1.0 + kRoundings))
            return factor * power;
    }
    return 10.0 * power;
}

Scale::Scale(double first, double last, double tickStep)
    : from(first)
    , to(last)
    , step(tickStep)
{
    const int largest = powerOf(std::max({std::fabs(from), std::fabs(to), step}));
    const int decimals = std::max(0, -powerOf(step));
    const int digits = std::max(0, largest - powerOf(step)); // behind the point, with an exponent
    const int plainLength = std::max(0, largest) + 1 + (decimals > 0 ? decimals + 1 : 0);
    const int exponentLength = 1 + (digits > 0 ? digits + 1 : 0) + 4;
    const bool isPlain = plainLength <= std::max(kShortLabel, exponentLength);
    const double end = std::floor(to / step + kRoundings);
    for (double i = std::ceil(from / step - kRoundings); i <= end; ++i) {
        const double value = i == 0.0 ? 0.0 : i * step; // never -0
        ticks.append(value);
        labels.append(isPlain  ? QString::number(value, 'f', decimals)
                : value == 0.0 ? u"0"_s
                               : QString::number(value, 'e', digits));
    }
}

Scale fittingScale(double from, double to)
{
    for (int parts = 10;; --parts) {
        Scale scale(from, to, niceStep(to - from, parts));
        if (parts == 2 || scale.labels.size() * longestLabel(scale) <= kRowLength)
            return scale;
    }
}

QValueAxis *makeAxis(const Scale &scale)
{
    auto *axis = new QValueAxis;
    axis->setRange(scale.from, scale.to + kRoundings * scale.step); // a tick may stand at the end
    axis->setTickType(QValueAxis::TicksDynamic);
    axis->setTickAnchor(scale.ticks.value(0)); // near, where numbers are still exact
    axis->setTickInterval(scale.step);
    axis->setLabelsVisible(false);
    axis->setLinePen(QPen(Qt::black, 1.0));
    axis->setGridLineColor(QColor(0xe0, 0xe0, 0xe0));
    return axis;
}

} // namespace vexcli
