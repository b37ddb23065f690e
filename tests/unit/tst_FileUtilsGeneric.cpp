#include "ErrorTrace.h"
#include "Files.h"
#include "LoggedMessage.h"
#include "PlainFileNames.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonObject>
#include <QOperatingSystemVersion>
#include <QRandomGenerator>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <QTranslator>

#include <array>
#include <memory>

#include <vex/FileUtilsGeneric.h>
#include <vex/PathCheck.h>

#if defined(Q_OS_UNIX)
#    include <thread>

#    include <sys/stat.h>
#    include <unistd.h>
#else
#    include <windows.h>
#endif

using namespace Qt::StringLiterals;
using Files = vex::FileUtilsGeneric;
using vex::PathCheck;
using vex::test::ErrorReport;
using vex::test::reportOf;

namespace {

constexpr bool kOnWindows =
    QOperatingSystemVersion::currentType() == QOperatingSystemVersion::Windows;

/// Mostly characters that matter, all planes and halves of pairs among them.
QString randomText(QRandomGenerator *random)
{
    static const QString interesting = u"/\\|<>:\"?*.ab \u00e9\u4e2d~"_s;
    QString text;
    for (quint32 n = random->bounded(12U); n > 0; --n) {
        if (const quint32 kind = random->bounded(32U); kind < 4)
            text += QChar(static_cast<char16_t>(random->bounded(34))); // control characters
        else if (kind < 8)
            text += QChar::fromUcs4(0x10000U + random->bounded(0xfffffU));
        else if (kind == 8) // seldom: it ends the test of a text
            text += QChar(static_cast<char16_t>(0xd800 + random->bounded(0x800)));
        else
            text += interesting[random->bounded(int(interesting.size()))];
    }
    return text;
}

QString found(const PathCheck &check)
{
    static constexpr std::array kNames{"empty", "character", "drive", "server", "invalid",
        "untested", "reserved", "end", "long name", "long path"};
    QStringList all;
    for (const PathCheck::Finding &finding : check.findings)
        all += u"%1%2 %3+%4"_s.arg(QLatin1StringView(finding.isReason() ? "" : "~"),
            QLatin1StringView(kNames[finding.kind]), QString::number(finding.position),
            QString::number(finding.length));
    return all.join(", "_L1);
}

} // namespace

class TestFileUtilsGeneric : public QObject
{
    Q_OBJECT

private:
    QString at(const QString &name) const { return QDir(m_folder->path()).filePath(name); }
    /// On Windows, hides a file whose name begins with a point.
    void write(const QString &name, const QByteArray &content)
    {
        vex::test::writeFile(at(name), content);
#if defined(Q_OS_WIN)
        QVERIFY(!name.contains("/."_L1)
            || SetFileAttributesW(at(name).toStdWString().c_str(), FILE_ATTRIBUTE_HIDDEN));
#endif
    }
    /// Every file below a folder as "path=content".
    QString tree() const
    {
        QStringList files;
        QDirIterator all(at({}), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString path = all.next();
            files += path.sliced(at({}).size() + 1) + u'='
                + QString::fromUtf8(vex::test::contentOf(path));
        }
        files.sort();
        return files.join(u' ');
    }

