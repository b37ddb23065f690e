#include "input/Fasta.h"

#include "Failure.h"
#include "output/Messages.h"
#include "output/Text.h"

#include <vex/ResidueCompositions.h>

#include <QByteArray>
#include <QJsonObject>

#include <string_view>
#include <utility>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using AtomCounts = vex::ResidueCompositions::AtomCounts;

constexpr std::string_view kWater = "1";
constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF"; // editors on Windows begin UTF-8 with it
constexpr qsizetype kChunk = 1 << 16; // bytes read at a time
constexpr qsizetype kMostWarnings = 20; // about sequences with odd residues
constexpr qsizetype kLongestHeader = 1 << 12; // bytes kept of a header line
constexpr qint64 kShortestMask = 4; // small letters; fewer among capitals are a modification
constexpr std::string_view kOddResidues = "BUXZ";
constexpr AtomCounts kPyrrolysine{12, 19, 3, 2, 0};
// IUPAC standard atomic weight (2013), and the mass of the most abundant isotope, 80Se (AME2020)
constexpr double kSeleniumAverage = 78.971; // daltons
constexpr double kSeleniumMonoisotopic = 79.9165218; // daltons

/// Residues by character code; letters in both cases, null for all that is no residue.
std::array<const AtomCounts *, 256> residuesByCharacter()
{
    std::array<const AtomCounts *, 256> residues{};
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const AtomCounts *atoms = vex::ResidueCompositions::find(std::string_view(&letter, 1));
        if (letter == 'J')
            atoms = vex::ResidueCompositions::find("L");
        else if (letter == 'O')
            atoms = &kPyrrolysine;
        residues[static_cast<unsigned char>(letter)] = atoms;
        residues[static_cast<unsigned char>(letter - 'A' + 'a')] = atoms;
    }
    return residues;
}

template <typename Atoms>
void add(std::array<qint64, 5> *sum, const Atoms &atoms)
{
    for (std::size_t i = 0; i < sum->size(); ++i)
        (*sum)[i] += atoms[i];
}

bool isSmall(char character)
{
    return character >= 'a' && character <= 'z';
}

QString shownByte(char character)
{
    const auto code = static_cast<unsigned char>(character);
    return code > 0x20 && code < 0x7f ? u"'%1'"_s.arg(QLatin1Char(character))
                                      : u"byte 0x%1"_s.arg(uint(code), 2, 16, QLatin1Char('0'));
}

/// Takes a FASTA file in, byte by byte.
class Reader
{
public:
    Reader(const QString &name, BadRecords *bad)
        : m_name(name)
        , m_bad(bad)
    {
    }

    vex::Error take(char character)
    {
        const bool isSecondOfEnd = character == '\n' && m_before == '\r';
        m_before = character;
        if (isSecondOfEnd)
            return vex::ErrorCode::NoError;
        ++m_column;
        if (character == '\n' || character == '\r') {
            if (m_state == Header)
                beginRecord();
            ++m_line;
            m_column = 0;
            m_state = LineStart;
            return vex::ErrorCode::NoError;
        }
        if (m_state == LineStart && character == '>') {
            auto error = endRecord();
            m_state = Header;
            m_header.clear();
            return error;
        }
        if (m_state == LineStart)
            m_state = character == ';' ? Comment : Sequence;
        if (m_state == Header && m_header.size() < kLongestHeader)
            m_header.append(character);
        return m_state == Sequence ? takeResidue(character) : vex::ErrorCode::NoError;
    }

    vex::Result<QList<Protein>> finish()
    {
        if (m_state == Header)
            beginRecord();
        if (auto error = endRecord(); error.hasError())
            return error;
        if (m_proteins.isEmpty() && !m_bad->verdict().hasError())
            return failure(u"%1 holds no sequence"_s.arg(m_name));
        return std::move(m_proteins);
    }

private:
    enum State {
        LineStart,
        Header,
        Comment,
        Sequence
    };

