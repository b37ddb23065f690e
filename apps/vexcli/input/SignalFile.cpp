#include "input/SignalFile.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "input/Columns.h"
#include "output/Messages.h"
#include "output/Text.h"

#include <vex/PlotUtilities.h>

#include <QMap>
#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qsizetype kMostWarnings = 3; // about points that do not ascend
constexpr qsizetype kMostFindings = 1000; // places that are counted

/// A unit, and the words that stand for it in options and titles.
struct KnownUnit
{
    QLatin1StringView symbol;
    double perMinute;
    const char16_t *words; // of a regular expression
};

constexpr std::array kUnits{
    KnownUnit{"min"_L1, 1.0, u"min|mins|minutes?|minuten?"},
    KnownUnit{"s"_L1, 60.0, u"s|secs?|seconds?|sek|sekunden?"},
    KnownUnit{"m/z"_L1, 0.0, u"m/z|mz"},
    KnownUnit{"Da"_L1, 0.0, u"da|dalton|daltons"},
    KnownUnit{"ms"_L1, 0.0, u"ms|msecs?|milliseconds?"},
    KnownUnit{"h"_L1, 0.0, u"h|hrs?|hours?"},
};

bool isMeant(const KnownUnit &unit, const QString &pattern, const QString &text)
{
    return QRegularExpression(
        pattern.arg(QStringView(unit.words).toString()), QRegularExpression::CaseInsensitiveOption)
        .match(text)
        .hasMatch();
}

/// The only unit that @p title names; null when it names none or several.
const KnownUnit *unitIn(const QString &title)
{
    const KnownUnit *found = nullptr;
    for (const KnownUnit &unit : kUnits) {
        if (!isMeant(unit, u"(?<![a-z])(?:%1)(?![a-z])"_s, title))
            continue;
        if (found)
            return nullptr;
        found = &unit;
    }
    return found;
}

/// Where the points of @p signal do not ascend, in words.
/// @param lines  of the first such points, by index
QStringList findingsOf(
    const vex::PlotBase &signal, const QString &name, const QMap<qsizetype, qint64> &lines)
{
    const auto found = vex::PlotUtilities::checkSignal(signal, kMostFindings);
    QStringList texts;
    for (const auto &finding : found.first(std::min(found.size(), kMostWarnings))) {
        const double x = signal.points()[finding.index].x();
        texts.append(u"%1, line %2: x %3 %4"_s.arg(name,
            QString::number(lines.value(finding.index)), QString::number(x, 'g', 12),
            finding.kind == vex::PlotUtilities::SignalFinding::Descending
                ? u"is below the one before; do not trust the results, sort the points first"_s
                : u"repeats the one before; only the first y counts there"_s));
    }
    if (found.size() > kMostWarnings)
        texts.append(u"%1: x does not ascend in %2%3 more places"_s.arg(name,
            found.size() < kMostFindings ? QString() : u"at least "_s,
            QString::number(found.size() - kMostWarnings)));
    return texts;
}

} // namespace

SignalRange rangeOf(const vex::PlotBase &signal)
{
    const auto [lowest, highest] = std::minmax_element(signal.points().begin(),
        signal.points().end(), [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    return {lowest->x(), highest->x()};
}

QString XUnit::axisTitle() const
{
    if (perMinute > 0.0)
        return "time / "_L1 + symbol;
    return symbol.isEmpty() ? u"x"_s : symbol == "Da"_L1 ? u"mass / Da"_s : symbol;
}

QString XUnit::with(const QString &number) const
{
    return withUnit(number, symbol);
}

QString withUnit(const QString &number, const QString &unit)
{
    return unit.isEmpty() ? number : number + u' ' + unit;
}

QString intensityUnitOf(const QList<SignalFile> &files)
{
    const bool isRelative = std::any_of(files.begin(), files.end(), [](const SignalFile &file) {
        return file.yTitle.contains("relative"_L1, Qt::CaseInsensitive);
    });
    return isRelative ? QString() : u"counts"_s;
}

void addXUnitOption(CommandLine *commandLine, const QString &units, const QString &otherwise)
{
    commandLine->addOption({u"x-unit"_s},
        u"Unit of the x column, and so of what is printed. Without it the title of the column "
        "tells; %1."_s.arg(otherwise),
        units);
}

vex::Result<SignalFile> readSignal(const CommandLine &commandLine, const QString &path)
{
    SignalFile file{{}, inputName(path), {}, {}};
    QMap<qsizetype, qint64> odd; // lines of the first points that do not ascend
    auto &points = file.signal.points();
    BadRecords none(false);
    auto titles = readColumns(columnsRequest(commandLine, path, {u"x"_s, u"y"_s}), &none,
        [&](const ColumnsRow &row) -> vex::Error {
            const QPointF point(row.numbers[0], row.numbers[1]);
            if (odd.size() < kMostWarnings && !points.isEmpty() && point.x() <= points.back().x())
                odd.insert(points.size(), row.line);
            points.append(point);
            return vex::ErrorCode::NoError;
        });
    if (titles.hasError())
        return passedOn(std::move(titles).error());
    if (points.isEmpty())
        return failure(u"%1 holds no point"_s.arg(file.name));
    file.xTitle = titles.value().value(0);
    file.yTitle = titles.value().value(1);
    for (const QString &finding : findingsOf(file.signal, file.name, odd))
        warn(finding);
    return file;
}

vex::Result<XUnit> xUnitOf(const CommandLine &commandLine, const QList<SignalFile> &files)
{
    if (commandLine.isSet(u"x-unit"_s)) {
        const QString name = commandLine.value(u"x-unit"_s);
        for (const KnownUnit &unit : kUnits) {
            if (isMeant(unit, u"^(?:%1)$"_s, name) && unit.symbol != "ms"_L1
                && unit.symbol != "h"_L1)
                return XUnit{unit.symbol, unit.perMinute};
        }
        return usageFailure(u"--x-unit '%1' is none of min, s, m/z, Da"_s.arg(name));
    }
    const KnownUnit *found = nullptr;
    QString where;
    for (const SignalFile &file : files) {
        const KnownUnit *unit = unitIn(file.xTitle);
        if (!unit)
            continue;
        if (found && found != unit)
            return failure(
                u"x is in %1 by the title of %2, but in %3 by that of %4: signals are compared in "
                "one unit (--x-unit says that they are)"_s.arg(
                    found->symbol, where, unit->symbol, file.name));
        found = unit;
        where = file.name;
    }
    return found ? XUnit{found->symbol, found->perMinute} : XUnit{};
}

} // namespace vexcli
