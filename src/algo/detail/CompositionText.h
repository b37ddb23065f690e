#pragma once

#include <QString>
#include <QStringView>

#include <optional>

#include "algo/detail/AtomCounts.h"

namespace vex::detail {

/// Where a text cannot be understood.
struct TextFault
{
    qsizetype position = 0; ///< in UTF-16 units from 0
    QString what; ///< such as "has no element 'X'"
};

/// Adds what @p text says to @p counts, in the notation of DeltaComposition; after a fault a part
/// of it.
std::optional<TextFault> readComposition(QStringView text, AtomCounts *counts);

} // namespace vex::detail
