#include "commands/CommandLine.h"

#include "Failure.h"

#include <vex/CommandLineKeys.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

struct Severity
{
    QLatin1StringView name;
    QtMsgType type;
};

constexpr std::array kSeverities{
    Severity{"debug"_L1, QtDebugMsg},
    Severity{"info"_L1, QtInfoMsg},
    Severity{"warning"_L1, QtWarningMsg},
    Severity{"critical"_L1, QtCriticalMsg},
};

/// Position in kSeverities; fatal messages rank with critical ones.
std::size_t rankOf(QtMsgType type)
{
    const auto found = std::find_if(kSeverities.begin(), kSeverities.end(),
        [type](const Severity &severity) { return severity.type == type; });
    return std::min<std::size_t>(
        static_cast<std::size_t>(found - kSeverities.begin()), kSeverities.size() - 1);
}

std::size_t lowestRank = 2; // warnings and worse
std::unique_ptr<QFile> logFile;

/// @p text with line ends between words, so that no line is longer than a terminal is wide.
QString wrapped(const QString &text)
{
    constexpr qsizetype kWidth = 79;
    QString result;
    qsizetype used = 0; // of the last line
    for (const QString &word : text.split(u' ')) {
        if (used > 0 && used + 1 + word.size() > kWidth) {
            result += u'\n';
            used = 0;
        } else if (used > 0) {
            result += u' ';
            ++used;
        }
        result += word;
        used += word.size();
    }
    return result;
}

void handleMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    const std::size_t rank = rankOf(type);
    if (rank < lowestRank)
        return;
    const QString line = "%1: %2\n"_L1.arg(kSeverities[rank].name, text);
    std::fprintf(stderr, "vex: %s", qUtf8Printable(line));
    if (logFile) {
        logFile->write(
            (QDateTime::currentDateTime().toString(Qt::ISODateWithMs) + u' ' + line).toUtf8());
        logFile->flush();
    }
}

} // namespace

CommandLine::CommandLine(const QString &command, const QString &summary)
    : m_command(command)
{
    m_parser.setApplicationDescription(wrapped(summary));
    m_parser.addOption({{u"h"_s, u"help"_s}, u"Shows this help and ends."_s});
    m_parser.addOption({u"json"_s, u"Prints JSON for machines instead of tables."_s});
    m_parser.addOption({u"trace"_s, u"Prints every place that an error passed."_s});
    m_parser.addOption({vex::klog, u"Appends messages to FILE as well."_s, u"FILE"_s});
    m_parser.addOption({vex::klog_severity,
        u"Lowest severity of messages shown: debug, info, warning (default) or critical."_s,
        u"SEVERITY"_s});
}

void CommandLine::addPositional(
    const QString &name, const QString &description, const QString &syntax)
{
    m_parser.addPositionalArgument(name, description, syntax);
}

void CommandLine::addOption(
    const QStringList &names, const QString &description, const QString &valueName)
{
    m_parser.addOption({names, description, valueName});
}

void CommandLine::addFlag(const QString &name, const QString &description)
{
    m_parser.addOption({name, description});
}

vex::Error CommandLine::parse(const QStringList &arguments)
{
    if (!m_parser.parse(QStringList{u"vex "_s + m_command} + arguments)) {
        QString text = m_parser.errorText();
        if (text.endsWith(u'.'))
            text.chop(1);
        return usageFailure(u"%1 (see vex %2 --help)"_s.arg(text, m_command));
    }
    if (m_parser.isSet(u"help"_s)) {
        QString help = m_parser.helpText();
        const QString program = QCoreApplication::arguments().constFirst();
        help.replace(u"Usage: %1"_s.arg(program), u"Usage: vex %1"_s.arg(m_command));
        std::fputs(qUtf8Printable(help), stdout);
        m_isHelpShown = true;
        return vex::ErrorCode::NoError;
    }
    return passedOn(setUpLogging(m_parser.value(vex::klog), m_parser.value(vex::klog_severity)));
}

vex::Error CommandLine::requireOneOf(const QStringList &names) const
{
    qsizetype given = 0;
    for (const QString &name : names)
        given += m_parser.isSet(name) ? 1 : 0;
    if (given == 1)
        return vex::ErrorCode::NoError;
    return usageFailure(
        u"give exactly one of --%1 (see vex %2 --help)"_s.arg(names.join(" or --"_L1), m_command));
}

vex::Result<double> finiteNumber(const QString &text, const QString &what)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber)
        return usageFailure(u"%1 '%2' is not a number"_s.arg(what, text));
    if (!std::isfinite(value))
        return usageFailure(u"%1 '%2' is not finite"_s.arg(what, text));
    return value;
}

vex::Result<double> nonNegativeNumber(const QString &text, const QString &what)
{
    auto number = finiteNumber(text, what);
    if (number.hasError())
        return passedOn(std::move(number).error());
    if (number.value() < 0.0)
        return usageFailure(u"%1 '%2' is negative"_s.arg(what, text));
    return number.value();
}

vex::Result<double> wholeNumber(const QString &text, const QString &what, double least, double most)
{
    auto number = nonNegativeNumber(text, what);
    if (number.hasError())
        return passedOn(std::move(number).error());
    const double value = number.value();
    if (value != std::floor(value) || value < least)
        return usageFailure(u"%1 '%2' is not a whole number of at least %3"_s.arg(
            what, text, QString::number(least)));
    if (value > most)
        return usageFailure(
            u"%1 '%2' is above %3"_s.arg(what, text, QString::number(most, 'f', 0)));
    return value;
}

vex::Error setUpLogging(const QString &logPath, const QString &severity)
{
    if (!severity.isEmpty()) {
        const auto found = std::find_if(kSeverities.begin(), kSeverities.end(),
            [&severity](const Severity &known) { return severity == known.name; });
        if (found == kSeverities.end())
            return usageFailure(u"--%1 '%2' is none of debug, info, warning, critical"_s.arg(
                vex::klog_severity, severity));
        lowestRank = static_cast<std::size_t>(found - kSeverities.begin());
    }
    if (!logPath.isEmpty()) {
        auto file = std::make_unique<QFile>(logPath);
        if (!file->open(QIODevice::WriteOnly | QIODevice::Append))
            return failure(u"cannot write %1: %2"_s.arg(logPath, file->errorString()));
        logFile = std::move(file);
    }
    qInstallMessageHandler(handleMessage);
    return vex::ErrorCode::NoError;
}

} // namespace vexcli
