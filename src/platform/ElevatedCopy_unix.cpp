#include "platform/ElevatedCopy.h"

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <algorithm>
#include <iterator>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

// Where the helper is installed. Nothing else decides which program gets the rights of root: no
// variable, no setting, no current folder. Whoever installs elsewhere configures that prefix.
constexpr const char *kHelpers[] = {VEX_COPIER_PATH, "/usr/libexec/vex/Vex-File-Copier"};

QString helperPath()
{
    const auto *found = std::find_if(std::begin(kHelpers), std::end(kHelpers),
        [](const char *path) { return access(path, X_OK) == 0; });
    return QString::fromUtf8(found == std::end(kHelpers) ? kHelpers[0] : *found);
}

} // namespace

QString elevatedCopyPattern()
{
    return u"--source=%1%3--destination=%2"_s.replace("%3"_L1, QString(QChar::Null));
}

ElevatedCopy runElevatedCopy(const QString &parameters)
{
    const QString helper = helperPath();
    QStringList command = parameters.split(QChar::Null);
    QProcess process;
    command.prepend(helper);
    if (geteuid() == 0) {
        // left over when this program was itself started by pkexec: it would read as that user
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"PKEXEC_UID"_s);
        process.setProcessEnvironment(environment);
    } else {
        // its own agent would ask on the terminal
        command = QStringList{u"pkexec"_s, u"--disable-internal-agent"_s} + command;
    }
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(command.takeFirst(), command, QIODevice::ReadOnly);
    const bool isFinished = process.waitForFinished(-1);
    QString said = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    if (!isFinished)
        return {{}, u"%1: %2"_s.arg(process.program(), process.errorString())};
    if (process.exitStatus() != QProcess::NormalExit)
        return {{}, said};
    return {static_cast<quint32>(process.exitCode()), said};
}

} // namespace vex::detail
