#include <vex/FileUtilsGeneric.h>

#include "detail/Companions.h"
#include "detail/FolderMove.h"
#include "detail/LocalPath.h"
#include "detail/NameCharacters.h"
#include "detail/Place.h"
#include "detail/TextRows.h"
#include "detail/Trace.h"
#include "platform/Folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <algorithm>
#include <array>
#include <tuple>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file, those of a move aside. The numbers are part of the interface: never
// renumber.
constexpr detail::TraceSource kSource{"src/FileUtilsGeneric"};
namespace at {
constexpr auto folderNotDeleted = kSource.line(168);
constexpr auto pathNotCreated = kSource.line(271);
constexpr auto fileNotCopied = kSource.line(391);
constexpr auto noBaseForResource = kSource.line(441); // chosen here
constexpr auto rowsNotOpened = kSource.line(442); // chosen here
constexpr auto rowsNotRead = kSource.line(443); // chosen here
constexpr auto fileNotOpened = kSource.line(444); // chosen here
constexpr auto fileNotRead = kSource.line(445); // chosen here
constexpr auto jsonNotRead = kSource.line(446); // chosen here
} // namespace at

const QList<QChar> &separators()
{
    static const QList<QChar> list(detail::kSeparators.begin(), detail::kSeparators.end());
    return list;
}

/// The list without separators: what a path may not hold either.
QList<QString> pathUnsupportedCharacters()
{
    QList<QString> list;
    for (const QChar character : detail::kNotInPath)
        list.append(character);
    for (char16_t code = 0; code < detail::kFirstPrintable; ++code)
        list.append(QChar(code));
    return list;
}

const QList<QString> &unsupportedList()
{
    static const QList<QString> list = [] {
        QList<QString> all(separators().begin(), separators().end());
        return all + pathUnsupportedCharacters();
    }();
    return list;
}

/// Matches any one of the characters, which stand in the pattern as they are.
QRegularExpression anyOf(QString characters)
{
    characters.replace(u'\\', u"\\\\"_s);
    return QRegularExpression(u'[' + characters + u']');
}

/// A set of characters: its bit, and the pattern that decides on text that is no valid UTF-16.
struct CharacterSet
{
    detail::CharacterClass bit;
    QRegularExpression pattern;
};

const CharacterSet &notInName()
{
    static const CharacterSet set{detail::NotInName, anyOf(unsupportedList().join(QString()))};
    return set;
}

const CharacterSet &notInPath()
{
    static const CharacterSet set{
        detail::NotInPath, anyOf(pathUnsupportedCharacters().join(QString()))};
    return set;
}

bool isFreeOf(const CharacterSet &set, const QString &text)
{
    if (text.isEmpty())
        return false;
    const quint16 classes = detail::classesOf(text);
    if ((classes & detail::Surrogate) == 0 || text.isValidUtf16())
        return (classes & set.bit) == 0;
    return !text.contains(set.pattern);
}

QString without(const CharacterSet &set, const QString &text, const QString &replacement)
{
    const quint16 classes = detail::classesOf(text);
    if ((classes & set.bit) == 0)
        return text;
    if ((classes & detail::Surrogate) != 0 && !text.isValidUtf16())
        return QString(text).replace(set.pattern, replacement);
    const auto replaced = set.bit == detail::NotInName ? detail::replaced<detail::NotInName>
                                                       : detail::replaced<detail::NotInPath>;
    if (replacement.size() == 1)
        return replaced(text, replacement.front());
    // no set is without U+0000, so that it can mark what the longer text replaces
    return replaced(text, QChar::Null).replace(QChar::Null, replacement);
}

bool hasSeparatorAt(const QString &path, qsizetype position)
{
    return !path.isEmpty() && separators().contains(path[position]);
}

constexpr qint64 kPiece = 1 << 16; // bytes that are read at once

/// Opens @p file for reading; why that fails, or nothing.
QString problemOfOpening(QFile *file)
{
    // Qt logs an empty name besides what it says, and opens what stands in front of a NUL.
    if (file->fileName().isEmpty())
        return u"No file name specified"_s;
    if (file->fileName().contains(QChar::Null))
        return FileUtilsGeneric::tr("The name holds a NUL");
    return file->open(QIODevice::ReadOnly) ? QString() : file->errorString();
}

/// Hands @p take all that is left of @p file in pieces; why that fails, or nothing.
template <typename Take>
QString problemOfReading(QFile *file, Take take)
{
    // Up to the end, not up to the size: a read that fails in the middle first gives less.
    for (QByteArray piece; !(piece = file->read(kPiece)).isEmpty();)
        take(piece);
    return file->error() == QFileDevice::NoError ? QString() : file->errorString();
}

Error readFailure(const QString &text, const QString &path, const QString &problem)
{
    return Error(ErrorCode::FileAccessError, text.arg(path, problem));
}

