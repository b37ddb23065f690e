#include <vex/ModifiedSequence.h>

#include "algo/detail/CompositionText.h"
#include "detail/ShownText.h"
#include "detail/Trace.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file, chosen here.
constexpr detail::TraceSource kSource{"src/algo/ModifiedSequence"};
namespace at {
constexpr auto notUnderstood = kSource.line(1);
constexpr auto tagNotUnderstood = kSource.line(2);
} // namespace at

using Modification = Modifications::Modification;

constexpr double kLargestShift = 1e9; // daltons

struct Residue
{
    char code;
    QLatin1StringView composition;
};

constexpr Residue kResidues[] = {
    {'A', "C3H5NO"_L1},
    {'C', "C3H5NOS"_L1},
    {'D', "C4H5NO3"_L1},
    {'E', "C5H7NO3"_L1},
    {'F', "C9H9NO"_L1},
    {'G', "C2H3NO"_L1},
    {'H', "C6H7N3O"_L1},
    {'I', "C6H11NO"_L1},
    {'J', "C6H11NO"_L1}, // I or L
    {'K', "C6H12N2O"_L1},
    {'L', "C6H11NO"_L1},
    {'M', "C5H9NOS"_L1},
    {'N', "C4H6N2O2"_L1},
    {'O', "C12H19N3O2"_L1}, // pyrrolysine
    {'P', "C5H7NO"_L1},
    {'Q', "C5H8N2O2"_L1},
    {'R', "C6H12N4O"_L1},
    {'S', "C3H5NO2"_L1},
    {'T', "C4H7NO2"_L1},
    {'U', "C3H5NOSe"_L1}, // selenocysteine
    {'V', "C5H9NO"_L1},
    {'W', "C11H10N2O"_L1},
    {'Y', "C9H9NO2"_L1},
};

constexpr char16_t kGap = u'X';

/// Where a modification sits. Behind the first or last residue its terminus may be meant.
struct Site
{
    enum Place {
        Residue,
        NTerminus,
        CTerminus
    };
    Place place;
    bool isFirst;
    bool isLast;
};

/// True when @p codes names @p residue, or all.
bool names(QLatin1StringView codes, QChar residue)
{
    return codes == "*"_L1 || codes.contains(residue);
}

using Tag = ModifiedSequence::Tag;
using PlacedTag = std::pair<Tag, qsizetype>; // with its column

/// Reads one text from its beginning to its end, or to the first fault.
class Reader
{
public:
    explicit Reader(QStringView text)
        : m_text(text)
    {
    }

    bool read()
    {
        if (m_text.isEmpty())
            return fail(0, u"is empty"_s);
        QList<PlacedTag> first; // of the N-terminus
        if (peek() == u'[') {
            if (!readTags(&first))
                return false;
            if (peek() == u'?')
                return failUnread(u"a modification at a place that is not known"_s);
            if (peek() != u'-')
                return fail(m_at, u"has no '-' behind the modification of the N-terminus"_s);
            ++m_at;
        }
        while (m_at < m_text.size() && peek() != u'-') {
            if (!readResidue())
                return false;
        }
        if (m_residues.isEmpty())
            return fail(m_at, u"has no residue"_s);
        const QChar last = std::exchange(m_code, m_residues.front());
        for (const auto &[tag, position] : std::as_const(first)) {
            if (!add(tag, position, {Site::NTerminus, true, false}))
                return false;
        }
        m_code = last;
        return m_at == m_text.size() || readCTerminus();
    }

