#include <vex/Modifications.h>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

using Modification = Modifications::Modification;

constexpr std::array kModifications = std::to_array<Modification>({
    // number, name, composition, residues, first residue, last residue
    {1, "Acetyl"_L1, "C2H2O"_L1, "CHKRSTY"_L1, "*"_L1, ""_L1},
    {2, "Amidated"_L1, "HNO-1"_L1, ""_L1, ""_L1, "*"_L1},
    {3, "Biotin"_L1, "C10H14N2O2S"_L1, "K"_L1, "*"_L1, ""_L1},
    {4, "Carbamidomethyl"_L1, "C2H3NO"_L1, "CDEHKMSTUY"_L1, "*"_L1, ""_L1},
    {5, "Carbamyl"_L1, "CHNO"_L1, "CKMRSTY"_L1, "*"_L1, ""_L1},
    {6, "Carboxymethyl"_L1, "C2H2O2"_L1, "CKUW"_L1, "*"_L1, ""_L1},
    {7, "Deamidated"_L1, "H-1N-1O"_L1, "NQR"_L1, "F"_L1, ""_L1},
    {21, "Phospho"_L1, "HO3P"_L1, "CDEHKRSTY"_L1, ""_L1, ""_L1},
    {23, "Dehydrated"_L1, "H-2O-1"_L1, "DSTY"_L1, "C"_L1, "NQ"_L1},
    {24, "Propionamide"_L1, "C3H5NO"_L1, "CK"_L1, "*"_L1, ""_L1},
    {26, "Pyro-carbamidomethyl"_L1, "C2O"_L1, ""_L1, "C"_L1, ""_L1},
    {27, "Glu->pyro-Glu"_L1, "H-2O-1"_L1, ""_L1, "E"_L1, ""_L1},
    {28, "Gln->pyro-Glu"_L1, "H-3N-1"_L1, ""_L1, "Q"_L1, ""_L1},
    {30, "Cation:Na"_L1, "H-1Na"_L1, "DE"_L1, ""_L1, "*"_L1},
    {34, "Methyl"_L1, "CH2"_L1, "CDEHIKLNQRST"_L1, "*"_L1, "*"_L1},
    {35, "Oxidation"_L1, "O"_L1, "CDEFHIKLMNPQRSTUVWY"_L1, ""_L1, "G"_L1},
    {36, "Dimethyl"_L1, "C2H4"_L1, "KNR"_L1, "*"_L1, ""_L1},
    {37, "Trimethyl"_L1, "C3H6"_L1, "KR"_L1, "A"_L1, ""_L1},
    {39, "Methylthio"_L1, "CH2S"_L1, "CDKN"_L1, "*"_L1, ""_L1},
    {40, "Sulfo"_L1, "O3S"_L1, "CSTY"_L1, ""_L1, ""_L1},
    {41, "Hex"_L1, "C6H10O5"_L1, "CKNRSTWY"_L1, "*"_L1, ""_L1},
    {43, "HexNAc"_L1, "C8H13NO5"_L1, "CNST"_L1, ""_L1, ""_L1},
    {44, "Farnesyl"_L1, "C15H24"_L1, "C"_L1, ""_L1, ""_L1},
    {45, "Myristoyl"_L1, "C14H26O"_L1, "CK"_L1, "G"_L1, ""_L1},
    {46, "PyridoxalPhosphate"_L1, "C8H8NO5P"_L1, "K"_L1, ""_L1, ""_L1},
    {47, "Palmitoyl"_L1, "C16H30O"_L1, "CKST"_L1, "*"_L1, ""_L1},
    {48, "GeranylGeranyl"_L1, "C20H32"_L1, "C"_L1, ""_L1, ""_L1},
    {55, "Glutathione"_L1, "C10H15N3O6S"_L1, "C"_L1, ""_L1, ""_L1},
    {58, "Propionyl"_L1, "C3H4O"_L1, "KST"_L1, "*"_L1, ""_L1},
    {64, "Succinyl"_L1, "C4H4O3"_L1, "K"_L1, "*"_L1, ""_L1},
    {108, "Nethylmaleimide"_L1, "C6H7NO2"_L1, "C"_L1, ""_L1, ""_L1},
    {121, "GG"_L1, "C4H6N2O2"_L1, "CKST"_L1, "*"_L1, ""_L1},
    {122, "Formyl"_L1, "CO"_L1, "KST"_L1, "*"_L1, ""_L1},
    {129, "Iodo"_L1, "H-1I"_L1, "HY"_L1, ""_L1, ""_L1},
    {188, "Label:13C(6)"_L1, "[13C6]C-6"_L1, "IKLR"_L1, ""_L1, ""_L1},
    {193, "Label:18O(2)"_L1, "[18O2]O-2"_L1, ""_L1, ""_L1, "*"_L1},
    {214, "iTRAQ4plex"_L1, "[13C3]C4H12[15N]NO"_L1, "CHKSTY"_L1, "*"_L1, ""_L1},
    {259, "Label:13C(6)15N(2)"_L1, "[13C6]C-6[15N2]N-2"_L1, "K"_L1, ""_L1, ""_L1},
    {267, "Label:13C(6)15N(4)"_L1, "[13C6]C-6[15N4]N-4"_L1, "R"_L1, ""_L1, ""_L1},
    {312, "Cysteinyl"_L1, "C3H5NO2S"_L1, "C"_L1, ""_L1, ""_L1},
    {345, "Trioxidation"_L1, "O3"_L1, "CFWY"_L1, ""_L1, ""_L1},
    {354, "Nitro"_L1, "H-1NO2"_L1, "FWY"_L1, ""_L1, ""_L1},
    {374, "Dehydro"_L1, "H-1"_L1, "C"_L1, ""_L1, ""_L1},
    {385, "Ammonia-loss"_L1, "H-3N-1"_L1, "N"_L1, "CST"_L1, ""_L1},
    {390, "Heme"_L1, "C34H32FeN4O4"_L1, "CH"_L1, ""_L1, ""_L1},
    {425, "Dioxidation"_L1, "O2"_L1, "CEFIKLMPRUVWY"_L1, ""_L1, ""_L1},
    {530, "Cation:K"_L1, "H-1K"_L1, "DE"_L1, ""_L1, "*"_L1},
    {737, "TMT6plex"_L1, "[13C4]C8H20[15N]NO2"_L1, "HKST"_L1, "*"_L1, ""_L1},
    {747, "Malonyl"_L1, "C3H2O3"_L1, "CKS"_L1, ""_L1, ""_L1},
    {2016, "TMTpro"_L1, "[13C7]C8H25[15N2]NO3"_L1, "HKST"_L1, "*"_L1, ""_L1},
});

} // namespace

DeltaComposition Modifications::Modification::delta() const
{
    return DeltaComposition::read(QString(composition)).value(); // a test reads them all
}

bool Modifications::Modification::fits(QStringView chain) const
{
    const auto has = [](QLatin1StringView codes, QChar residue) {
        return codes == "*"_L1 || codes.contains(residue);
    };
    return !chain.isEmpty()
        && (has(nTerminus, chain.front()) || has(cTerminus, chain.back())
            || std::any_of(chain.begin(), chain.end(),
                [&](QChar residue) { return residues.contains(residue); }));
}

std::span<const Modification> Modifications::all()
{
    return kModifications;
}

const Modification *Modifications::find(QStringView name)
{
    const auto found = std::find_if(
        kModifications.begin(), kModifications.end(), [name](const Modification &modification) {
            return name.compare(modification.name, Qt::CaseInsensitive) == 0;
        });
    return found == kModifications.end() ? nullptr : &*found;
}

const Modification *Modifications::find(int unimodNumber)
{
    const auto found = std::find_if(kModifications.begin(), kModifications.end(),
        [unimodNumber](const Modification &modification) {
            return modification.unimodNumber == unimodNumber;
        });
    return found == kModifications.end() ? nullptr : &*found;
}

} // namespace vex
