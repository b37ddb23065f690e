#include "output/Plot.h"

#include "Failure.h"
#include "output/Text.h"
#include "platform/Files.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

// Seen from the program's own folder; empty in a build without charting libraries.
constexpr QLatin1StringView kModulePath(VEX_PLOT_MODULE);

// What the module and all that it links take, and one picture: 32 and 12 MiB were seen. The
// libraries below do not survive an allocation that fails, so that it is asked for beforehand.
constexpr std::size_t kRoomToLoad = std::size_t{64} << 20;
constexpr std::size_t kRoomToDraw = std::size_t{32} << 20;

PlotModule *loadedModule = nullptr;

bool hasRoom(std::size_t bytes)
{
    void *volatile room = std::malloc(bytes); // volatile: compilers leave out what nobody looks at
    const bool isThere = room != nullptr;
    std::free(room);
    return isThere;
}

vex::Error loadModule()
{
    const QString folder = programFolder();
    if (folder.isEmpty())
        return failure(u"cannot draw: the folder of the program itself is not known"_s);
    if (!hasRoom(kRoomToLoad))
        return failure(u"cannot draw: there is not enough memory"_s);
    // a whole path: a bare name would be looked up in other places
    const QString path = QDir::cleanPath(folder + u'/' + kModulePath);
    if (!QFileInfo::exists(path))
        return failure(u"cannot draw: %1 is missing"_s.arg(QDir::toNativeSeparators(path)));
    QLibrary module(path);
    const auto entry = reinterpret_cast<PlotEntry>(module.resolve(kPlotEntry));
    if (entry == nullptr)
        return failure(u"cannot draw: %1"_s.arg(module.errorString()));
    loadedModule = entry();
    return vex::ErrorCode::NoError;
}

PlotFormat formatOf(const QString &path)
{
    return path.endsWith(".svg"_L1, Qt::CaseInsensitive) ? PlotFormat::Svg : PlotFormat::Png;
}

/// The picture that @p draw makes.
template <typename Draw>
vex::Result<QByteArray> drawn(const QString &path, Draw draw)
{
    if (loadedModule == nullptr)
        return failure(u"cannot draw %1: nothing was loaded to draw with"_s.arg(path));
    QByteArray picture;
    if (hasRoom(kRoomToDraw))
        picture = draw();
    if (picture.isEmpty())
        return failure(u"cannot draw %1: there is not enough memory"_s.arg(path));
    return picture;
}

} // namespace

vex::Result<std::shared_ptr<QCoreApplication>> makeApplication(bool needsPlot)
{
    // Qt would take -platform, -style and others out of the arguments of the process.
    static int count = 1;
    static char name[] = "vex";
    static char *arguments[] = {name, nullptr};
    if (!needsPlot || kModulePath.isEmpty())
        return std::make_shared<QCoreApplication>(count, arguments);
    if (auto error = loadModule(); error.hasError())
        return passedOn(std::move(error));
    QString problem;
    auto *application = loadedModule->makeApplication(count, arguments, &problem);
    if (application == nullptr)
        return failure(u"cannot draw: %1"_s.arg(problem));
    return std::shared_ptr<QCoreApplication>(application);
}

vex::Error checkPlotPath(const QString &path)
{
    if (kModulePath.isEmpty())
        return failure(
            u"this build cannot draw: Qt Charts and Qt Svg were missing when it was made"_s);
    if (path.endsWith(".svg"_L1, Qt::CaseInsensitive)
        || path.endsWith(".png"_L1, Qt::CaseInsensitive))
        return vex::ErrorCode::NoError;
    return usageFailure(u"the plot '%1' must end in .svg or .png"_s.arg(path));
}

vex::Result<QByteArray> drawPatterns(const QString &path, const QString &title,
    const QList<PlottedPattern> &patterns, PlotStyle style)
{
    QList<PlottedPattern> shown = patterns;
    for (PlottedPattern &pattern : shown)
        pattern.label = shownText(pattern.label);
    return passedOn(drawn(path, [&] {
        return loadedModule->drawPatterns(formatOf(path), shownText(title), shown, style);
    }));
}

vex::Result<QByteArray> drawCurves(const QString &path, const QString &title, const QString &xTitle,
    const QList<PlottedPanel> &panels)
{
    QList<PlottedPanel> shown = panels;
    for (PlottedPanel &panel : shown) {
        panel.yTitle = shownText(panel.yTitle);
        for (PlottedCurve &curve : panel.curves)
            curve.label = shownText(curve.label);
        for (PlottedMark &mark : panel.marks)
            mark.label = shownText(mark.label);
    }
    return passedOn(drawn(path, [&] {
        return loadedModule->drawCurves(formatOf(path), shownText(title), shownText(xTitle), shown);
    }));
}

} // namespace vexcli