    /// @p text from between brackets, which begins at @p position.
    bool understand(QStringView text, qsizetype position, Tag *tag)
    {
        if (text.isEmpty())
            return fail(position, u"names no modification"_s);
        if (const qsizetype sign = text.indexOf(u'|'); sign >= 0)
            return fail(position + sign, u"has '|', and one modification is read from a bracket"_s);
        if (const qsizetype sign = text.indexOf(u'#'); sign >= 0)
            return fail(position + sign, u"has a cross-link or a group, which is not read"_s);
        constexpr QStringView kFormula = u"Formula:";
        if (text.startsWith(kFormula, Qt::CaseInsensitive))
            return readFormula(text.sliced(kFormula.size()), position + kFormula.size(), tag);
        for (const QStringView prefix : {u"UNIMOD:", u"U:", u"Obs:"}) {
            if (!text.startsWith(prefix, Qt::CaseInsensitive))
                continue;
            const QStringView rest = text.sliced(prefix.size());
            position += prefix.size();
            if (rest.startsWith(u'+') || rest.startsWith(u'-') || prefix == u"Obs:")
                return readMass(rest, position, tag);
            return prefix == u"U:" ? readName(rest, position, tag)
                                   : readNumber(rest, position, tag);
        }
        for (const QStringView prefix : {u"MOD:", u"M:", u"RESID:", u"R:", u"XLMOD:", u"X:",
                 u"GNO:", u"G:", u"Glycan:", u"C:", u"Info:"}) {
            if (text.startsWith(prefix, Qt::CaseInsensitive))
                return fail(position,
                    u"has '%1', and only names and numbers of Unimod are read"_s.arg(prefix));
        }
        return text.front() == u'+' || text.front() == u'-' ? readMass(text, position, tag)
                                                            : readName(text, position, tag);
    }

    /// Residues, water and modifications of known atoms.
    Result<ChemicalFormula> formula() const
    {
        auto chain = DeltaComposition::read(u"H2O").value();
        for (std::size_t i = 0; i < m_counts.size(); ++i) {
            if (m_counts[i] == 0)
                continue;
            const QChar code(u'A' + static_cast<char16_t>(i));
            if (auto error = chain.add(*ModifiedSequence::residue(code), m_counts[i]);
                error.hasError())
                return error;
        }
        auto formula = ChemicalFormula().plus(chain);
        return formula.hasError() ? formula : formula.value().plus(m_sum);
    }

    const QString &problem() const { return m_problem; }
    const QStringList &warnings() const { return m_warnings; }
    const QString &residues() const { return m_residues; }
    double massShift() const { return m_massShift; }
    bool hasMassShift() const { return m_hasMassShift; }

private:
    QChar peek() const { return m_at < m_text.size() ? m_text[m_at] : QChar(); }

    bool fail(qsizetype position, const QString &what)
    {
        m_problem =
            u"%1 %2 (column %3)"_s.arg(m_text.isEmpty() ? u"the sequence"_s : quoted(m_text), what,
                QString::number(position + 1));
        return false;
    }

    bool failUnread(const QString &what)
    {
        return fail(m_at, u"has %1, which is not read"_s.arg(what));
    }

    static QString quoted(QStringView text) { return detail::quotedHead(text); }

    /// Says why the next character cannot be a residue.
    bool failHere()
    {
        const QChar character = peek();
        if (character == u'B' || character == u'Z')
            return fail(m_at,
                u"has %1, which stands for %2; write which of them"_s.arg(
                    quoted(QString(character)), character == u'B' ? u"D or N"_s : u"E or Q"_s));
        if (character >= u'a' && character <= u'z')
            return fail(m_at,
                u"has %1; residues are capitals, and a modification stands in brackets behind "
                "its residue, as M[Oxidation]"_s.arg(quoted(QString(character))));
        if (character == u'/')
            return failUnread(
                m_text.sliced(m_at).startsWith(u"//") ? u"a second chain"_s : u"a charge"_s);
        constexpr std::array kUnread{std::pair(u'(', "a range of residues"_L1),
            std::pair(u'{', "a labile modification"_L1),
            std::pair(u'<', "a modification of the whole molecule"_L1),
            std::pair(u'+', "a second molecule"_L1)};
        for (const auto &[sign, meaning] : kUnread) {
            if (character == sign)
                return failUnread(meaning);
        }
        const bool isPair = character.isHighSurrogate() && m_at + 1 < m_text.size();
        return fail(m_at,
            character.isSpace() ? u"has a blank"_s
                                : u"has %1, which is no residue"_s.arg(
                                    quoted(m_text.sliced(m_at, isPair ? 2 : 1))));
    }