    vex::Error takeResidue(char character)
    {
        if (character == ' ' || character == '\t' || m_isLeftOut)
            return vex::ErrorCode::NoError;
        static const auto residues = residuesByCharacter();
        const AtomCounts *atoms = residues[static_cast<unsigned char>(character)];
        if (!atoms)
            return leaveOut(u"%1, line %2, column %3: %4 is no residue code (%5)"_s.arg(m_name,
                QString::number(m_line), QString::number(m_column), shownByte(character),
                m_current ? m_current->name : u"before the first '>'"_s));
        if (!m_current)
            return leaveOut(
                u"%1, line %2: sequence without a header line that begins with '>'"_s.arg(
                    m_name, QString::number(m_line)));
        if (isSmall(character)) {
            if (m_smallCount == 0) {
                m_smallLine = m_line;
                m_smallColumn = m_column;
                m_smallText.clear();
            }
            if (++m_smallCount < kShortestMask)
                m_smallText += QLatin1Char(character);
        } else {
            m_hasCapital = true;
            if (auto error = endSmallLetters(); error.hasError() || m_isLeftOut)
                return error;
        }
        add(&m_current->atoms, *atoms);
        ++m_current->length;
        const char capital =
            isSmall(character) ? static_cast<char>(character - 'a' + 'A') : character;
        ++m_current->places[std::size_t(capital - 'A')];
        m_current->last = QLatin1Char(capital);
        if (m_current->length == 1)
            m_current->first = m_current->last;
        return vex::ErrorCode::NoError;
    }

    /// Judges the small letters before a capital, or before the end of a record.
    vex::Error endSmallLetters()
    {
        const qint64 count = std::exchange(m_smallCount, 0);
        if (count == 0 || count >= kShortestMask || !m_hasCapital)
            return vex::ErrorCode::NoError;
        return leaveOut(
            u"%1, line %2, column %3: '%4' in small letters among capitals looks like a "
            "modification, which a sequence cannot carry (%5)"_s.arg(m_name,
                QString::number(m_smallLine), QString::number(m_smallColumn), m_smallText,
                m_current->name));
    }

    void beginRecord()
    {
        const QString header = QString::fromUtf8(m_header).simplified();
        ++m_count;
        m_current = Protein{};
        m_current->name = header.section(u' ', 0, 0);
        if (m_current->name.isEmpty())
            m_current->name = u"record %1"_s.arg(m_count);
        m_recordLine = m_line;
        m_isLeftOut = false;
        m_hasCapital = false;
        m_smallCount = 0;
    }

    vex::Error endRecord()
    {
        if (m_current && !m_isLeftOut) {
            if (auto error = endSmallLetters(); error.hasError())
                return error;
        }
        if (m_current && !m_isLeftOut && m_current->length == 0) {
            if (auto error = leaveOut(u"%1, line %2: %3 has no sequence"_s.arg(
                    m_name, QString::number(m_recordLine), m_current->name));
                error.hasError())
                return error;
        }
        if (m_current && !m_isLeftOut) {
            add(&m_current->atoms, *vex::ResidueCompositions::find(kWater));
            m_proteins.append(std::move(*m_current));
        }
        m_current.reset();
        m_isLeftOut = false;
        return vex::ErrorCode::NoError;
    }

    /// The record cannot be used; the rest of it is passed over if the reading goes on.
    vex::Error leaveOut(const QString &problem)
    {
        m_isLeftOut = true;
        return m_bad->leaveOut(failure(problem));
    }

    QString m_name;
    BadRecords *m_bad;
    QList<Protein> m_proteins;
    std::optional<Protein> m_current;
    bool m_isLeftOut = false; // the current record
    QByteArray m_header;
    State m_state = LineStart;
    char m_before = 0;
    qint64 m_line = 1;
    qint64 m_column = 0;
    qint64 m_recordLine = 0;
    qint64 m_count = 0; // records begun
    bool m_hasCapital = false; // the current record
    qint64 m_smallCount = 0; // small letters in a row
    qint64 m_smallLine = 0; // where they begin
    qint64 m_smallColumn = 0;
    QString m_smallText; // the first of them
};

} // namespace

QHash<vex::MolecularFormula::AtomType, double> countsOf(const Protein &protein)
{
    using vex::MolecularFormula;
    const auto &[c, h, n, o, s] = protein.atoms;
    return {{MolecularFormula::C, double(c)}, {MolecularFormula::H, double(h)},
        {MolecularFormula::N, double(n)}, {MolecularFormula::O, double(o)},
        {MolecularFormula::S, double(s)}};
}

vex::MolecularFormula formulaOf(const Protein &protein)
{
    vex::MolecularFormula formula;
    formula.setMolecularFormula(countsOf(protein));
    return formula;
}