    std::unique_ptr<QTemporaryDir> m_folder;

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
    }

    void paths()
    {
        // a path, the same once cleaned, and where Windows has something else
        for (const auto &[path, clean, cleanOnWindows] :
            {std::tuple(u"/a/.//b/"_s, u"/a/b"_s, u"/a/b"_s),
                {u"//srv/x"_s, u"/srv/x"_s, u"//srv/x"_s}, {u"a\\b\\"_s, u"a\\b\\"_s, u"a/b"_s}}) {
            QString expected = kOnWindows ? cleanOnWindows : clean;
            QCOMPARE(Files::cleanPath(path, false), expected);
            QVERIFY(Files::compare(path, expected));
            if (expected.startsWith(u'/'))
                expected.remove(0, 1);
            QCOMPARE(Files::cleanPath(path, true), expected);
        }
        QVERIFY(!Files::compare(u"C:/A"_s, u"c:/a"_s));
        QCOMPARE(Files::unsupportedCharacters(), plain::unsupportedCharacters());
        QCOMPARE(Files::pathSeparatorsRegex().pattern(), u"[/\\\\]"_s);
        QCOMPARE(Files::pathSeparators(), (QList<QChar>{u'/', u'\\'}));
        QCOMPARE(Files::validFilePath(u"x/y?z"_s, QChar(u'-')), u"x/y-z"_s);
        QVERIFY(Files::startsWithPathSeparator(u"\\a"_s) && Files::endsWithPathSeparator(u"a/"_s));
        QVERIFY(!Files::startsWithPathSeparator(u"a/"_s) && !Files::endsWithPathSeparator({}));
        QCOMPARE(Files::isValidLocalPath(u"\\\\server\\share"_s), kOnWindows);
        QCOMPARE(Files::isValidLocalPath(u"///"_s), !kOnWindows); // nothing behind a server's "//"
    }

    /// Tables and reasons give the answers of the patterns, whatever the text.
    void answersAreThoseOfThePatterns()
    {
        QRandomGenerator random(20);
        for (int i = 0; i < 200000; ++i) {
            const QString text = randomText(&random);
            const QString after = i % 2 == 0 ? u"\\1"_s : QString(); // no group is meant
            bool isEqual = Files::isValidFileName(text) == plain::isValidFileName(text)
                && Files::isValidFilePath(text) == plain::isValidFilePath(text)
                && Files::validFileName(text, after) == plain::validFileName(text, after)
                && Files::validFilePath(text, after) == plain::validFilePath(text, after);
            if (i % 10 == 0)
                isEqual = isEqual
                    && PathCheck::ofFileName(text).isValid() == plain::isValidFileName(text)
                    && PathCheck::ofFilePath(text).isValid() == plain::isValidFilePath(text)
                    && PathCheck::ofLocalPath(text).isValid() == Files::isValidLocalPath(text);
            QVERIFY2(isEqual, qPrintable(u"%1: %2"_s.arg(i).arg(text)));
        }
    }

    void reasonsHaveTheirPlace()
    {
        const auto name = &PathCheck::ofFileName, path = &PathCheck::ofFilePath;
        const auto local = &PathCheck::ofLocalPath;
        for (const auto &[check, text, expected] : {std::tuple(name, u""_s, "empty 0+0"),
                 {name, u"a<b\t/"_s, "character 1+1, character 3+1, character 4+1"},
                 {name, u"a:\U0001F600"_s + QChar(0xdc00), "~untested 1+1, ~invalid 4+1"},
                 {name, u"nul.tar.gz"_s, "~reserved 0+10"}, {name, u"Com\u00b9"_s, "~reserved 0+4"},
                 {name, u"com10"_s, ""}, {name, u"a. . "_s, "~end 1+4"},
                 {local, u""_s, "empty 0+0"}, {name, u"CON ."_s, "~reserved 0+5, ~end 3+2"},
                 {name, QString(256, u'a'), "~long name 0+256"},
                 {name, QString(128, u'\u00e9'), "~long name 0+128"}, // bytes count
                 {path, u"aux/b?\\.. /."_s, "~reserved 0+3, character 5+1, ~end 7+3"},
                 {path, QString(261, u'/'), "~long path 0+261"},
                 {local, u"/x//../b:c/"_s, "character 2+1"}, // places are those of the cleaned path
                 {local, u"CC:/a*/b"_s, "drive 0+3, character 5+1"},
                 {local, u"C:/a|/b./c|"_s, "character 4+1, ~end 7+1, character 10+1"},
                 {local, u"//"_s, ""}, {local, u"1:"_s, ""}, {local, u":/x"_s, "drive 0+1"},
                 {local, u"C:/a:b"_s, "character 4+1"}, {local, u"//C:/../x"_s, ""}})
            QCOMPARE(found(check(text)), QLatin1StringView(expected));
    }

    void namesOfFiles()
    {
        QCOMPARE(Files::getFileName(QFileInfo(u"C:/x.txt"_s)), u"x.txt"_s);
        QCOMPARE(
            Files::getFileName(QFileInfo(u"C:/"_s)), QString::fromLatin1(kOnWindows ? "C:" : ""));
        QCOMPARE(Files::getFileName(QFileInfo(u"/"_s)), QString());
        for (int i = 0; i < 2; ++i)
            QCOMPARE(Files::createRandomFileName(u"tmp_%1.txt"_s, i == 1), u"tmp_853323747.txt"_s);
        QVERIFY(QDir(Files::defaultDownloadDir()).isAbsolute());

        QVERIFY(QFile::remove(Files::tempFileName().toString())); // there, and closed

        write(u"doc.html"_s, "");
        const QString image = at(u"i/a.png"_s);
        for (const QString &base : {at(u"doc.html"_s), m_folder->path()})
            QCOMPARE(Files::createFilePathForLocalResource(base, u"i/a.png"_s).value(), image);
        QCOMPARE(reportOf(Files::createFilePathForLocalResource(at(u"x"_s), u"a"_s).error()),
            (ErrorReport{vex::GeneralFailure, u"Cannot create path for local reference."_s,
                {u"src/FileUtilsGeneric:441"_s}}));
    }

    void messagesAreTranslated()
    {
        QTranslator translator;
        QVERIFY(translator.load(QStringLiteral(VEX_SOURCE_FOLDER "/tests/data/files_de.qm")));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        write(u"file"_s, "");
        const QString path = at(u"file/x"_s);
        QCOMPARE(reportOf(Files::mkPath(path)),
            (ErrorReport{vex::GeneralFailure, u"Ordner nicht angelegt: "_s + path,
                {u"src/FileUtilsGeneric:271"_s}}));
        QCOMPARE(Files::tr("%n file(s)", "moved", 2), u"2 Dateien bewegt"_s);
    }

    void contentOfFoldersIsThatOfQt()
    {
        for (const QString &name :
            {u"d/a.txt"_s, u"d/.hidden"_s, u"d/.h/in"_s, u"d/s/s/deep \u00e9"_s, u"d/s/x"_s})
            write(name, "12345");
        QVERIFY(QDir().mkpath(at(u"d/empty"_s)));
#if defined(Q_OS_UNIX)
        const QByteArray d = QFile::encodeName(at(u"d"_s));
        for (const auto &[target, name] :
            {std::pair("a.txt", "/to_file"), {"s", "/to_folder"}, {"..", "/s/to_above"},
                {"nowhere", "/broken"}, std::pair("/dev/null", "/to_device")})
            QCOMPARE(symlink(target, (d + name).constData()), 0);
        QCOMPARE(mkfifo((d + "/fifo").constData(), 0600), 0);
        QCOMPARE(mkdir((d + "/not utf-8 \xff").constData(), 0700), 0);
#endif
        for (int bits = 0; bits < 16; ++bits) {
            const auto options = static_cast<Files::FileSearchOptions>(bits);
            const QDir::Filters filters = ((bits & 1) != 0 ? QDir::Files : QDir::Filters())
                | ((bits & 2) != 0 ? QDir::Dirs : QDir::Filters())
                | ((bits & 8) != 0 ? QDir::NoDotAndDotDot : QDir::Filters());
            for (const QString &path : {at(u"d"_s), at(u"d/../d/"_s), at(u"none"_s)}) {
                QDirIterator entries(path, (bits & 11) != 0 ? filters : QDir::NoFilter,
                    (bits & 4) != 0 ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
                QStringList expected;
                while (entries.hasNext())
                    expected += entries.next();
                QCOMPARE(Files::getFolderContent(path, options), expected);
            }
        }
        QCOMPARE(Files::contentSize(at(u"d"_s)), 25);
        QCOMPARE(Files::contentSize(at(u"d/a.txt"_s)), 5);
        QCOMPARE(Files::contentSize(at(u"none"_s)), 0);
#if defined(Q_OS_UNIX)
        QCOMPARE(rmdir((d + "/not utf-8 \xff").constData()), 0); // Qt could not
#endif
    }

    void emptiedFoldersAreRemoved()
    {
        write(u"hidden/.a"_s, "");
        QVERIFY(QDir().mkpath(at(u"full/empty"_s)));
        for (const QString &name : {u"full"_s, u"none"_s, u"full/empty"_s})
            QVERIFY(Files::removeDirectoryIfEmpty(at(name)));
        QVERIFY(!QFile::exists(at(u"full/empty"_s)) && QFile::exists(at(u"full"_s)));
        const QString logged = vex::test::loggedBy(
            [this] { QVERIFY(!Files::removeDirectoryIfEmpty(at(u"hidden"_s))); });
        QVERIFY(logged.startsWith("1 src/FileUtilsGeneric:168 static bool"_L1));
        QVERIFY(logged.endsWith(": Unable to delete canceled directory: "_L1 + at(u"hidden"_s)));
    }

    void copies()
    {
        write(u"a"_s, "new");
        QVERIFY(!Files::copyFile(at(u"a"_s), at(u"b"_s)).hasError());
        write(u"a"_s, "newer");
        const vex::Error error = Files::copyFile(at(u"a"_s), at(u"b"_s));
        const QString message = u"Can't copy \"%1\" to \"%2\""_s.arg(at(u"a"_s), at(u"b"_s));
        QCOMPARE(reportOf(error),
            (ErrorReport{vex::GeneralFailure, message, {u"src/FileUtilsGeneric:391"_s}}));
        QVERIFY(!error.warnings().isEmpty());
        QCOMPARE(tree(), u"a=newer b=new"_s);
    }

    /// A destination that is there makes the move copy; folders that are missing there are renamed.
    void moves()
    {
        write(u"s/a"_s, "1");
        write(u"s/sub/b"_s, "22");
        write(u"s/sub/deep/c"_s, "333");
        QVERIFY(QDir().mkpath(at(u"d/sub"_s)));
        vex::MoveReport report;
        QVERIFY(!Files::moveDirectory(at(u"s"_s), at(u"d/"_s), true, &report).hasError());
        QCOMPARE(tree(), u"d/a=1 d/sub/b=22 d/sub/deep/c=333"_s);
        const vex::MoveReport::Step &last = report.steps.constLast();
        QCOMPARE(last.source, at(u"s"_s));
        QStringList steps; // kind, path and size
        for (const vex::MoveReport::Step &step : report.steps)
            steps += u"%1 %2 %3"_s.arg(QString::number(step.kind),
                step.source.sliced(at({}).size() + 1), QString::number(step.bytes));
        steps.sort();
        QCOMPARE(steps.join(u", "_s),
            u"0 s/sub/deep 3, 2 s/a 1, 2 s/sub/b 2, 3 s 0, 3 s/a 1, 3 s/sub 0, 3 s/sub/b 2"_s);
        QCOMPARE(report.bytes(vex::MoveReport::Step::Copied), 3);
        // back again, by paths that stand in the report that is filled
        QVERIFY(!Files::moveDirectory(last.destination, last.source, true, &report).hasError());
        QCOMPARE(report.steps.constFirst().destination, at(u"s"_s));
        QCOMPARE(report.bytes(vex::MoveReport::Step::Renamed), 6);
    }

    /// The error has its text and its places, and nothing is lost.
    void failedMoves()
    {
        for (const QString &name :
            {u"s/a"_s, u"s/sub/c"_s, u"file"_s, u"taken/sub/c"_s, u"hidden/sub/.h"_s, u"t/sub/c"_s})
            write(name, name.toUtf8());
        QVERIFY(QDir().mkpath(at(u"s/empty"_s)));
        const QString before = tree();
        // source, destination, error, lines of its trace; % is the temporary folder
        const QString table = uR"(
%/none | %/d | Source directory %/none doesn't exist | 403
 | %/d | Source directory  doesn't exist | 403
%/s |  | Cannot create folder  | 414
%/s | %/file/x | Cannot create folder %/file/x | 414
%/s | %/s/sub/new/x | Cannot create folder %/s/sub/new/x | 414
%/s/sub/.. | %/s/sub/../sub | Cannot create folder %/s/sub/../sub | 414
%/t | %/taken | Cannot copy %/t/sub/c to %/taken/sub/c | 430 426
%/s/sub | %/s/a/../sub | Cannot copy %/s/sub/c to %/s/sub/c | 430
%/s/empty | %/s/empty | Cannot remove %/s/empty | 439
%/hidden | %/taken | Cannot remove %/hidden | 439
)"_s.trimmed()
                                  .replace(u'%', m_folder->path());
        for (const QString &line : table.split(u'\n')) {
            const QStringList cells = line.split(u" | "_s);
            const vex::Error failed = Files::moveDirectory(cells[0], cells[1], true);
            ErrorReport expected{vex::FileAccessError, cells[2], {}};
            for (const QString &place : cells[3].split(u' '))
                expected.trace += "src/FileUtilsGeneric:"_L1 + place;
            QCOMPARE(reportOf(failed), expected);
            QVERIFY(failed.trace()[0].function.contains("FileUtilsGeneric::moveDirectory("_L1));
            QCOMPARE(tree(), before);
            QVERIFY(QFile::exists(at(u"s/empty"_s)));
        }
    }

    /// Nothing is cleaned before the system has read it.
    void foldersAreWhereTheSystemFindsThem()
    {
        write(u"o/s/a"_s, "1");
        write(u"s/a"_s, "other");
        QVERIFY(QDir().mkpath(at(u"o/in"_s)));
        vex::MoveReport report;
#if defined(Q_OS_UNIX)
        QVERIFY(QFile::link(at(u"o/in"_s), at(u"l"_s)));
        const QStringList paths{at(u"l/../s"_s), at(u"l/../d/."_s)};
#else
        const QStringList paths{"//./"_L1 + at(u"o/s"_s), at(u"o/D"_s)};
#endif
        const vex::Error error = Files::moveDirectory(paths[0], paths[1], true, &report);
        QVERIFY2(!error.hasError(), qPrintable(error.message()));
        QCOMPARE(tree().toLower(), u"o/d/a=1 s/a=other"_s);
        // renamed, also to the same name in other letters: nothing is left behind
        QVERIFY(!Files::moveDirectory(at(u"o/d"_s), at(u"o/D"_s), true, &report).hasError());
        QCOMPARE(report.steps.size(), 1);
    }

    void progressIsToldAndCancels()
    {
        for (int i = 0; i < 5; ++i)
            write(u"s/%1"_s.arg(i), QByteArray(10, 'x'));
        write(u"d/other"_s, "");
        QList<qint64> done;
        const auto move = [&](qsizetype calls) {
            done.clear();
            const auto progress = [&](const vex::MoveProgress &state) {
                done.append(state.bytesDone);
                return state.bytesTotal >= 30 && state.filesTotal >= 3 && done.size() < calls;
            };
            return Files::moveDirectory(at(u"s"_s), at(u"d"_s), true, nullptr, progress);
        };
        QCOMPARE(reportOf(move(3)),
            (ErrorReport{vex::GeneralFailure, u"Moving %1 was cancelled"_s.arg(at(u"s"_s)),
                {u"src/FileUtilsGeneric:440"_s}}));
        QCOMPARE(done, (QList<qint64>{0, 10, 20, 20}));
        QCOMPARE(tree().count("s/"_L1), 3);
        QVERIFY(!move(100).hasError()); // goes on
        QCOMPARE(done, (QList<qint64>{0, 10, 20, 30}));
    }

    /// What each reader makes of a file.
    void badFilesAreToldApart()
    {
        QTest::failOnWarning(QRegularExpression(u".?"_s)); // nothing is logged
        const QString file = at(u"file"_s);
        const QString folder = m_folder->path();
        const QString nothing = u"Invalid JSON: there is nothing"_s;
        const QString notRead = u"Cannot open file %1 for reading: "_s;
        const QString noNul = u": The name holds a NUL"_s;
        // content, its rows, array and keys of the object; or what is wrong
        for (const auto &[path, content, rows, array, object] :
            {std::tuple(file, "\r\n", u""_s, nothing, nothing),
                {file, "{\"a\":1}\r\n", u"{\"a\":1}"_s, u"object where an array"_s, u"a"_s},
                {file, "[\n1]", u"[|1]"_s, u"1"_s, u"array where an object"_s},
                {file, "{\n \"a\": [1,", u"{| \"a\": [1,"_s, u"line 2, column 10"_s, u"line 2"_s},
                {u""_s, "", u"Unable to open file: : No file name specified"_s,
                    notRead.arg(QString()), u"No file name"_s},
                {file + u"\0.b"_s, "", noNul, noNul, noNul},
                {folder, "", u"Unable to open file: %1: "_s.arg(folder),
                    notRead.arg(QDir::toNativeSeparators(folder)), u"Cannot open"_s}}) {
            write(u"file"_s, content);
            const auto readRows = Files::readFileRows(path);
            const auto readArray = Files::readJsonArrayFromFile(path);
            QJsonObject readObject{{u"old"_s, 1}};
            QStringList errors{u"first"_s};
            const bool isRead = Files::readJsonObjectFromFile(path, &readObject, &errors);
            QCOMPARE(Files::readJsonObjectFromFile(path, &readObject, nullptr), isRead);
            QCOMPARE(readObject.contains("old"_L1), !isRead);
            QCOMPARE(errors.size() > 2, !isRead); // what was there, the message, its trace
            const QString foundRows =
                readRows ? readRows.value().join(u'|') : readRows.error().message();
            const QString foundArray = readArray ? QString::number(readArray.value()[0].toInt())
                                                 : readArray.error().message();
            const QString foundObject = isRead ? readObject.keys().join(u' ') : errors[1];
            QVERIFY2(foundRows.contains(rows), qPrintable(foundRows));
            QVERIFY2(foundArray.contains(array), qPrintable(foundArray));
            QVERIFY2(foundObject.contains(object), qPrintable(foundObject));
        }
    }

    /// Line ends, byte order marks and broken characters wherever they fall.
    void rowsAreThoseOfATextStream()
    {
        constexpr int kPiece = 1 << 16; // read at once
        const QList<QByteArray> pieces{"\n", "\r\n", "\r", "a", "\xf0\x9f\x98\x80", "\xe4",
            "\xf0\x9f", "\xff\xfe", "\xfe\xff", "\xef\xbb\xbf", "\xef\xbf\xbd",
            QByteArray(1, '\0')};
        QRandomGenerator random(3);
        for (int i = 0; i < 400; ++i) {
            QByteArray content = i % 3 == 0 ? "\xff\xfe" : "";
            if (i % 2 == 0)
                content += QByteArray(kPiece - random.bounded(6), 'x');
            for (quint32 n = random.bounded(9U); n > 0; --n)
                content += pieces[random.bounded(int(pieces.size()))];
            write(u"file"_s, content);
            const auto encoding =
                QStringConverter::encodingForData(content).value_or(QStringConverter::Utf8);
            QString text = QStringDecoder(encoding)(content);
            QTextStream stream(&text);
            QStringList expected;
            while (!stream.atEnd())
                expected += stream.readLine();
            const auto rows = Files::readFileRows(at(u"file"_s));
            QCOMPARE(rows.value(), expected);
            if (encoding == QStringConverter::Utf8)
                QCOMPARE(rows.warnings().isEmpty(), QUtf8StringView(content).isValidUtf8());
        }
    }

    void brokenTextHasItsLine()
    {
        const QString path = at(u"%1 %2"_s);
        using namespace std::string_literals;
        for (const auto &[content, rows, line] :
            {std::tuple("\xef\xbf\xbd\n\xff\n\x80"s, u"\ufffd|\ufffd|\ufffd"_s, 2),
                {"\xff\xfe\xfd\xff\n\0"s, u"\ufffd"_s, 0}, {"a\n\xe4\xb8"s, u"a"_s, 2},
                {"\xff\xfex\0\n\0b"s, u"x"_s, 2},
                {"\xff\xfe\n\0\0\xd8"s, u"|"_s + QChar(0xd800), 2},
                {"\0\0\xfe\xff\0\0\0\n\0\x11\0\0\0\0\0\n"s, u"|\xdc00\xdc00"_s, 2}}) {
            write(u"%1 %2"_s, QByteArray::fromStdString(content));
            const auto read = Files::readFileRows(path);
            QCOMPARE(read.value().join(u'|'), rows);
            const QString warning =
                u"%1, line %2: not all of its bytes are text"_s.arg(path, QString::number(line));
            QCOMPARE(read.warnings(), line > 0 ? QStringList{warning} : QStringList());
        }
    }

    void longLinesAreRead()
    {
        write(u"file"_s, QByteArray(100000000, 'x'));
        QCOMPARE(Files::readFileRows(at(u"file"_s)).value().value(0).size(), 100000000);
        QVERIFY(Files::readJsonArrayFromFile(at(u"file"_s)).hasError());
    }