    /// A residue and its modifications.
    bool readResidue()
    {
        const qsizetype start = m_at;
        const QChar code = peek();
        m_code = code;
        const bool isGap = code == kGap;
        if (!isGap && !ModifiedSequence::residue(code))
            return failHere();
        m_residues.append(code);
        if (!isGap)
            ++m_counts[static_cast<std::size_t>(code.unicode() - u'A')];
        ++m_at;
        if (isGap && peek() != u'[')
            return fail(
                start, u"has 'X' without its mass, which stands behind it, as X[+113.08]"_s);
        QList<PlacedTag> tags;
        if (!readTags(&tags))
            return false;
        const bool isLast = m_at == m_text.size() || peek() == u'-';
        for (const auto &[tag, position] : std::as_const(tags)) {
            if (isGap && !tag.isMass)
                return fail(position, u"gives 'X' no mass, as X[+113.08] has it"_s);
            if (!add(tag, position, {Site::Residue, m_residues.size() == 1, isLast}))
                return false;
        }
        return true;
    }

    bool readCTerminus()
    {
        ++m_at; // '-'
        if (peek() != u'[')
            return fail(m_at, u"has no modification of the C-terminus behind '-'"_s);
        QList<PlacedTag> tags;
        if (!readTags(&tags))
            return false;
        for (const auto &[tag, position] : std::as_const(tags)) {
            if (!add(tag, position, {Site::CTerminus, false, true}))
                return false;
        }
        return m_at == m_text.size()
            || fail(
                m_at, u"has %1 where the sequence must end"_s.arg(quoted(m_text.sliced(m_at, 1))));
    }

    /// All brackets that stand here.
    bool readTags(QList<PlacedTag> *tags)
    {
        while (peek() == u'[') {
            tags->append({{}, m_at});
            if (!readTag(&tags->last().first))
                return false;
        }
        return true;
    }

    /// "[...]", which may hold brackets of its own.
    bool readTag(Tag *tag)
    {
        const qsizetype start = m_at;
        qsizetype depth = 0;
        do {
            depth += peek() == u'[' ? 1 : peek() == u']' ? -1 : 0;
            ++m_at;
        } while (depth > 0 && m_at < m_text.size());
        if (depth > 0)
            return fail(start, u"has no ']' for its '['"_s);
        const qsizetype inside = start + 1;
        return understand(m_text.sliced(inside, m_at - 1 - inside), inside, tag);
    }

    bool readFormula(QStringView text, qsizetype position, Tag *tag)
    {
        detail::AtomCounts counts; // checks; the column is that of the whole text
        if (const auto fault = detail::readComposition(text, &counts))
            return fail(position + fault->position, fault->what);
        tag->delta = DeltaComposition::read(text).value();
        return true;
    }

    /// "+15.9949"; digits with a point between them or none, nothing else.
    bool readMass(QStringView text, qsizetype position, Tag *tag)
    {
        const QStringView digits = text.sliced(std::min(text.size(), qsizetype(1)));
        const auto isDigitOrPoint = [](QChar character) {
            return (character >= u'0' && character <= u'9') || character == u'.';
        };
        bool isNumber =
            !digits.isEmpty() && std::all_of(digits.begin(), digits.end(), isDigitOrPoint);
        const double size = isNumber ? digits.toDouble(&isNumber) : 0.0;
        if (!isNumber || !(text.front() == u'+' || text.front() == u'-'))
            return fail(
                position, u"has %1, which is no mass in daltons, as +15.9949"_s.arg(quoted(text)));
        if (!(size <= kLargestShift))
            return fail(position, u"has a mass of %1, which is too large"_s.arg(quoted(text)));
        tag->isMass = true;
        tag->massDa = text.front() == u'-' ? -size : size;
        return true;
    }

    bool readName(QStringView text, qsizetype position, Tag *tag)
    {
        tag->known = Modifications::find(text);
        if (!tag->known && text.size() > 0 && text.front() >= u'0' && text.front() <= u'9')
            return fail(position, u"has %1; a mass has a sign, as [+15.9949]"_s.arg(quoted(text)));
        return tag->known ? known(tag) : failUnknown(text, position);
    }

