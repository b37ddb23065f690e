#include "commands/PatternModel.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Table.h"
#include "output/Text.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <numeric>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr double kGoodCoverage = 0.99; // below, the program warns
constexpr double kFullCoverage = 0.999; // of a model that is recommended
constexpr int kDefaultCapacity = 100;
constexpr int kLeastCapacity = 3; // peaks of one averagine atom
constexpr int kMostCapacity = 20000; // 20 MDa; more would make a single mass take seconds
constexpr std::array kAdvisedCapacities{100, 200, 400, 800, 1600, 3200, 6400, 12800};

void complete(Prediction *prediction)
{
    const QList<double> &shares = prediction->shares;
    prediction->coverage = std::accumulate(shares.begin(), shares.end(), 0.0);
}

} // namespace

QString Prediction::lines() const
{
    const QString peaks = counted(shares.size(), u"peak"_s);
    const QString highestPeak = best < 0 ? u"none within the %1"_s.arg(peaks)
        : isCut
        ? u"not among the %1, or the last of them (see --model list)"_s.arg(peaks)
        : (best == 0 ? u"the monoisotopic one"_s : u"%1 Da above the monoisotopic one"_s.arg(best))
            + u", %1 % of the signal"_s.arg(fixedNumber(100.0 * shares[best], 2));
    return reportLine(u"most intense peak"_s, highestPeak)
        + reportLine(peaks + (shares.size() == 1 ? " holds"_L1 : " hold"_L1),
            u"%1 % of the signal"_s.arg(fixedNumber(100.0 * coverage, 2)));
}

QByteArray Prediction::table(double minimalShare) const
{
    return peakTable(shares, highest(), minimalShare, isCut ? u"last"_s : u"highest"_s);
}

QJsonObject Prediction::json() const
{
    QJsonArray array;
    for (const double share : shares)
        array.append(share);
    QJsonObject object{{u"bestIndex"_s, best < 0 || isCut ? QJsonValue() : QJsonValue(best)},
        {u"coverage"_s, coverage}, {u"peakCount"_s, shares.size()}, {u"shares"_s, array}};
    if (gridMass)
        object.insert(u"gridMassDa"_s, *gridMass);
    return object;
}

Grid::Grid(const vex::AveragineIsotopeDistribution &table)
    : m_spacing(table.parameters().massSpacing)
    , m_lastPoint(table.patternCount() - 1)
{
}

int Grid::nearestPoint(double mass) const
{
    return static_cast<int>(std::clamp(mass / m_spacing + 0.5, 0.0, double(m_lastPoint)));
}

Prediction nearestPattern(const vex::AveragineIsotopeDistribution &table, double mass)
{
    const std::vector<double> &shares = table.isotopeIntensityFractions(mass);
    Prediction prediction;
    prediction.shares = QList<double>(shares.begin(), shares.end());
    const auto best = std::max_element(shares.begin(), shares.end());
    prediction.best = shares.empty() ? -1 : static_cast<int>(best - shares.begin());
    const Grid grid(table);
    prediction.gridMass = grid.massOf(grid.nearestPoint(mass));
    complete(&prediction);
    return prediction;
}

void addModelOptions(CommandLine *commandLine)
{
    addCompositionOptions(commandLine);
    commandLine->addOption({u"model"_s},
        u"classic (default): 100 peaks. list: as many peaks as --capacity says. grid: the nearest "
        "pattern of a precomputed table, every 100 Da up to 99900 Da; it has an average "
        "composition of its own (see vex distribution --help)."_s,
        u"classic|list|grid"_s);
    commandLine->addOption({u"capacity"_s},
        u"Number of peaks of --model list, %1 to %2 (default %3)."_s.arg(
            QString::number(kLeastCapacity), QString::number(kMostCapacity),
            QString::number(kDefaultCapacity)),
        u"N"_s);
}

QStringList averageModelOptions()
{
    return {u"averagine"_s, u"formula"_s, u"model"_s, u"capacity"_s};
}

