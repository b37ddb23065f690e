#pragma once

#include <QFileInfo>
#include <QFlags>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QRegularExpression>
#include <QString>

#include <vex/Error.h>
#include <vex/Export.h>
#include <vex/MoveReport.h>
#include <vex/PathImpl.h>
#include <vex/Result.h>

namespace vex {

/// Paths, names, files and folders.
///
/// Names are judged by the rules of Windows on every system, so that a file can travel; paths are
/// cleaned and taken apart by the rules of the system at hand. All functions may be called from any
/// thread; those that change files need the caller's care, as files always do.
class VEX_EXPORT FileUtilsGeneric
{
public:
    /// What getFolderContent() lists.
    enum FileSearchOption {
        Files = 1, ///< files, also by way of symbolic links
        Folders = 2, ///< folders, also by way of symbolic links
        Subfolders = 4, ///< the content of folders below as well, but not by way of symbolic links
        NoDotAndDotDot = 8, ///< leaves "." and ".." out
    };
    /// Options of getFolderContent(), in any combination.
    using FileSearchOptions = QFlags<FileSearchOption>;

    /// @name Paths
    /// @{

    /// @p path without doubled or trailing separators, without "." and inner "..", in forward
    /// slashes, as QDir::cleanPath() makes it; empty for an empty one.
    ///
    /// @param path                of a file or a folder, which need not exist
    /// @param removeLeadingSlash  drops one slash at the beginning, if there is one
    static QString cleanPath(const QString &path, bool removeLeadingSlash);

    /// True when both are the same text once cleaned.
    ///
    /// Deliberate: letter for letter, so "C:/A" and "c:/a" differ on Windows as well.
    static bool compare(const QString &a, const QString &b);

    /// One text for all paths of a file or a folder, however they get there: by links, by mounts,
    /// in other letters where the file system takes them for the same. Whether it exists yet or
    /// not.
    static QString identity(const QString &path);

    /// True when @p path is @p folder or lies in it, or will do so once it exists, by identity().
    static bool isWithin(const QString &path, const QString &folder);

    /// Slash and backslash, in this order.
    static QList<QChar> pathSeparators();

    /// Matches one separator.
    static QRegularExpression pathSeparatorsRegex();

    /// True when the first character is a separator.
    static bool startsWithPathSeparator(const QString &path);

    /// True when the last character is a separator.
    static bool endsWithPathSeparator(const QString &path);

    /// What a path is given for, such as a data folder: the last part of it. A drive of Windows
    /// gives its name, "C:"; the root of a file system, and what is no name, nothing.
    static QString getFileName(const QFileInfo &info);

    /// Where the user's downloads go, with the separators of the system.
    static QString defaultDownloadDir();

    /// The path of what a document refers to by a relative name.
    ///
    /// @param base  the document, which the resource lies beside; or a folder, in which it lies
    /// @param name  relative; an absolute one is the result as it is
    /// @par Errors  GeneralFailure "Cannot create path for local reference." when there is neither
    ///              a file nor a folder at @p base
    static Result<QString> createFilePathForLocalResource(const QString &base, const QString &name);

    /// @}
    /// @name Names
    /// PathCheck gives the reasons and what else to think of.
    /// @{

    /// What no name of a file may hold, each as a text of one character: / \ | < > : " ? * and the
    /// characters from U+0000 to U+001F, in this order.
    static QList<QString> unsupportedCharacters();

    /// True for a text that is not empty and holds none of unsupportedCharacters().
    ///
    /// Deliberate: a text that is no valid UTF-16 (half of a surrogate pair stands alone) holds
    /// nothing as far as this test can see, and so passes.
    static bool isValidFileName(const QString &name);

    /// The same, with separators allowed.
    static bool isValidFilePath(const QString &path);

    /// True when @p path can name a place in a local file system or on a server: behind an optional
    /// drive or "//" every part is a valid name.
    ///
    /// Deliberate: "1:" counts as a drive, any character does.
    static bool isValidLocalPath(const QString &path);

    /// @p name with each of unsupportedCharacters() replaced; as it is when it is no valid UTF-16,
    /// see isValidFileName().
    ///
    /// @param name         any text
    /// @param replacement  any text; an empty one takes the characters out
    static QString validFileName(const QString &name, const QString &replacement);
    /// The same.
    static QString validFileName(const QString &name, const QChar &replacement);

    /// The same for a path, whose separators stay.
    static QString validFilePath(const QString &path, const QString &replacement);
    /// The same.
    static QString validFilePath(const QString &path, const QChar &replacement);

    /// @p nameTemplate with a number for its lowest-numbered place marker (%1).
    ///
    /// Deliberate: the number is the same in every call, 853323747. With @p checkExists this call
    /// never returns when there is a file of the resulting name.
    static QString createRandomFileName(const QString &nameTemplate, bool checkExists);

    /// A new empty file in the folder for temporary files, for the caller to use and to delete.
    ///
    /// The path is empty when there is none to be had.
    static PathImpl<PathType::File> tempFileName();

