#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

#include <vex/AveragineIsotopeDistribution.h>
#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>
#include <vex/Error.h>
#include <vex/IsotopePatternCursor.h>
#include <vex/Result.h>

#include "input/Composition.h"

namespace vexcli {

class CommandLine;

/// An isotope pattern with what tables and JSON tell of it.
struct Prediction
{
    QList<double> shares; // of the whole signal, by nominal mass shift
    int best = -1; // index of the highest share; -1 when all are 0
    bool isCut = false; // the highest share is the last one: a higher one may follow
    double coverage = 0.0; // sum of the shares
    std::optional<double> gridMass; // daltons; of the grid point that the pattern belongs to

    /// The highest share; 0 when all are 0.
    double highest() const { return best < 0 ? 0.0 : shares[best]; }
    /// The lines of a table about highest peak and coverage.
    QString lines() const;
    /// The peaks of at least @p minimalShare, with bars.
    QByteArray table(double minimalShare) const;
    /// The fields of a JSON object.
    QJsonObject json() const;
};

/// Where the grid of a precomputed table lies.
class Grid
{
public:
    explicit Grid(const vex::AveragineIsotopeDistribution &table);

    double massOf(int point) const { return point * m_spacing; } // daltons
    int lastPoint() const { return m_lastPoint; }
    double lastMass() const { return massOf(m_lastPoint); } // daltons
    int nearestPoint(double mass) const;
    /// True when @p mass is farther from the last grid point than any mass between two points can
    /// be.
    bool isBeyond(double mass) const { return mass > lastMass() + m_spacing / 2.0; }

private:
    double m_spacing; // daltons
    int m_lastPoint;
};

/// The pattern of the grid point of @p table that is nearest to @p mass, in daltons.
Prediction nearestPattern(const vex::AveragineIsotopeDistribution &table, double mass);

/// Adds --model, --capacity and the options of the composition to @p commandLine.
void addModelOptions(CommandLine *commandLine);

/// Those options.
QStringList averageModelOptions();

/// The model that predicts the patterns of one run.
class PatternModel
{
public:
    /// The model that the options ask for, by default the classic one.
    static vex::Result<std::shared_ptr<PatternModel>> fromOptions(const CommandLine &commandLine);

    /// As --model has it.
    QString name() const;
    /// True when patterns are of the composition that setComposition() gave.
    bool hasComposition() const { return !m_grid; }
    /// Sets the model up for molecules of @p composition.
    vex::Error setComposition(const Composition &composition);
    /// Makes predict() fast for many masses of this composition, fastest for ascending ones.
    void expectMany();
    /// What the patterns are of, for titles.
    QString composition() const;
    /// Writes the pattern of a molecule of @p mass daltons.
    vex::Error predict(double mass, Prediction *prediction) const;
    /// True when @p prediction for @p mass is not whole.
    bool isDoubtful(double mass, const Prediction &prediction) const;
    /// What is wrong with a doubtful one, and which model does better.
    QString warningFor(double mass, const Prediction &prediction);

private:
    QString adviceFor(double mass);

    Composition m_composition;
    vex::AveragineIsotopeModel m_classic;
    std::shared_ptr<vex::AveragineIsotopeModelRefactored> m_list; // for --model list
    std::shared_ptr<vex::AveragineIsotopeDistribution> m_grid; // for --model grid
    std::shared_ptr<vex::IsotopePatternCursor>
        m_cursor; // of the model; null until many are expected
    std::vector<vex::AveragineIsotopeModelRefactored> m_advised; // lists of growing capacity
};

} // namespace vexcli
