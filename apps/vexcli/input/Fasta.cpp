#include "input/Fasta.h"

#include "Failure.h"
#include "output/Progress.h"

#include <vex/ResidueCompositions.h>

#include <QFile>
#include <QHash>
#include <QMap>

#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using AtomCounts = vex::ResidueCompositions::AtomCounts;

constexpr std::string_view kWater = "1";
constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF"; // editors on Windows begin UTF-8 with it
constexpr qsizetype kChunk = 1 << 16; // bytes read at a time
constexpr qsizetype kLongestHeader = 1 << 12; // bytes kept of a header line

/// Residues by character code; letters in both cases, null for all that is no residue.
std::array<const AtomCounts *, 256> residuesByCharacter()
{
    std::array<const AtomCounts *, 256> residues{};
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const AtomCounts *atoms = vex::ResidueCompositions::find(std::string_view(&letter, 1));
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

QString shown(char character)
{
    const auto code = static_cast<unsigned char>(character);
    return code > 0x20 && code < 0x7f ? u"'%1'"_s.arg(QLatin1Char(character))
                                      : u"byte 0x%1"_s.arg(uint(code), 2, 16, QLatin1Char('0'));
}

/// Takes a FASTA file in, byte by byte.
class Reader
{
public:
    explicit Reader(const QString &path)
        : m_path(path)
    {
    }

    vex::Error take(const QByteArray &bytes)
    {
        for (const char character : bytes) {
            if (auto error = take(character); error.hasError())
                return error;
        }
        return vex::ErrorCode::NoError;
    }

    vex::Result<QList<Protein>> finish()
    {
        if (m_state == Header)
            beginRecord();
        if (auto error = endRecord(); error.hasError())
            return error;
        if (m_proteins.isEmpty())
            return failure(u"%1 holds no sequence"_s.arg(m_path));
        vex::Result<QList<Protein>> result(std::move(m_proteins));
        for (auto entry = m_ambiguous.cbegin(); entry != m_ambiguous.cend(); ++entry)
            result.addWarning(
                u"%1: %2 stands for more than one residue or atom composition; "
                "its %3 places count as the table has them"_s.arg(
                    m_path, QString(QLatin1Char(entry.key())), QString::number(entry.value())));
        return result;
    }

private:
    enum State {
        LineStart,
        Header,
        Comment,
        Sequence
    };

    vex::Error take(char character)
    {
        ++m_column;
        if (character == '\n') {
            if (m_state == Header)
                beginRecord();
            ++m_line;
            m_column = 0;
            m_state = LineStart;
            return vex::ErrorCode::NoError;
        }
        if (m_state == LineStart && character == '>') {
            m_state = Header;
            m_header.clear();
            return endRecord();
        }
        if (m_state == LineStart)
            m_state = character == ';' ? Comment : Sequence;
        switch (m_state) {
        case Header:
            if (m_header.size() < kLongestHeader)
                m_header.append(character);
            break;
        case Sequence:
            return takeResidue(character);
        default:
            break;
        }
        return vex::ErrorCode::NoError;
    }

    vex::Error takeResidue(char character)
    {
        if (character == '\r' || character == ' ' || character == '\t')
            return vex::ErrorCode::NoError;
        static const auto residues = residuesByCharacter();
        const AtomCounts *atoms = residues[static_cast<unsigned char>(character)];
        if (!atoms)
            return failure(u"%1, line %2, column %3: %4 is no residue code (%5)"_s.arg(m_path,
                QString::number(m_line), QString::number(m_column), shown(character),
                m_current ? m_current->name : u"before the first '>'"_s));
        if (!m_current)
            return failure(
                u"%1, line %2: sequence without a header line that begins with '>'"_s.arg(
                    m_path, QString::number(m_line)));
        add(&m_current->atoms, *atoms);
        ++m_current->length;
        if (std::string_view("BZXUbzxu").find(character) != std::string_view::npos)
            ++m_ambiguous[character >= 'a' ? static_cast<char>(character - 'a' + 'A') : character];
        return vex::ErrorCode::NoError;
    }

    void beginRecord()
    {
        const QString header = QString::fromUtf8(m_header).simplified();
        m_current = Protein{};
        m_current->name = header.section(u' ', 0, 0);
        if (m_current->name.isEmpty())
            m_current->name = u"record %1"_s.arg(m_proteins.size() + 1);
        m_recordLine = m_line;
    }

    vex::Error endRecord()
    {
        if (!m_current)
            return vex::ErrorCode::NoError;
        if (m_current->length == 0)
            return failure(u"%1, line %2: %3 has no sequence"_s.arg(
                m_path, QString::number(m_recordLine), m_current->name));
        add(&m_current->atoms, *vex::ResidueCompositions::find(kWater));
        m_proteins.append(std::move(*m_current));
        m_current.reset();
        return vex::ErrorCode::NoError;
    }

    QString m_path;
    QList<Protein> m_proteins;
    std::optional<Protein> m_current;
    QByteArray m_header;
    QMap<char, qint64> m_ambiguous; // places of each
    State m_state = LineStart;
    qint64 m_line = 1;
    qint64 m_column = 0;
    qint64 m_recordLine = 0;
};

} // namespace

vex::MolecularFormula formulaOf(const Protein &protein)
{
    using Formula = vex::MolecularFormula;
    constexpr std::array kTypes{Formula::C, Formula::H, Formula::N, Formula::O, Formula::S};
    QHash<Formula::AtomType, double> counts;
    for (std::size_t i = 0; i < kTypes.size(); ++i)
        counts.insert(kTypes[i], static_cast<double>(protein.atoms[i]));
    Formula formula;
    formula.setMolecularFormula(counts);
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

vex::Result<QList<Protein>> readFasta(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(u"cannot read %1: %2"_s.arg(path, file.errorString()));
    Reader reader(path);
    Progress progress(u"reading"_s, file.size());
    qint64 done = 0;
    if (file.peek(kByteOrderMark.size()) == kByteOrderMark)
        file.skip(kByteOrderMark.size());
    while (true) {
        const QByteArray bytes = file.read(kChunk);
        if (file.error() != QFileDevice::NoError)
            return failure(u"cannot read %1: %2"_s.arg(path, file.errorString()));
        if (bytes.isEmpty())
            break;
        if (auto error = reader.take(bytes); error.hasError())
            return passedOn(std::move(error));
        if (isInterrupted())
            return failure(u"interrupted, nothing was written"_s);
        progress.update(done += bytes.size());
    }
    return passedOn(reader.finish());
}

} // namespace vexcli