    bool readNumber(QStringView text, qsizetype position, Tag *tag)
    {
        bool isNumber = !text.isEmpty() && text.front() != u'+';
        const int number = isNumber ? text.toInt(&isNumber) : 0;
        if (!isNumber)
            return fail(
                position, u"has %1 where a number of Unimod must stand"_s.arg(quoted(text)));
        tag->known = Modifications::find(number);
        return tag->known ? known(tag) : failUnknown(text, position);
    }

    static bool known(Tag *tag)
    {
        tag->delta = tag->known->delta();
        return true;
    }

    bool failUnknown(QStringView text, qsizetype position)
    {
        const QString what =
            u"none of the %1 modifications that are known; give its atoms as "
            "[Formula:C2H2O] or its mass as [+42.0106]"_s.arg(Modifications::all().size());
        return fail(position,
            text.size() == m_text.size() ? "is "_L1 + what
                                         : u"has %1, which is %2"_s.arg(quoted(text), what));
    }

    bool add(const Tag &tag, qsizetype position, Site site)
    {
        if (tag.isMass) {
            m_massShift += tag.massDa;
            m_hasMassShift = true;
            return true;
        }
        if (auto error = m_sum.add(tag.delta); error.hasError())
            return fail(position, u"changes too much: %1"_s.arg(error.message()));
        if (tag.known && !fits(*tag.known, site))
            m_warnings.append(
                u"%2%3 is not known to carry %4 (column %1)"_s.arg(QString::number(position + 1),
                    site.place == Site::Residue         ? QString()
                        : site.place == Site::NTerminus ? u"the N-terminus of "_s
                                                        : u"the C-terminus of "_s,
                    m_code, tag.known->name));
        return true;
    }

    bool fits(const Modification &modification, Site site) const
    {
        return (site.place == Site::Residue && names(modification.residues, m_code))
            || (site.isFirst && names(modification.nTerminus, m_code))
            || (site.isLast && names(modification.cTerminus, m_code));
    }

    QStringView m_text;
    qsizetype m_at = 0; // of the next character
    QString m_residues;
    QChar m_code; // of the residue that is spoken of
    std::array<int, 26> m_counts{}; // of residues, by letter
    DeltaComposition m_sum; // of modifications
    double m_massShift = 0.0;
    bool m_hasMassShift = false;
    QStringList m_warnings;
    QString m_problem;
};

} // namespace

const DeltaComposition *ModifiedSequence::residue(QChar code)
{
    static const auto compositions = [] {
        std::array<std::optional<DeltaComposition>, 26> all;
        for (const Residue &each : kResidues)
            all[static_cast<std::size_t>(each.code - 'A')] =
                DeltaComposition::read(QString(each.composition)).value();
        return all;
    }();
    if (code < u'A' || code > u'Z')
        return nullptr;
    const auto &found = compositions[static_cast<std::size_t>(code.unicode() - u'A')];
    return found ? &*found : nullptr;
}

Result<Tag> ModifiedSequence::Tag::read(QStringView text)
{
    Tag tag;
    Reader reader(text);
    if (!reader.understand(text, 0, &tag))
        return detail::stamped(at::tagNotUnderstood, Q_FUNC_INFO,
            Result<Tag>(Error(ErrorCode::GeneralFailure, reader.problem())));
    return tag;
}

Result<ModifiedSequence> ModifiedSequence::read(QStringView text)
{
    Reader reader(text);
    const auto refused = [](const QString &problem) {
        return detail::stamped(at::notUnderstood, Q_FUNC_INFO,
            Result<ModifiedSequence>(Error(ErrorCode::GeneralFailure, problem)));
    };
    if (!reader.read())
        return refused(reader.problem());
    auto formula = reader.formula();
    if (formula.hasError())
        return refused(u"%1 is no molecule: %2 (column 1)"_s.arg(
            detail::quotedHead(text), formula.error().message()));
    ModifiedSequence sequence;
    sequence.m_residues = reader.residues();
    sequence.m_formula = std::move(formula).value();
    sequence.m_massShift = reader.massShift();
    sequence.m_hasMassShift = reader.hasMassShift();
    Result<ModifiedSequence> result(std::move(sequence));
    result.addWarnings(reader.warnings());
    return result;
}

} // namespace vex