#if defined(Q_OS_LINUX)
    /// A failure is no end of the file: this one opens, and what lies at 0 cannot be read.
    void failedReadsAreErrors()
    {
        const QString path = u"/proc/self/mem"_s;
        const QString message = u"Cannot read from %1: Input/output error"_s.arg(path);
        ErrorReport expected{vex::FileAccessError, message, { u"src/FileUtilsGeneric:443"_s }};
        QCOMPARE(reportOf(Files::readFileRows(path).error()), expected);
        expected.trace = {u"src/FileUtilsGeneric:445"_s, u"src/FileUtilsGeneric:446"_s};
        QCOMPARE(reportOf(Files::readJsonArrayFromFile(path).error()), expected);
    }
#endif

#if defined(Q_OS_UNIX)
    void pipesAreWaitedFor()
    {
        QCOMPARE(mkfifo(QFile::encodeName(at(u"fifo"_s)).constData(), 0600), 0);
        std::thread writer([this] { write(u"fifo"_s, "[1]"); }); // once there is a reader
        const auto array = Files::readJsonArrayFromFile(at(u"fifo"_s));
        writer.join();
        QCOMPARE(array.value(), QJsonArray{1});
    }
#endif
};

QTEST_GUILESS_MAIN(TestFileUtilsGeneric)
#include "tst_FileUtilsGeneric.moc"
