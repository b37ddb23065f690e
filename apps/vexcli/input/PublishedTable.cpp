#include "input/PublishedTable.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Messages.h"
#include "output/Text.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace vexcli {

void PublishedTable::addOption(CommandLine *commandLine)
{
    commandLine->addInputOption(u"published"_s,
        u"Compares the masses of molecules and sequences with those of a CSV file: name, average, "
        "monoisotopic."_s);
}

vex::Result<PublishedTable> PublishedTable::fromOptions(const CommandLine &commandLine)
{
    PublishedTable table;
    if (!commandLine.isSet(u"published"_s))
        return table;
    auto masses = readPublishedMasses(commandLine.value(u"published"_s));
    if (masses.hasError())
        return passedOn(std::move(masses).error());
    table.m_masses = std::move(masses).value();
    return table;
}

void PublishedTable::warnOfOthers(const QStringList &names) const
{
    const QSet<QString> known(names.begin(), names.end());
    QStringList others;
    for (auto entry = m_masses.keyBegin(); entry != m_masses.keyEnd(); ++entry) {
        if (!known.contains(*entry))
            others.append(*entry);
    }
    others.sort();
    for (const QString &name : std::as_const(others))
        warn(u"published masses of %1: no such sequence"_s.arg(name));
}

QString PublishedTable::averageText(const QString &name, double mass) const
{
    return textOf(name, mass, &PublishedMasses::average);
}

QString PublishedTable::monoisotopicText(const QString &name, double mass) const
{
    return textOf(name, mass, &PublishedMasses::monoisotopic);
}

QString PublishedTable::textOf(
    const QString &name, double mass, double PublishedMasses::*published) const
{
    const QString text = fixedNumber(mass, 4) + " Da"_L1;
    const auto found = m_masses.constFind(name);
    if (found == m_masses.constEnd())
        return text;
    const double other = (*found).*published;
    const QString ppm = QString::asprintf("%+.2f", (mass - other) / other * 1e6);
    return text
        + u"  (published %1, %2 ppm)"_s.arg(
            fixedNumber(other, 4), ppm == "-0.00"_L1 ? u"+0.00"_s : ppm);
}

} // namespace vexcli
