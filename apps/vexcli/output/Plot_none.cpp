#include "output/Plot.h"

#include "Failure.h"

using namespace Qt::StringLiterals;

namespace vexcli {

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv, bool)
{
    return std::make_unique<QCoreApplication>(argc, argv);
}

vex::Error checkPlotPath(const QString &)
{
    return failure(u"this build cannot draw: Qt Charts and Qt Svg were missing when it was made"_s);
}

vex::Result<QByteArray> drawPatterns(
    const QString &path, const QString &, const QList<PlottedPattern> &, PlotStyle)
{
    return passedOn(checkPlotPath(path));
}

vex::Result<QByteArray> drawCurves(
    const QString &path, const QString &, const QString &, const QList<PlottedPanel> &)
{
    return passedOn(checkPlotPath(path));
}

} // namespace vexcli
