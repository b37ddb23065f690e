#pragma once

#include <vex/ChemicalFormula.h>

#include <algorithm>
#include <vector>

/// The pattern of counted atoms written out step by step: what the library's answers and times are
/// compared with. Powers by repeated squaring, convolutions in full, masses carried beside.
namespace plain {

/// For each nominal mass above that of the lightest isotopes: the share of the signal, and the sum
/// of share times (mass minus mass number).
template <typename Real>
struct Molecule
{
    std::vector<Real> shares{Real(1)};
    std::vector<Real> defects{Real(0)};
    long long massNumber = 0; ///< of the first entry
};

/// @param cut  what is left off at the heavy end, as a share of the signal
template <typename Real>
Molecule<Real> convolve(const Molecule<Real> &a, const Molecule<Real> &b, Real cut)
{
    Molecule<Real> out;
    out.massNumber = a.massNumber + b.massNumber;
    out.shares.assign(a.shares.size() + b.shares.size() - 1, Real(0));
    out.defects = out.shares;
    for (std::size_t i = 0; i < a.shares.size(); ++i) {
        for (std::size_t j = 0; j < b.shares.size(); ++j) {
            out.shares[i + j] += a.shares[i] * b.shares[j];
            out.defects[i + j] += a.defects[i] * b.shares[j] + a.shares[i] * b.defects[j];
        }
    }
    while (out.shares.back() < cut) {
        out.shares.pop_back();
        out.defects.pop_back();
    }
    return out;
}

template <typename Real>
Molecule<Real> power(Molecule<Real> base, int count, Real cut)
{
    Molecule<Real> out;
    for (; count > 0; count /= 2) {
        if (count % 2 == 1)
            out = convolve(out, base, cut);
        if (count > 1)
            base = convolve(base, base, cut);
    }
    return out;
}

/// One atom: an isotope, or all of them where @p massNumber is 0.
template <typename Real>
Molecule<Real> atom(const vex::PublishedIsotopes::Element &element, int massNumber)
{
    Molecule<Real> out;
    out.shares.clear();
    out.defects.clear();
    Real sum = 0;
    for (const auto &isotope : element.isotopes) {
        const Real share = massNumber == 0 ? isotope.abundance : isotope.massNumber == massNumber;
        if (share == Real(0))
            continue;
        if (out.shares.empty())
            out.massNumber = isotope.massNumber;
        out.shares.resize(std::size_t(isotope.massNumber - out.massNumber + 1));
        out.defects.resize(out.shares.size());
        out.shares.back() = share;
        out.defects.back() = share * (Real(isotope.massDa) - Real(isotope.massNumber));
        sum += share;
    }
    for (std::size_t i = 0; i < out.shares.size(); ++i) {
        out.shares[i] /= sum;
        out.defects[i] /= sum;
    }
    return out;
}

template <typename Real>
Molecule<Real> molecule(const vex::ChemicalFormula &formula, Real cut)
{
    Molecule<Real> out;
    for (const auto &atoms : formula.atoms())
        out = convolve(
            out, power(atom<Real>(*atoms.element, atoms.massNumber), atoms.count, cut), cut);
    return out;
}

} // namespace plain