Result<QByteArray> contentOf(const QString &path)
{
    const QString shown = QDir::toNativeSeparators(path);
    QFile file(path);
    if (const QString problem = problemOfOpening(&file); !problem.isEmpty())
        return detail::stamped(at::fileNotOpened, Q_FUNC_INFO,
            readFailure(
                FileUtilsGeneric::tr("Cannot open file %1 for reading: %2"), shown, problem));
    QByteArray bytes;
    const QString problem =
        problemOfReading(&file, [&bytes](const QByteArray &piece) { bytes += piece; });
    if (!problem.isEmpty())
        return detail::stamped(at::fileNotRead, Q_FUNC_INFO,
            readFailure(FileUtilsGeneric::tr("Cannot read from %1: %2"), shown, problem));
    return bytes;
}

} // namespace

QString FileUtilsGeneric::cleanPath(const QString &path, bool removeLeadingSlash)
{
    const QString clean = QDir::cleanPath(path);
    return removeLeadingSlash && clean.startsWith(u'/') ? clean.sliced(1) : clean;
}

bool FileUtilsGeneric::compare(const QString &a, const QString &b)
{
    return QDir::cleanPath(a) == QDir::cleanPath(b);
}

QList<QChar> FileUtilsGeneric::pathSeparators()
{
    return separators();
}

QRegularExpression FileUtilsGeneric::pathSeparatorsRegex()
{
    static const QRegularExpression pattern =
        anyOf(QString(separators().constData(), separators().size()));
    return pattern;
}

bool FileUtilsGeneric::startsWithPathSeparator(const QString &path)
{
    return hasSeparatorAt(path, 0);
}

bool FileUtilsGeneric::endsWithPathSeparator(const QString &path)
{
    return hasSeparatorAt(path, path.size() - 1);
}

QString FileUtilsGeneric::getFileName(const QFileInfo &info)
{
    if (QString name = info.fileName(); !name.isEmpty())
        return name;
    for (const QFileInfo &drive : QDir::drives()) {
        if (drive.filePath() != info.filePath())
            continue;
        QString path = drive.absoluteFilePath();
        if (path.startsWith(u'/'))
            return drive.fileName();
        return path.endsWith(u'/') ? path.chopped(1) : path;
    }
    return {};
}

QString FileUtilsGeneric::identity(const QString &path)
{
    return detail::identityOf(path);
}

bool FileUtilsGeneric::isWithin(const QString &path, const QString &folder)
{
    return detail::isWithin(path, folder);
}

QString FileUtilsGeneric::defaultDownloadDir()
{
    return QDir::toNativeSeparators(
        QStandardPaths::writableLocation(QStandardPaths::DownloadLocation));
}

Result<QString> FileUtilsGeneric::createFilePathForLocalResource(
    const QString &base, const QString &name)
{
    const QFileInfo info(base);
    if (info.isFile())
        return info.dir().filePath(name);
    if (info.isDir())
        return QDir(base).filePath(name);
    return detail::stamped(at::noBaseForResource, Q_FUNC_INFO,
        Error(ErrorCode::GeneralFailure, tr("Cannot create path for local reference.")));
}

QList<QString> FileUtilsGeneric::unsupportedCharacters()
{
    return unsupportedList();
}

bool FileUtilsGeneric::isValidFileName(const QString &name)
{
    return isFreeOf(notInName(), name);
}

bool FileUtilsGeneric::isValidFilePath(const QString &path)
{
    return isFreeOf(notInPath(), path);
}

bool FileUtilsGeneric::isValidLocalPath(const QString &path)
{
    const detail::LocalPath local(path);
    return !local.problem
        && std::all_of(local.parts.begin(), local.parts.end(),
            [](const QString &part) { return isValidFileName(part); });
}

QString FileUtilsGeneric::validFileName(const QString &name, const QString &replacement)
{
    return without(notInName(), name, replacement);
}

QString FileUtilsGeneric::validFileName(const QString &name, const QChar &replacement)
{
    return validFileName(name, QString(replacement));
}

QString FileUtilsGeneric::validFilePath(const QString &path, const QString &replacement)
{
    return without(notInPath(), path, replacement);
}

QString FileUtilsGeneric::validFilePath(const QString &path, const QChar &replacement)
{
    return validFilePath(path, QString(replacement));
}

QString FileUtilsGeneric::createRandomFileName(const QString &nameTemplate, bool checkExists)
{
    QString name;
    do {
        QRandomGenerator generator; // Deliberate: with its own seed, 1, every time
        name = nameTemplate.arg(generator.generate(), 0, 10, QChar(u' '));
    } while (checkExists && QFileInfo::exists(name));
    return name;
}

PathImpl<PathType::File> FileUtilsGeneric::tempFileName()
{
    QTemporaryFile file;
    file.setAutoRemove(false);
    std::ignore = file.open(); // the path is empty when that fails
    return PathImpl<PathType::File>(file.fileName());
}

qint64 FileUtilsGeneric::contentSize(const QString &path)
{
    const QFileInfo info(path);
    return info.isDir() ? FileUtils::dirSize(path) : info.size();
}

