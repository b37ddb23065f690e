#include <vex/ResidueCompositions.h>

#include "algo/detail/ResidueTable.h"

namespace vex {

const ResidueCompositions::AtomCounts *ResidueCompositions::find(std::string_view code)
{
    for (const detail::ResidueRecord &record : detail::kResidues) {
        if (code == record.code)
            return &record.atoms;
    }
    return nullptr;
}

} // namespace vex