vex::Result<std::shared_ptr<PatternModel>> PatternModel::fromOptions(const CommandLine &commandLine)
{
    const QString name =
        commandLine.isSet(u"model"_s) ? commandLine.value(u"model"_s) : u"classic"_s;
    if (name != "classic"_L1 && name != "list"_L1 && name != "grid"_L1)
        return usageFailure(u"--model '%1' is none of classic, list, grid"_s.arg(name));
    double capacity = kDefaultCapacity;
    if (commandLine.isSet(u"capacity"_s)) {
        if (name != "list"_L1)
            return usageFailure(u"--capacity goes with --model list"_s);
        auto number = wholeNumber(
            commandLine.value(u"capacity"_s), u"--capacity"_s, kLeastCapacity, kMostCapacity);
        if (number.hasError())
            return passedOn(std::move(number).error());
        capacity = number.value();
    }
    for (const QString &option : {u"formula"_s, u"averagine"_s}) {
        if (name == "grid"_L1 && commandLine.isSet(option))
            return usageFailure(
                u"--%1 does not go with --model grid, whose composition is fixed"_s.arg(option));
    }
    auto composition = compositionFrom(commandLine);
    if (composition.hasError())
        return passedOn(std::move(composition).error());
    auto model = std::make_shared<PatternModel>();
    if (name == "list"_L1)
        model->m_list =
            std::make_shared<vex::AveragineIsotopeModelRefactored>(static_cast<int>(capacity));
    else if (name == "grid"_L1)
        model->m_grid = std::make_shared<vex::AveragineIsotopeDistribution>();
    if (auto error = model->setComposition(composition.value()); error.hasError())
        return passedOn(std::move(error));
    return model;
}

QString PatternModel::name() const
{
    return m_list ? u"list"_s : m_grid ? u"grid"_s : u"classic"_s;
}

vex::Error PatternModel::setComposition(const Composition &composition)
{
    m_composition = composition;
    m_advised.clear();
    m_cursor.reset();
    return passedOn(
        m_list ? m_list->init(composition.formula) : m_classic.init(composition.formula));
}

void PatternModel::expectMany()
{
    if (m_list)
        m_cursor = std::make_shared<vex::IsotopePatternCursor>(*m_list);
    else if (!m_grid)
        m_cursor = std::make_shared<vex::IsotopePatternCursor>(m_classic);
}

QString PatternModel::composition() const
{
    return m_grid ? u"averagine of the precomputed table"_s : m_composition.name;
}

vex::Error PatternModel::predict(double mass, Prediction *prediction) const
{
    if (m_grid) {
        *prediction = nearestPattern(*m_grid, mass);
        return vex::ErrorCode::NoError;
    }
    auto best = m_cursor ? m_cursor->peakIntensityRatiosFromMass(mass, &prediction->shares)
        : m_list         ? m_list->peakIntensityRatiosFromMass(mass, &prediction->shares)
                         : m_classic.peakIntensityRatiosFromMass(mass, &prediction->shares);
    if (best.hasError())
        return passedOn(std::move(best).error());
    prediction->best = best.value();
    prediction->isCut = best.value() == prediction->shares.size() - 1;
    complete(prediction);
    return vex::ErrorCode::NoError;
}

bool PatternModel::isDoubtful(double mass, const Prediction &prediction) const
{
    return (m_grid && Grid(*m_grid).isBeyond(mass)) || prediction.coverage < kGoodCoverage;
}

QString PatternModel::warningFor(double mass, const Prediction &prediction)
{
    if (m_grid && Grid(*m_grid).isBeyond(mass))
        return u"beyond the last grid point, %1 Da, whose pattern is given; %2"_s.arg(
            massNumber(Grid(*m_grid).lastMass()), adviceFor(mass));
    return u"the %1 peaks hold only %2 % of the signal; %3"_s.arg(
        QString::number(prediction.shares.size()), fixedNumber(100.0 * prediction.coverage, 2),
        adviceFor(mass));
}

/// The smallest list that holds practically everything at @p mass.
QString PatternModel::adviceFor(double mass)
{
    for (std::size_t i = 0; i < kAdvisedCapacities.size(); ++i) {
        if (i == m_advised.size()) {
            m_advised.emplace_back(kAdvisedCapacities[i]);
            if (m_advised.back().init(m_composition.formula).hasError())
                break;
        }
        const double coverage = m_advised[i].signalCoverage(mass);
        if (coverage > kFullCoverage)
            return u"--model list --capacity %1 holds %2 %"_s.arg(
                QString::number(kAdvisedCapacities[i]), fixedNumber(100.0 * coverage, 2));
    }
    return u"no --model list of up to %1 peaks holds %2 %"_s.arg(
        QString::number(kAdvisedCapacities.back()), fixedNumber(100.0 * kFullCoverage, 1));
}

} // namespace vexcli