QString formulaText(const Protein &protein)
{
    constexpr char kSymbols[] = "CHNOS";
    QString text;
    for (std::size_t i = 0; i < protein.atoms.size(); ++i) {
        if (protein.atoms[i] == 0)
            continue;
        text += QLatin1Char(kSymbols[i]);
        if (protein.atoms[i] > 1)
            text += QString::number(protein.atoms[i]);
    }
    return text;
}

QString Protein::kinds() const
{
    QString chain(first);
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (placesOf(letter) > 0)
            chain += QLatin1Char(letter);
    }
    return chain + last;
}

vex::Result<vex::ChemicalFormula> exactFormulaOf(const Protein &protein)
{
    const qint64 selenium = protein.placesOf('U');
    return passedOn(vex::ChemicalFormula::read(
        formulaText(protein) + (selenium > 0 ? "Se"_L1 + QString::number(selenium) : QString())));
}

QList<OddResidue> oddResiduesOf(const Protein &protein, bool isSeleniumCounted)
{
    QList<OddResidue> odd;
    for (const char code : kOddResidues) {
        const qint64 count = protein.placesOf(code);
        if (count == 0 || (code == 'U' && isSeleniumCounted))
            continue;
        OddResidue residue{code, count, {}, {}, {}};
        switch (code) {
        case 'B':
            residue.text = u"counted as N; a D is 0.98 Da heavier"_s;
            break;
        case 'Z':
            residue.text = u"counted as Q; an E is 0.98 Da heavier"_s;
            break;
        case 'X':
            residue.text = u"any residue, counted as the average one C6H10NO, 112.15 Da"_s;
            break;
        default:
            residue.missingAverageMass = kSeleniumAverage * double(count);
            residue.missingMonoisotopicMass = kSeleniumMonoisotopic * double(count);
            residue.text =
                u"selenium is not counted; the average mass is %1 Da too low, the monoisotopic "
                "one %2 Da, and the pattern lacks the isotopes of selenium"_s.arg(
                    fixedNumber(*residue.missingAverageMass, 2),
                    fixedNumber(*residue.missingMonoisotopicMass, 2));
        }
        odd.append(residue);
    }
    return odd;
}

QJsonArray jsonOf(const QList<OddResidue> &residues)
{
    const auto number = [](std::optional<double> mass) {
        return mass ? QJsonValue(*mass) : QJsonValue();
    };
    QJsonArray array;
    for (const OddResidue &residue : residues)
        array.append(QJsonObject{{u"residue"_s, QString(QLatin1Char(residue.code))},
            {u"count"_s, residue.count}, {u"note"_s, residue.text},
            {u"missingAverageMassDa"_s, number(residue.missingAverageMass)},
            {u"missingMonoisotopicMassDa"_s, number(residue.missingMonoisotopicMass)}});
    return array;
}

void OddResidueWarnings::add(const QString &name, const QList<OddResidue> &residues)
{
    if (residues.isEmpty() || ++m_count > kMostWarnings)
        return;
    for (const OddResidue &residue : residues)
        warn(u"%1: %2 at %3: %4"_s.arg(name, QLatin1StringView(&residue.code, 1),
            counted(residue.count, u"place"_s), residue.text));
}

void OddResidueWarnings::finish(QLatin1StringView codes) const
{
    if (m_count > kMostWarnings)
        warn(u"%1 with %2; --json tells of each"_s.arg(
            counted(m_count - kMostWarnings, u"more sequence"_s), codes));
}

vex::Result<QList<Protein>> readFasta(const QString &path, BadRecords *bad)
{
    auto input = Input::open(path);
    if (input.hasError())
        return passedOn(std::move(input).error());
    Reader reader(input.value()->name(), bad);
    QByteArray chunk(kChunk, Qt::Uninitialized);
    bool isStart = true;
    qint64 size = 0;
    for (bool isEnd = false; !isEnd; size = 0) {
        do { // a pipe may give the byte order mark in pieces
            auto got = input.value()->read(chunk.data() + size, kChunk - size);
            if (got.hasError())
                return passedOn(std::move(got).error());
            size += got.value();
            isEnd = got.value() == 0;
        } while (isStart && !isEnd && size < kByteOrderMark.size());
        QByteArrayView bytes(chunk.constData(), size);
        if (std::exchange(isStart, false) && bytes.startsWith(kByteOrderMark))
            bytes = bytes.sliced(kByteOrderMark.size());
        for (const char character : bytes) {
            if (auto error = reader.take(character); error.hasError())
                return passedOn(std::move(error));
        }
    }
    return passedOn(reader.finish());
}

} // namespace vexcli