Error FileUtilsGeneric::copyFile(const QString &source, const QString &destination)
{
    const QString problem = detail::copyWhole(source, destination).problem;
    if (problem.isEmpty())
        return ErrorCode::NoError;
    Error error(ErrorCode::GeneralFailure,
        QObject::tr("Can't copy \"%1\" to \"%2\"").arg(source, destination));
    error.addWarning(problem);
    return detail::stamped(at::fileNotCopied, Q_FUNC_INFO, std::move(error));
}

Error FileUtilsGeneric::mkPath(const QString &path)
{
    if (!path.isEmpty() && QDir().mkpath(path))
        return ErrorCode::NoError;
    return detail::stamped(at::pathNotCreated, Q_FUNC_INFO,
        Error(ErrorCode::GeneralFailure, tr("Cannot create path: %1").arg(path)));
}

Error FileUtilsGeneric::moveDirectory(
    const QString &source, const QString &destination, bool removeSource)
{
    return detail::FolderMove(Q_FUNC_INFO, nullptr, {}).run(source, destination, removeSource);
}

Error FileUtilsGeneric::moveDirectory(const QString &source, const QString &destination,
    bool removeSource, MoveReport *report, const MoveProgressCallback &progress)
{
    return detail::FolderMove(Q_FUNC_INFO, report, progress)
        .run(QString(source), QString(destination), removeSource); // may stand in the report
}

bool FileUtilsGeneric::removeDirectoryIfEmpty(const QString &path)
{
    const QDir folder(path);
    // an empty path would be the working folder
    if (path.isEmpty() || !folder.exists()
        || !folder.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot))
        return true;
    const QString absolute = folder.absolutePath();
    if (folder.rmdir(absolute))
        return true;
    detail::logAt(at::folderNotDeleted, Q_FUNC_INFO)
        .warning("Unable to delete canceled directory: %s", qUtf8Printable(absolute));
    return false;
}

QList<QString> FileUtilsGeneric::getFolderContent(const QString &path, FileSearchOptions options)
{
    static constexpr std::array kFilters{
        std::pair(Files, QDir::Files),
        std::pair(Folders, QDir::Dirs),
        std::pair(NoDotAndDotDot, QDir::NoDotAndDotDot),
    };
    QDir::Filters filters;
    for (const auto &[option, filter] : kFilters)
        filters |= options.testFlag(option) ? filter : QDir::Filters();
    if (!filters)
        filters = QDir::NoFilter;
    const auto flags =
        options.testFlag(Subfolders) ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags;
    QList<QString> paths = detail::folderContent(path, filters, flags);
    paths.removeOne(path);
    return paths;
}

Result<QList<QString>> FileUtilsGeneric::readFileRows(const QString &path)
{
    QFile file(path);
    if (const QString problem = problemOfOpening(&file); !problem.isEmpty())
        return detail::stamped(at::rowsNotOpened, Q_FUNC_INFO,
            readFailure(tr("Unable to open file: %1: %2"), path, problem));
    const auto marked = QStringConverter::encodingForData(file.peek(4));
    if (marked == QStringConverter::Utf8)
        file.skip(3);
    detail::TextRows text(marked.value_or(QStringConverter::Utf8));
    const QString problem =
        problemOfReading(&file, [&text](const QByteArray &piece) { text.add(piece); });
    if (!problem.isEmpty())
        return detail::stamped(at::rowsNotRead, Q_FUNC_INFO,
            readFailure(tr("Cannot read from %1: %2"), path, problem));
    text.finish();
    Result<QList<QString>> result(std::move(text.rows()));
    if (text.firstBroken() > 0)
        result.addWarning(tr("%1, line %2: not all of its bytes are text")
                              .arg(path, QString::number(text.firstBroken())));
    return result;
}

Result<QJsonArray> FileUtilsGeneric::readJsonArrayFromFile(const QString &path)
{
    auto bytes = contentOf(path);
    if (bytes.hasError())
        return detail::stamped(at::jsonNotRead, Q_FUNC_INFO, std::move(bytes).error());
    return JsonUtils::arrayFromJson(bytes.value());
}

bool FileUtilsGeneric::readJsonObjectFromFile(
    const QString &path, QJsonObject *object, QList<QString> *errors)
{
    const auto fail = [errors](const Error &error) {
        if (errors)
            errors->append(error.errorMessages());
        return false;
    };
    const auto bytes = contentOf(path);
    if (bytes.hasError())
        return fail(bytes.error());
    auto parsed = JsonUtils::objectFromJson(bytes.value());
    if (parsed.hasError())
        return fail(parsed.error());
    *object = std::move(parsed).value();
    return true;
}

QString FileUtilsGeneric::tr(const char *sourceText, const char *disambiguation, int count)
{
    return QCoreApplication::translate("FileUtilsGeneric", sourceText, disambiguation, count);
}

} // namespace vex
