#include "CrashReport.h"

#include "output/Text.h"
#include "platform/ReportFile.h"
#include "platform/Terminal.h"

#include <vex/BuildInfoData.h>
#include <vex/CommandLineKeys.h>
#include <vex/CrashHandler.h>
#include <vex/CrashPad.h>
#include <vex/InternalVersion.h>
#include <vex/SysInfoCreator.h>

#include <QCoreApplication>

#include <array>
#include <chrono>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr std::chrono::seconds kReportLimit(2);

/// All that a report needs and a crash may no longer make. Never destroyed.
struct Prepared
{
    QByteArray folder; // for the system
    QByteArray folderShown;
    QByteArray version;
    QByteArray parameters;
};
Prepared *prepared = nullptr;

/// "vex-2026-01-31T23-59-59Z-4711.txt", in UTC
std::array<char, 64> reportName()
{
    using namespace std::chrono;
    const auto now = floor<seconds>(system_clock::now());
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss time(now - day);
    std::array<char, 64> name = {};
    std::snprintf(name.data(), name.size(), "vex-%04d-%02u-%02uT%02d-%02d-%02dZ-%llu.txt",
        int(date.year()), unsigned(date.month()), unsigned(date.day()), int(time.hours().count()),
        int(time.minutes().count()), int(time.seconds().count()),
        static_cast<unsigned long long>(processNumber()));
    return name;
}

void say(std::initializer_list<QByteArrayView> texts)
{
    for (const QByteArrayView text : texts)
        writeError(text);
}

/// What anybody needs who looks into the crash; nothing here allocates.
void writeCrash(ReportFile *file, QByteArrayView crash)
{
    for (const QByteArrayView text : {QByteArrayView("Crash: "), crash,
             QByteArrayView("\nVersion: "), QByteArrayView(prepared->version),
             QByteArrayView("\nParameters: "), QByteArrayView(prepared->parameters),
             QByteArrayView("\n\n"), CrashHandler::backtraceText()})
        file->write(text);
}

/// Runs in the thread that has crashed. What can fail in damaged memory comes last.
void writeReport(EXCEPTION_POINTERS *pointers)
{
    restoreTerminal();
    const auto name = reportName();
    const QByteArrayView crash = crashDescription(pointers);
    say({"vex: the program has crashed (", crash, "); "});
    ReportFile file;
    if (const char *reason = file.create(prepared->folder, name.data())) {
        say({"no report can be written to ", prepared->folderShown, ": ", reason, "\n",
            CrashHandler::backtraceText()});
        return;
    }
    writeCrash(&file, crash);
    if (file.problem()) {
        say({"the report ", prepared->folderShown, "/", name.data(),
            " could not be written whole: ", file.problem(), "\n", CrashHandler::backtraceText()});
        return;
    }
    say({"the report is ", prepared->folderShown, "/", name.data(), "\n"});
    file.write("\n");
    file.write(vex::SysInfoCreator::applicationText(vex::buildInfo()).toUtf8());
    file.write("\n");
    file.write(vex::SysInfoCreator::systemText(vex::SysInfoCreator::systemInfo()).toUtf8());
}

} // namespace

void catchCrashes(const QStringList &arguments)
{
    const qsizetype end = arguments.indexOf(u"--"_s);
    const QStringList options = arguments.first(end < 0 ? arguments.size() : end);
    if (options.contains("--"_L1 + vex::kdisable_crash_handler)) {
        CrashHandler::disableCrashHandler();
        return;
    }
    QCoreApplication::setApplicationName(u"vex"_s);
    const QString folder = CrashPad::reportsDirPath();
    prepared = new Prepared{preparedPath(folder), shownText(folder).toUtf8(),
        vex::appInternalVersion().toString().toUtf8(), "(not read yet)"};
    CrashHandler::setReceiverTimeLimit(kReportLimit);
    QObject::connect(CrashHandler::instance(), &CrashHandler::crashDetected, writeReport);
}

void setReportedParameters(const QStringList &parameters)
{
    if (prepared)
        prepared->parameters = shownText(parameters.join(u' ')).toUtf8();
}

} // namespace vexcli
