#include <vex/FileUtilsGeneric.h>
#include <vex/PathCheck.h>

#include "detail/LocalPath.h"
#include "detail/NameCharacters.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

using Finding = PathCheck::Finding;

constexpr qsizetype kLongestName = 255; // NTFS: UTF-16 code units; ext4, xfs, btrfs: bytes
constexpr qsizetype kLongestPathWindows = 259; // MAX_PATH of the Windows API, without the NUL
constexpr qsizetype kLongestPathLinux = 4095; // PATH_MAX of Linux, without the NUL

QString tr(const char *text)
{
    return FileUtilsGeneric::tr(text);
}

/// How a message shows a character.
QString shown(QChar character)
{
    if (character.isPrint() && !character.isSurrogate())
        return u'\'' + QString(character) + u'\'';
    const QString code = QString::number(character.unicode(), 16).toUpper();
    return "U+"_L1 + code.rightJustified(4, u'0');
}

/// Position of the first half of a surrogate pair that stands alone; -1 when there is none.
qsizetype loneSurrogate(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text[i].isSurrogate())
            continue;
        if (i + 1 == text.size() || !text[i].isHighSurrogate() || !text[i + 1].isLowSurrogate())
            return i;
        ++i;
    }
    return -1;
}

/// Collects what there is to say about a text.
class Examination
{
public:
    explicit Examination(const QString &text) { m_check.text = text; }

    void add(Finding::Kind kind, qsizetype position, qsizetype length, const QString &message)
    {
        m_check.findings.append({kind, position, length, message});
    }

    /// Adds the characters of a part that no name, or no path, may hold.
    void testCharacters(qsizetype start, qsizetype length, detail::CharacterClass notAllowed)
    {
        const QStringView part = QStringView(m_check.text).sliced(start, length);
        const qsizetype lone = loneSurrogate(part);
        if (lone >= 0)
            add(Finding::InvalidText, start + lone, 1,
                tr("Half of a character, %1, stands alone: it keeps all others from being tested")
                    .arg(shown(part[lone])));
        for (qsizetype i = 0; i < length; ++i) {
            if ((detail::classOf(part[i]) & notAllowed) == 0)
                continue;
            if (lone < 0)
                add(Finding::UnsupportedCharacter, start + i, 1,
                    tr("%1 is not allowed").arg(shown(part[i])));
            else
                add(Finding::UntestedCharacter, start + i, 1,
                    tr("%1 is not allowed, but has not been tested").arg(shown(part[i])));
        }
    }

    /// Adds what systems make of one name.
    void adviseOnName(qsizetype start, qsizetype length)
    {
        const QString name = m_check.text.sliced(start, length);
        // Naming Files, Paths, and Namespaces (Microsoft): with any suffix, in any case
        static const QRegularExpression reserved(
            u"^(CON|PRN|AUX|NUL|CONIN\\$|CONOUT\\$|(COM|LPT)[0-9\u00b9\u00b2\u00b3]) *(\\.|$)"_s,
            QRegularExpression::CaseInsensitiveOption);
        if (const auto match = reserved.match(name); match.hasMatch())
            add(Finding::ReservedName, start, length,
                tr("Windows takes '%1' for the device %2").arg(name, match.captured(1).toUpper()));
        if (name.endsWith(u'.') || name.endsWith(u' ')) {
            const auto isKept = [](QChar character) {
                return character != u'.' && character != u' ';
            };
            const auto kept = std::find_if(name.rbegin(), name.rend(), isKept);
            const qsizetype dropped = kept - name.rbegin();
            add(Finding::DotOrBlankAtEnd, start + length - dropped, dropped,
                tr("Windows drops dots and blanks at the end of a name"));
        }
        const qsizetype bytes = name.toUtf8().size();
        if (length > kLongestName || bytes > kLongestName)
            add(Finding::LongName, start, length,
                tr("The name has %1 characters and %2 bytes: Windows takes 255 characters, Linux "
                   "255 "
                   "bytes")
                    .arg(length)
                    .arg(bytes));
    }

    /// Adds what systems make of the length of the whole.
    void adviseOnPath()
    {
        const qsizetype length = m_check.text.size();
        const qsizetype bytes = m_check.text.toUtf8().size();
        if (length > kLongestPathWindows || bytes > kLongestPathLinux)
            add(Finding::LongPath, 0, length,
                tr("The path has %1 characters and %2 bytes: many programs for Windows take 259 "
                   "characters, Linux 4095 bytes")
                    .arg(length)
                    .arg(bytes));
    }

    PathCheck result() &&
    {
        std::stable_sort(m_check.findings.begin(), m_check.findings.end(),
            [](const Finding &a, const Finding &b) { return a.position < b.position; });
        return std::move(m_check);
    }

private:
    PathCheck m_check;
};

bool isDots(QStringView part)
{
    return part == u"." || part == u"..";
}

} // namespace

PathCheck PathCheck::ofFileName(const QString &name)
{
    Examination examination(name);
    if (name.isEmpty())
        examination.add(Finding::Empty, 0, 0, tr("The name is empty"));
    examination.testCharacters(0, name.size(), detail::NotInName);
    examination.adviseOnName(0, name.size());
    return std::move(examination).result();
}

PathCheck PathCheck::ofFilePath(const QString &path)
{
    Examination examination(path);
    if (path.isEmpty())
        examination.add(Finding::Empty, 0, 0, tr("The path is empty"));
    examination.testCharacters(0, path.size(), detail::NotInPath);
    qsizetype start = 0;
    for (const QString &part : path.split(FileUtilsGeneric::pathSeparatorsRegex())) {
        if (!isDots(part))
            examination.adviseOnName(start, part.size());
        start += part.size() + 1;
    }
    examination.adviseOnPath();
    return std::move(examination).result();
}

PathCheck PathCheck::ofLocalPath(const QString &path)
{
    const detail::LocalPath local(path);
    Examination examination(local.text);
    if (local.problem == Finding::Empty)
        examination.add(Finding::Empty, 0, 0, tr("The path is empty"));
    if (local.problem == Finding::NothingBehindServerPrefix)
        examination.add(Finding::NothingBehindServerPrefix, 0, local.text.size(),
            tr("Nothing follows the \"//\" of a server"));
    qsizetype start = local.start;
    for (const QString &part : local.parts) {
        if (start == local.start && local.problem == Finding::UnknownDrive) {
            examination.add(Finding::UnknownDrive, start, part.size(),
                tr("'%1' is no drive: one character and a colon").arg(part));
        } else {
            if (part.isEmpty())
                examination.add(Finding::Empty, start, 0, tr("A part of the path is empty"));
            examination.testCharacters(start, part.size(), detail::NotInName);
            if (!isDots(part))
                examination.adviseOnName(start, part.size());
        }
        start += part.size() + 1;
    }
    examination.adviseOnPath();
    return std::move(examination).result();
}

bool PathCheck::isValid() const
{
    return std::none_of(findings.begin(), findings.end(),
        [](const Finding &finding) { return finding.isReason(); });
}

} // namespace vex
