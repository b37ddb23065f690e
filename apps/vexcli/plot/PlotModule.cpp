#include "plot/PlotModule.h"

#include "plot/Charts.h"

#include <QApplication>
#include <QPluginLoader>
#include <QProcessEnvironment>

#include <cstdio>
#include <cstdlib>
#include <new>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// A picture, or none when memory runs out on the way.
template <typename Draw>
QByteArray withinMemory(Draw draw)
{
    try {
        return draw();
    } catch (const std::bad_alloc &) {
        return {};
    }
}

/// No setting of Qt for desktops changes a picture or ends the program: not which platform, theme
/// or style, not where plug-ins are, no scale. What Qt logs stays the user's choice.
void ignoreDesktopSettings()
{
    const QStringList names = QProcessEnvironment::systemEnvironment().keys();
    for (const QString &name : names) {
        const bool isLog = name.startsWith("QT_LOGGING"_L1) || name == "QT_MESSAGE_PATTERN"_L1
            || name == "QT_FORCE_STDERR_LOGGING"_L1;
        if (name.startsWith("QT_"_L1) && !isLog)
            qunsetenv(name.toLocal8Bit().constData());
    }
    qputenv("QT_QPA_PLATFORM", "offscreen"); // draws without a display
    qputenv("QT_NO_GLIB", "1"); // which ends the process when memory runs out
}

/// What Qt warns of while it starts (no runtime folder) concerns desktops; where it cannot go on it
/// would abort.
void passOnFailures(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "vex: %s\n", qUtf8Printable(text));
    if (type == QtFatalMsg)
        std::_Exit(EXIT_FAILURE);
}

class ChartingModule final : public PlotModule
{
public:
    QCoreApplication *makeApplication(int &argc, char **argv, QString *problem) override
    {
        ignoreDesktopSettings();
        // Qt ends the process where this is missing.
        QPluginLoader platform(u"platforms/qoffscreen"_s);
        if (!platform.load()) {
            *problem = u"Qt's plug-in 'offscreen': %1"_s.arg(platform.errorString());
            return nullptr;
        }
        const QtMessageHandler usual = qInstallMessageHandler(passOnFailures);
        QCoreApplication *application = nullptr;
        try {
            application = new QApplication(argc, argv);
        } catch (const std::bad_alloc &) {
            *problem = u"there is not enough memory"_s;
        }
        qInstallMessageHandler(usual);
        return application;
    }

    QByteArray drawPatterns(PlotFormat format, const QString &title,
        const QList<PlottedPattern> &patterns, PlotStyle style) override
    {
        return withinMemory([&] { return pictureOf(format, title, patterns, style); });
    }

    QByteArray drawCurves(PlotFormat format, const QString &title, const QString &xTitle,
        const QList<PlottedPanel> &panels) override
    {
        return withinMemory([&] { return pictureOf(format, title, xTitle, panels); });
    }
};

} // namespace

} // namespace vexcli

extern "C" Q_DECL_EXPORT vexcli::PlotModule *vexPlotModule()
{
    static vexcli::ChartingModule module;
    return &module;
}
