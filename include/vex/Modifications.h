#pragma once

#include <QLatin1StringView>
#include <QStringView>

#include <span>

#include <vex/DeltaComposition.h>
#include <vex/Export.h>

namespace vex {

/// The fifty modifications of peptides and proteins that are met most often: what they add to a
/// residue and take from it, and what carries them.
///
/// Names, numbers, compositions and sites are those of Unimod (unimod.org; Creasy and Cottrell,
/// Proteomics 4 (2004) 1534), as of the file in openms-common 2.6. A name that its file calls a
/// "title" is the name here, such as "Oxidation".
class VEX_EXPORT Modifications
{
public:
    /// One modification.
    struct VEX_EXPORT Modification
    {
        int unimodNumber = 0; ///< "UNIMOD:35" without its beginning
        QLatin1StringView name; ///< such as "Oxidation"
        QLatin1StringView composition; ///< as DeltaComposition reads it
        QLatin1StringView residues; ///< letters of those that carry it anywhere; empty for none
        QLatin1StringView nTerminus; ///< of those that carry it as the first; "*" for all
        QLatin1StringView cTerminus; ///< of those that carry it as the last; "*" for all

        /// What a residue or a terminus gains and loses.
        DeltaComposition delta() const;

        /// True when one of @p residues, or an end of the chain that they are, is known to carry
        /// it.
        bool fits(QStringView residues) const;
    };

    /// All, by number.
    static std::span<const Modification> all();

    /// The modification of that name, in upper or lower case; null when the table lacks it.
    static const Modification *find(QStringView name);

    /// The modification of that number; null when the table lacks it.
    static const Modification *find(int unimodNumber);
};

} // namespace vex
