#include "input/Charges.h"

#include "Failure.h"
#include "commands/CommandLine.h"

#include <algorithm>
#include <array>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr double kMostCharges = 1000;

struct Adduct
{
    QLatin1StringView name; // as --adduct takes it
    const char16_t *composition;
    int charge;
};

constexpr std::array kAdducts{Adduct{"H"_L1, u"H", 1}, Adduct{"Na"_L1, u"Na", 1},
    Adduct{"K"_L1, u"K", 1}, Adduct{"NH4"_L1, u"NH4", 1}, Adduct{"-H"_L1, u"H-1", -1}};

/// One number of --charge.
vex::Result<int> chargeFrom(const QString &text, const QString &all)
{
    if (text.startsWith(u'-') || text.startsWith(u'+'))
        return usageFailure(
            u"--charge '%1': give numbers without a sign, and --adduct -H for negative ions"_s.arg(
                all));
    auto number = wholeNumber(text, u"--charge"_s, 0, kMostCharges);
    if (number.hasError())
        return usageFailure(
            u"--charge '%1' is no list of charges from 1 to %2, such as 10 or 1-30 or 1,2,5-8"_s
                .arg(all, QString::number(kMostCharges)));
    if (number.value() == 0.0)
        return usageFailure(
            u"--charge '%1': an ion has a charge of 1 or more; without --charge the neutral "
            "molecule is shown"_s.arg(all));
    return static_cast<int>(number.value());
}

/// "1-3,8" as 1, 2, 3, 8.
vex::Result<QList<int>> chargesFrom(const QString &text)
{
    QList<int> charges;
    for (const QString &part : text.split(u',')) {
        const qsizetype dash = part.indexOf(u'-', 1);
        auto first = chargeFrom(dash < 0 ? part : part.first(dash), text);
        auto last = dash < 0 || first.hasError() ? first : chargeFrom(part.mid(dash + 1), text);
        if (last.hasError())
            return passedOn(std::move(last).error());
        if (last.value() < first.value())
            return usageFailure(u"--charge '%1' goes down; write %2-%3"_s.arg(
                text, QString::number(last.value()), QString::number(first.value())));
        for (int charge = first.value(); charge <= last.value(); ++charge) {
            if (charges.contains(charge))
                return usageFailure(
                    u"--charge '%1' holds %2 twice"_s.arg(text, QString::number(charge)));
            charges.append(charge);
        }
    }
    return charges;
}

/// "2+", "-"
QString chargeText(int charge)
{
    const int size = std::abs(charge);
    return (size > 1 ? QString::number(size) : QString()) + (charge > 0 ? u'+' : u'-');
}

} // namespace

double Ion::position(double mass) const
{
    const double whole = mass + molecule->massShift;
    return charge() == 0 ? whole : whole / std::abs(charge());
}

void Charges::addOptions(CommandLine *commandLine)
{
    commandLine->addOption({u"charge"_s},
        u"Charges of the ions, such as 10, 1-30 or 1,2,5-8: m/z instead of masses."_s, u"N"_s);
    commandLine->addOption({u"adduct"_s},
        u"What brings each charge (default H). -H makes negative ions. Alone it means a charge of "
        "1."_s,
        u"H|Na|K|NH4|-H"_s);
}

vex::Result<Charges> Charges::fromOptions(const CommandLine &commandLine)
{
    Charges charges;
    const bool isAdductSet = commandLine.isSet(u"adduct"_s);
    if (!isAdductSet && !commandLine.isSet(u"charge"_s))
        return charges;
    const QString name = isAdductSet ? commandLine.value(u"adduct"_s) : u"H"_s;
    const auto adduct = std::find_if(kAdducts.begin(), kAdducts.end(),
        [&name](const Adduct &each) { return each.name == name; });
    if (adduct == kAdducts.end())
        return usageFailure(u"--adduct '%1' is none of H, Na, K, NH4, -H"_s.arg(name));
    charges.m_adduct = adduct->charge > 0 ? u'+' + name : name;
    charges.m_delta = vex::DeltaComposition::read(adduct->composition, adduct->charge).value();
    charges.m_numbers = {1};
    if (commandLine.isSet(u"charge"_s)) {
        auto numbers = chargesFrom(commandLine.value(u"charge"_s));
        if (numbers.hasError())
            return passedOn(std::move(numbers).error());
        charges.m_numbers = std::move(numbers).value();
    }
    return charges;
}

vex::Result<Ion> Charges::ionOf(const Molecule &molecule, qsizetype index) const
{
    Ion ion{&molecule, molecule.formula, 0, {}};
    if (m_numbers.isEmpty()) {
        if (ion.charge() != 0)
            ion.label = "[M]"_L1 + chargeText(ion.charge());
        return ion;
    }
    if (molecule.formula.charge() != 0)
        return usageFailure(
            u"%1 has a charge by its formula: leave --charge and --adduct out"_s.arg(
                molecule.name));
    ion.adductCount = m_numbers[index];
    ion.label = u"[M%1%2%3]%4"_s.arg(m_adduct.left(1),
        ion.adductCount > 1 ? QString::number(ion.adductCount) : QString(), m_adduct.mid(1),
        chargeText(ion.adductCount * m_delta.charge()));
    auto formula = molecule.formula.plus(m_delta, ion.adductCount);
    if (formula.hasError())
        return failure(
            u"%1: %2 cannot be: %3"_s.arg(molecule.name, ion.label, formula.error().message()));
    ion.formula = std::move(formula).value();
    return ion;
}

} // namespace vexcli
