#include "commands/CommandLine.h"

#include "Failure.h"
#include "output/Text.h"

#include <vex/AppParamsPrinter.h>
#include <vex/CommandLineKeys.h>

#include <QCoreApplication>

#include <cmath>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// @p text with line ends between words, so that no line is longer than a terminal is wide.
const QString kJsonLines = u"json-lines"_s;

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

QString withDashes(const QString &name)
{
    return (name.size() == 1 ? "-"_L1 : "--"_L1) + name;
}

} // namespace

CommandLine::CommandLine(const QString &command)
    : m_command(command)
{
}

void CommandLine::describe(
    const QString &summary, const QStringList &examples, const QString &rules)
{
    QString text = wrapped(summary);
    if (!examples.isEmpty())
        text += "\n\nExamples:\n  "_L1 + examples.join("\n  "_L1);
    for (const QString &paragraph : rules.split(u'\n', Qt::SkipEmptyParts))
        text += paragraph.startsWith(u' ') ? u'\n' + paragraph : "\n\n"_L1 + wrapped(paragraph);
    m_parser.setApplicationDescription(text);
}

void CommandLine::addPositional(
    const QString &name, const QString &description, const QString &syntax)
{
    m_parser.addPositionalArgument(name, description, syntax);
}

void CommandLine::addInputPositional(
    const QString &name, const QString &description, const QString &syntax)
{
    m_arePositionalInputs = true;
    addPositional(name, description, syntax);
}

void CommandLine::add(
    const QStringList &names, const QString &description, const QString &valueName)
{
    m_names.append(names.last());
    m_parser.addOption({names, description, valueName});
}

void CommandLine::addOption(
    const QStringList &names, const QString &description, const QString &valueName)
{
    add(names, description, valueName);
}

void CommandLine::addRepeatableOption(
    const QStringList &names, const QString &description, const QString &valueName)
{
    m_repeatable.insert(names.last());
    add(names, description, valueName);
}

void CommandLine::addInputOption(
    const QString &name, const QString &description, const QString &valueName)
{
    m_inputs.append(name);
    add({name}, description, valueName);
}

void CommandLine::addOutputOption(const QString &description)
{
    add({u"o"_s, u"output"_s}, description, u"FILE"_s);
}

void CommandLine::addPlotOption(const QString &description)
{
    add({u"plot"_s}, description, u"FILE"_s);
}

void CommandLine::addStreamOptions()
{
    addFlag(kJsonLines,
        u"JSON with a line for each object, which is written as soon as it is known."_s);
    addFlag(u"no-header"_s, u"Leaves the line of titles out of the CSV."_s);
}

void CommandLine::addFlag(const QString &name, const QString &description)
{
    m_repeatable.insert(name);
    add({name}, description, {});
}

QString CommandLine::withHint(const QString &text) const
{
    return u"%1 (see vex %2 --help)"_s.arg(text, m_command);
}

/// Options that every command has; behind its own in the help text.
void CommandLine::addCommonOptions()
{
    add({u"h"_s, u"help"_s}, u"Shows this help and ends."_s, {});
    add({u"json"_s}, u"Prints JSON for programs instead of a table."_s, {});
    add({u"trace"_s}, u"Prints every place that an error passed."_s, {});
    add({vex::klog}, u"Appends messages to FILE as well."_s, u"FILE"_s);
    add({vex::klog_severity},
        u"Lowest severity of messages shown: debug, info, warning (default) or critical."_s,
        u"SEVERITY"_s);
    addFlag(vex::kdisable_crash_handler, u"Leaves crashes to the system, without a report."_s);
}