    /// @}
    /// @name Files and folders
    /// @{

    /// The size of a file, or of all files below a folder, in bytes; 0 when there is neither.
    ///
    /// In folders hidden files count as well, symbolic links are not followed and count nothing.
    static qint64 contentSize(const QString &path);

    /// Copies a file with its permissions and its modification time.
    ///
    /// @par Errors  GeneralFailure "Can't copy "source" to "destination"": also when there is a
    ///              destination already, which stays as it is. What the system says is a warning
    ///              of the error. Nothing half-written is left.
    static Error copyFile(const QString &source, const QString &destination);

    /// Makes the folder and all that are missing above it.
    ///
    /// @par Errors  GeneralFailure "Cannot create path: ..."
    static Error mkPath(const QString &path);

    /// Moves a folder and everything in it to @p destination, by renaming where that works and by
    /// copying and deleting, file after file, where it does not.
    ///
    /// A file is deleted only when its copy is complete. Nothing at the destination is overwritten:
    /// a folder that is there already takes the new content in, a file that is there already ends
    /// the move. What has been moved when an error ends it stays there; the same call once more
    /// goes on where it stopped. Hidden files are not moved when folders cannot be renamed.
    /// docs/files.md tells more, and how symbolic links are taken.
    ///
    /// @param source        an existing folder
    /// @param destination   what the folder is called afterwards, not where it is put into
    /// @param removeSource  whether it is an error when something that has been copied cannot be
    ///                      deleted; in subfolders it never is. Sources are deleted either way.
    /// @par Errors  FileAccessError "Source directory ... doesn't exist", "Cannot copy ... to ...",
    ///              "Cannot create folder ..." (also for one below the source), "Cannot remove
    ///              ..."; with a place in the trace for each folder. What the system says is a
    ///              warning of the error.
    static Error moveDirectory(
        const QString &source, const QString &destination, bool removeSource);

    /// The same, with a record of every step.
    ///
    /// @param source        as above
    /// @param destination   as above
    /// @param removeSource  as above
    /// @param report        replaced, also on failure; may be null
    /// @param progress      called before each thing in a folder that cannot be renamed as a whole,
    ///                      and once at the end; may be empty. When it returns false the move ends.
    /// @par Errors  as above; and GeneralFailure "Moving ... was cancelled"
    static Error moveDirectory(const QString &source, const QString &destination, bool removeSource,
        MoveReport *report, const MoveProgressCallback &progress = {});

    /// Removes a folder that has no visible content.
    ///
    /// @return false when that fails, as it does for a folder with hidden content; a warning is
    ///         logged then. True for a folder with content, which stays, and when there is none.
    static bool removeDirectoryIfEmpty(const QString &path);

    /// The paths, each beginning with @p path, of what is in a folder, in no particular order.
    ///
    /// Hidden entries, and entries whose names are no text, are left out. Without any of Files,
    /// Folders and NoDotAndDotDot it lists files and folders, "." and ".." as well; with
    /// NoDotAndDotDot alone nothing.
    static QList<QString> getFolderContent(const QString &path, FileSearchOptions options);

    /// The lines of a text file, without their ends, LF or CR LF.
    ///
    /// UTF-8, or UTF-16 and UTF-32 with a byte order mark. Opening a FIFO waits for a writer.
    /// Bytes that are no text are read as U+FFFD, those of half a surrogate pair as they are; half
    /// a character at the end of the file is left out.
    /// @return with a warning for the first line that has such bytes
    /// @par Errors  FileAccessError "Unable to open file: ..." and "Cannot read from ..." with the
    ///              path and what the system says
    static Result<QList<QString>> readFileRows(const QString &path);

    /// The array that a JSON file holds.
    ///
    /// @par Errors  FileAccessError "Cannot open file ... for reading: ..." and
    ///              "Cannot read from ...: ..."; InvalidInput with the line and the column where
    ///              the text stops to be JSON, or that it holds an object
    static Result<QJsonArray> readJsonArrayFromFile(const QString &path);

    /// The object that a JSON file holds.
    ///
    /// @param path    of the file
    /// @param object  replaced; as it was on failure
    /// @param errors  what is wrong, as Error::errorMessages() has it, is appended; may be null
    /// @return false on failure
    static bool readJsonObjectFromFile(
        const QString &path, QJsonObject *object, QList<QString> *errors);

    /// @}

    /// @p sourceText in the application's language, in the context "FileUtilsGeneric".
    ///
    /// @param sourceText      English, UTF-8
    /// @param disambiguation  tells equal texts apart
    /// @param count           what %n stands for, and picks the plural
    static QString tr(const char *sourceText, const char *disambiguation = nullptr, int count = -1);
};

/// Options combine.
Q_DECLARE_OPERATORS_FOR_FLAGS(FileUtilsGeneric::FileSearchOptions)

} // namespace vex
