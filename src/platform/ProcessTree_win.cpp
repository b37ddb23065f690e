#include "platform/ProcessTree.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>

#include <array>
#include <string>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

QString systemFolder()
{
    std::array<wchar_t, MAX_PATH> path = {};
    const UINT length = GetSystemDirectoryW(path.data(), MAX_PATH);
    return QString::fromWCharArray(path.data(), length < MAX_PATH ? int(length) : 0);
}

/// The search of the system would take one from the current folder before its own.
std::wstring taskkillPath()
{
    const QString path = QStandardPaths::findExecutable(
        u"taskkill.exe"_s, {QCoreApplication::applicationDirPath(), systemFolder()});
    return QDir::toNativeSeparators(path).toStdWString();
}

} // namespace

std::optional<QString> endProcessTree(qint64 id)
{
    const std::wstring taskkill = taskkillPath();
    if (taskkill.empty())
        return {};
    std::wstring command = u"taskkill /T /F /pid %1"_s.arg(id).toStdWString();
    QProcess process;
    process.setProgram(u"taskkill"_s);
    process.setCreateProcessArgumentsModifier([&](QProcess::CreateProcessArguments *call) {
        call->applicationName = taskkill.c_str();
        call->arguments = command.data(); // Qt's own has one blank more
    });
    process.start();
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0)
        return {};
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

} // namespace vex::detail
