#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Json.h"

#include <vex/InternalVersion.h>
#include <vex/SysInfoCreator.h>

#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// null for what is not known
QJsonValue textOrNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

/// The same for a number.
template <typename Number>
QJsonValue numberOrNull(std::optional<Number> number)
{
    return number ? QJsonValue(*number) : QJsonValue();
}

QJsonObject systemAsJson(const vex::SystemInfo &info)
{
    QJsonArray drives;
    for (const vex::SystemInfo::Drive &drive : info.drives)
        drives.append(QJsonObject{{u"name"_s, drive.name}, {u"type"_s, drive.type},
            {u"isSpaceAsked"_s, drive.isSpaceAsked},
            {u"totalBytes"_s, numberOrNull(drive.bytesTotal)},
            {u"freeBytes"_s, numberOrNull(drive.bytesFree)}});
    return {{u"operatingSystem"_s, textOrNull(info.osName)},
        {u"operatingSystemVersion"_s, textOrNull(info.osVersion)},
        {u"kernel"_s, textOrNull(info.kernel)}, {u"processor"_s, textOrNull(info.processor)},
        {u"logicalProcessors"_s, numberOrNull(info.logicalProcessors)},
        {u"architecture"_s, textOrNull(info.architecture)},
        {u"memoryTotalBytes"_s, numberOrNull(info.memoryBytesTotal)},
        {u"memoryFreeBytes"_s, numberOrNull(info.memoryBytesFree)}, {u"drives"_s, drives},
        {u"locale"_s, textOrNull(info.locale)}, {u"qtVersion"_s, textOrNull(info.qtVersion)}};
}

QJsonObject applicationAsJson(const vex::BuildInfoData &build)
{
    return {{u"version"_s, textOrNull(build.version)},
        {u"program"_s, textOrNull(vex::SysInfoCreator::programPath())},
        {u"builtFrom"_s, textOrNull(build.path)}, {u"branch"_s, textOrNull(build.branch)},
        {u"buildDate"_s, textOrNull(build.date)}, {u"buildTime"_s, textOrNull(build.time)},
        {u"libraryVersion"_s, vex::appInternalVersion().toString()}};
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Tells what support asks for first: the system, its processor, memory and drives, and where this program comes from."_s,
        {u"vex sysinfo"_s, u"vex sysinfo --json > report.json"_s},
        u"The name of the machine and that of its user are left out: in paths the home folder is "
        u"~, "
        "and a folder of the user's name is (user). The space of drives on servers and behind FUSE "
        "is not asked, since a dead server would never answer."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    if (!commandLine.positional().isEmpty())
        return usageFailure(commandLine.withHint(u"sysinfo takes no arguments"_s));
    using vex::SysInfoCreator;
    const vex::SystemInfo info = SysInfoCreator::systemInfo();
    const vex::BuildInfoData build = vex::buildInfo();
    if (commandLine.isJson())
        results->print(jsonText(
            {{u"system"_s, systemAsJson(info)}, {u"application"_s, applicationAsJson(build)}}));
    else
        results->print(
            (SysInfoCreator::systemText(info) + u'\n' + SysInfoCreator::applicationText(build))
                .toUtf8());
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kSysInfoCommand{
    "sysinfo"_L1, "the system and this program, for support"_L1, declare, run, false};

} // namespace vexcli