vex::Error CommandLine::parse(const QStringList &arguments)
{
    addCommonOptions();
    // the command counts as the first of the positional arguments
    if (!m_parser.parse(QStringList{u"vex"_s, m_command} + arguments)) {
        QString text = m_parser.errorText();
        if (text.endsWith(u'.'))
            text.chop(1);
        text[0] = text[0].toLower(); // it stands behind the program's name
        if (const QStringList unknown = m_parser.unknownOptionNames(); !unknown.isEmpty()) {
            const QString meant = similarWord(unknown.constFirst(), m_names);
            text = u"there is no option %1"_s.arg(withDashes(unknown.constFirst()));
            if (!meant.isEmpty())
                text += u"; did you mean %1?"_s.arg(withDashes(meant));
        }
        return usageFailure(withHint(text));
    }
    if (isHelpWanted())
        return vex::ErrorCode::NoError;
    if (!m_refusal.isEmpty() && positional().size() > m_mostPositional)
        return usageFailure(withHint(m_refusal));
    if (auto error = checkRepeated(); error.hasError())
        return passedOn(std::move(error));
    QStringList files = inputFiles();
    for (const QString &name : {u"output"_s, u"plot"_s, vex::klog}) {
        if (m_names.contains(name) && isSet(name) && value(name).isEmpty())
            return usageFailure(withHint(u"--%1 needs the name of a file"_s.arg(name)));
    }
    if (files.count(u"-"_s) > 1)
        return usageFailure(u"standard input can be read once only, not for two inputs"_s);
    if (areJsonLines() && isSet(u"json"_s))
        return usageFailure(u"--json and --json-lines exclude each other"_s);
    if (isJson() && outputFile() == "-"_L1)
        return usageFailure(
            u"standard output cannot hold both JSON and CSV: leave --json or -o - out"_s);
    return vex::ErrorCode::NoError;
}

vex::Error CommandLine::checkRepeated() const
{
    for (const QString &name : m_names) {
        const QStringList given = values(name);
        if (given.size() > 1 && !m_repeatable.contains(name))
            return usageFailure(withHint(u"--%1 can be given once only, not as '%2' and '%3'"_s.arg(
                name, given[0], given[1])));
    }
    return vex::ErrorCode::NoError;
}

QString CommandLine::helpText() const
{
    QString help = m_parser.helpText();
    const QString program = QCoreApplication::arguments().value(0);
    help.replace(u"Usage: %1"_s.arg(program), u"Usage: vex %1"_s.arg(m_command));
    return help;
}

QStringList CommandLine::parameters() const
{
    return vex::AppParamsPrinter::printableAppParams(
        m_parser, {vex::klicense_key, vex::kquorlsphere_license_key});
}

void CommandLine::logParameters() const
{
    vex::AppParamsPrinter::printAppParams(
        m_parser, {vex::klicense_key, vex::kquorlsphere_license_key});
}

bool CommandLine::isJson() const
{
    return isSet(u"json"_s) || areJsonLines();
}

bool CommandLine::areJsonLines() const
{
    return m_names.contains(kJsonLines) && isSet(kJsonLines);
}

JsonArrayWriter::Layout CommandLine::jsonLayout() const
{
    return areJsonLines() ? JsonArrayWriter::Lines : JsonArrayWriter::Array;
}

QString CommandLine::outputFile() const
{
    return m_names.contains(u"output"_s) ? value(u"output"_s) : QString();
}

QString CommandLine::plotFile() const
{
    return m_names.contains(u"plot"_s) ? value(u"plot"_s) : QString();
}

QStringList CommandLine::inputFiles() const
{
    QStringList files = m_arePositionalInputs ? positional() : QStringList();
    for (const QString &name : m_inputs)
        files += values(name);
    return files;
}

QStringList CommandLine::outputFiles() const
{
    return {outputFile(), plotFile(), value(vex::klog)};
}

vex::Error CommandLine::requireNoPositional() const
{
    if (positional().isEmpty())
        return vex::ErrorCode::NoError;
    return usageFailure(withHint(u"unexpected argument '%1'"_s.arg(positional().constFirst())));
}

vex::Result<double> finiteNumber(const QString &text, const QString &what)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber && std::isinf(value))
        return usageFailure(u"%1 '%2' is out of range"_s.arg(what, text));
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

vex::Result<double> shareFromPercent(const QString &text, const QString &what)
{
    const QString digits = text.endsWith(u'%') ? text.chopped(1).trimmed() : text;
    auto percent = nonNegativeNumber(digits, what);
    if (percent.hasError())
        return passedOn(std::move(percent).error());
    if (percent.value() > 100.0)
        return usageFailure(u"%1 '%2' is above 100 %"_s.arg(what, text));
    return percent.value() / 100.0;
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

} // namespace vexcli
