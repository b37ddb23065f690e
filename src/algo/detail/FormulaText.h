#pragma once

#include <vex/MolecularFormula.h>

#include <QString>

#include <array>
#include <optional>

namespace vex::detail {

/// Atom types that have a symbol: all but MolecularFormula::Reserved, which is the last.
inline constexpr int kSymbolCount = MolecularFormula::Reserved;

/// Counts of the seven symbols by atom type, 0 for those not in @p formula; nothing if it has none.
///
/// The grammar and the exceptions are those of FormulaParser.
std::optional<std::array<double, kSymbolCount>> symbolCounts(const QString &formula);

} // namespace vex::detail
