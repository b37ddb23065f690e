#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QValueAxis;

namespace vexcli {

/// The smallest of 1, 2, 5, 10, ... that cuts @p length into at most @p parts pieces.
double niceStep(double length, int parts);

/// A range with a tick at every multiple of a step. The labels have the digits that it takes to
/// tell two ticks apart.
struct Scale
{
    Scale(double first, double last, double tickStep);

    double from;
    double to;
    double step;
    QList<double> ticks;
    QStringList labels; // one for each tick
};

/// A scale of about 10 ticks for a horizontal axis; of fewer where their labels are long.
Scale fittingScale(double from, double to);

/// An axis with the lines of @p scale and without any text.
QValueAxis *makeAxis(const Scale &scale);

} // namespace vexcli
