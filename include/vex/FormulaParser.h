#pragma once

#include <QHash>
#include <QList>
#include <QMap>
#include <QString>

#include <vex/Error.h>
#include <vex/Export.h>
#include <vex/MolecularFormula.h>
#include <vex/Result.h>

namespace vex {

/// Turns formula text such as "C6H12O6" into atom counts.
///
/// The grammar is tolerant. Letters, digits, '+' and '-' count; everything else is dropped without
/// a word, blanks, brackets and the decimal point included: "C1.5" reads as "C15". A symbol is one
/// upper-case letter and the letters behind it; what follows is its count, 1 when there is none,
/// read as C's strtod reads it (sign, exponent and hexadecimal form allowed, the longest valid
/// beginning counts). Repeated symbols add up: "CH3CH3" holds C 2 and H 6. There are no groups.
/// Symbols are not compared with a table of elements. checkFormula() tells what such a reading
/// leaves out. ChemicalFormula is the strict reader.
///
/// @par Exceptions
/// A count that cannot be read leaves the first three functions as std::invalid_argument ("invalid
/// stod argument") or, when it does not fit a double, std::out_of_range ("stod argument out of
/// range"). checkFormula() never throws.
class VEX_EXPORT FormulaParser
{
public:
    /// Something in a formula text that its reading leaves out or cannot use.
    ///
    /// A dropped character matters when it parts what is then read as one thing. The blank of
    /// "C6 H12" parts two elements: CharacterDropped. The bracket of "C(H3)2" makes 32 of 3 and 2:
    /// DigitsJoined. CountChanged are the others: "OH 2H2O" gives the 2 to H, "C1 e5" is 100000,
    /// "N a" is sodium, and "C₆" (a subscript) loses a number.
    struct Finding
    {
        /// What is the matter.
        enum Kind {
            CharacterDropped, ///< neither letter nor digit nor sign; no count depends on it
            DigitsJoined, ///< dropped from between two digits, which run together
            LostBeforeSymbol, ///< stands before the first upper-case letter
            CountTailIgnored, ///< behind the part of the count that is a number
            SymbolIgnored, ///< none of C, H, O, N, S, P, Na
            CountUnreadable, ///< the count is no number, or none that fits a double
            CountChanged, ///< dropped from inside one element as it is read, or a number itself
        };
        Kind kind = CharacterDropped; ///< what is the matter
        qsizetype position = 0; ///< where @ref text starts, counted in UTF-16 units from 0
        QString text; ///< the characters in question
        QString message; ///< one sentence for a person; it counts characters from 1
    };

    /// What checkFormula() gives for a readable text.
    struct Check
    {
        QMap<QString, double> counts; ///< as parseChemicalFormula() gives them
        QList<Finding> findings; ///< in ascending position
    };

    /// Symbol and count of every element in @p formula; empty when it has no upper-case letter.
    static QMap<QString, double> parseChemicalFormula(const QString &formula);

    /// Inserts the counts of C, H, O, N, S, P and Na into @p hash, 0 for those not in the text.
    ///
    /// Present entries are replaced, others of @p hash (such as MolecularFormula::Reserved) stay.
    /// Other symbols in the text are ignored.
    /// @par Errors
    /// GeneralFailure when the text holds no symbol; @p hash is untouched then
    static Error molecularFormulaHashFromString(
        const QString &formula, QHash<MolecularFormula::AtomType, double> *hash);

    /// Appends the counts of C, H, O, N, S, P and Na, in this order, to @p counts.
    ///
    /// The list is not cleared first. Other symbols in the text are ignored.
    /// @par Errors
    /// GeneralFailure when the text holds no symbol; @p counts is untouched then
    static Error molecularFormulaParser(const QString &formula, QList<double> *counts);

    /// Reads the first "[a, b]" of @p text, two unsigned whole numbers, into @p start and @p end.
    ///
    /// An empty number reads as 0. When nothing matches, neither output is written and there is
    /// still no error: preset the outputs to tell.
    static Error rangeParser(const QString &text, double *start, double *end);

    /// Reads @p formula and tells what the reading leaves out, without exceptions.
    ///
    /// @return the counts and the findings
    /// @par Errors
    /// GeneralFailure when the text holds no symbol or a count is unreadable; the message names
    /// each, the other findings stand in the result's warnings
    static Result<Check> checkFormula(const QString &formula);
};

} // namespace vex
