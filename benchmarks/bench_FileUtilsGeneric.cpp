#include "Harness.h"
#include "PlainFileNames.h"

#include <vex/FileUtilsGeneric.h>

#include <benchmark/benchmark.h>

#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <functional>
#include <map>
#include <random>

namespace {

using namespace Qt::StringLiterals;
using vex::FileUtilsGeneric;

/// Adds a row and its two benchmarks, each over so many names at a time.
template <typename Slow, typename Fast>
void add(const std::string &name, qsizetype names, Slow slow, Fast fast, double floor)
{
    const auto addSide = [names](const std::string &side, const auto &work) {
        benchmark::RegisterBenchmark(side.c_str(), [names, work](benchmark::State &state) {
            for (auto _ : state)
                work();
            state.counters[bench::kItems] = static_cast<double>(names);
        });
    };
    addSide(name + "/plain", slow);
    addSide(name + "/vex", fast);
    bench::compare({name, name + "/plain", name + "/vex", floor});
}

// ---- names

/// Names without anything that a file's name may not hold.
QList<QString> names(qsizetype length, QStringView letters)
{
    std::mt19937 random(7);
    QList<QString> all(16, QString(length, u' '));
    for (QString &name : all) {
        for (QChar &character : name)
            character = letters[qsizetype(random()) % letters.size()];
    }
    return all;
}

constexpr QStringView kAscii =
    u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 ._-()";
constexpr QStringView kInternational = u"abcdefghijklmnopqrstuvwxyz0123456789 ._äöüßéñλ質量";

QList<QString> withBadEnd(QList<QString> all)
{
    for (QString &name : all)
        name.back() = u'?';
    return all;
}

/// A row of each function over 16 names at a time.
void addNames(const std::string &mix, const QList<QString> &names)
{
    const QString underscore = u"_"_s;
    for (const QString &name : names) {
        bench::requireEqual(plain::isValidFileName(name) == FileUtilsGeneric::isValidFileName(name)
                && plain::validFileName(name, underscore)
                    == FileUtilsGeneric::validFileName(name, underscore),
            mix + " name " + name.toStdString());
    }
    const auto each = [names](auto function) {
        return [names, function] {
            for (const QString &name : names)
                benchmark::DoNotOptimize(function(name));
        };
    };
    add("isValidFileName/" + mix, names.size(), each(plain::isValidFileName),
        each(FileUtilsGeneric::isValidFileName), 5.0);
    add("validFileName/" + mix, names.size(),
        each([underscore](const QString &name) { return plain::validFileName(name, underscore); }),
        each([underscore](const QString &name) {
            return FileUtilsGeneric::validFileName(name, underscore);
        }),
        5.0);
}

/// Time over the length of a name, whose last character is bad, for the growth in the full listing.
template <typename Work>
void addNameGrowth(const std::string &name, Work work)
{
    benchmark::RegisterBenchmark(("growth/" + name).c_str(),
        [work](benchmark::State &state) {
            const QString text = withBadEnd(names(state.range(0), kAscii)).constFirst();
            for (auto _ : state)
                benchmark::DoNotOptimize(work(text));
            state.SetComplexityN(state.range(0));
        })
        ->RangeMultiplier(4)
        ->Range(16, 4096)
        ->Complexity();
}

// ---- folders

/// What the command `find` prints for @p arguments, to nowhere or to @p output.
void find(const QList<QString> &arguments, QByteArray *output = nullptr)
{
    QProcess process;
    if (!output)
        process.setStandardOutputFile(QProcess::nullDevice());
    process.start(u"find"_s, arguments);
    bench::requireEqual(
        process.waitForFinished(-1) && process.exitCode() == 0, "files, of which find fails");
    if (output)
        *output = process.readAllStandardOutput();
}

QList<QString> listingOf(const QString &folder)
{
    return {folder, u"-type"_s, u"f"_s};
}

QList<QString> sizesOf(const QString &folder)
{
    return listingOf(folder) + QList<QString>{u"-printf"_s, u"%s\\n"_s};
}

QList<QString> filesBelow(const QString &folder)
{
    return FileUtilsGeneric::getFolderContent(
        folder, FileUtilsGeneric::Files | FileUtilsGeneric::Subfolders);
}

/// Ends the process unless the library, Qt and find agree about @p folder.
void requireEqual(const QString &folder, qint64 bytes)
{
    QList<QString> files = filesBelow(folder);
    QDirIterator iterator(folder, QDir::Files, QDirIterator::Subdirectories);
    for (const QString &file : files)
        bench::requireEqual(iterator.hasNext() && iterator.next() == file, "order of files");
    bench::requireEqual(!iterator.hasNext(), "number of files");

    QByteArray output;
    find(listingOf(folder), &output);
    QList<QString> found = QString::fromUtf8(output).split(u'\n', Qt::SkipEmptyParts);
    std::sort(files.begin(), files.end());
    std::sort(found.begin(), found.end());
    bench::requireEqual(files == found, "files that find lists");

    find(sizesOf(folder), &output);
    qint64 sum = 0;
    for (const QByteArray &size : output.split('\n'))
        sum += size.toLongLong();
    bench::requireEqual(
        FileUtilsGeneric::contentSize(folder) == bytes && sum == bytes, "sizes of files");
}

/// Folders of a thousand files each; removed when the program ends.
class Tree
{
public:
    explicit Tree(qsizetype files)
        : m_folder(QDir::tempPath() + u"/vex-bench-XXXXXX"_s)
    {
        for (qsizetype i = 0; i < files; ++i) {
            const QDir folder(path() + u"/folder %1"_s.arg(i / 1000));
            QFile file(folder.filePath(u"measurement %1.csv"_s.arg(i)));
            const qint64 size = i % 5000;
            const bool isMade = (i % 1000 != 0 || folder.mkpath(u"."_s))
                && file.open(QIODevice::WriteOnly) && file.resize(size);
            bench::requireEqual(isMade, "temporary files, which cannot be made");
            m_bytes += size;
        }
    }

    QString path() const { return m_folder.path(); }
    qint64 bytes() const { return m_bytes; }

private:
    QTemporaryDir m_folder;
    qint64 m_bytes = 0;
};

/// The path of such folders, made and compared when they are asked for first.
QString treeOf(qsizetype files)
{
    static std::map<qsizetype, Tree> trees;
    const auto [place, isNew] = trees.try_emplace(files, files);
    const Tree &tree = place->second;
    if (isNew)
        requireEqual(tree.path(), tree.bytes());
    return tree.path();
}

using FolderWork = std::function<void(const QString &)>;

/// A benchmark of @p work, 10^3 to 10^5 files when @p isGrowth, else 10^5. In real time: the work
/// of another process counts.
void addFolders(const std::string &name, const FolderWork &work, bool isGrowth)
{
    auto *entry =
        benchmark::RegisterBenchmark(name.c_str(), [work, isGrowth](benchmark::State &state) {
            const qsizetype files = isGrowth ? state.range(0) : 100000;
            const QString folder = treeOf(files);
            for (auto _ : state)
                work(folder);
            state.SetComplexityN(files);
        });
    entry->UseRealTime()->Unit(benchmark::kMillisecond);
    if (isGrowth)
        entry->RangeMultiplier(10)->Range(1000, 100000)->Complexity();
}

/// A row next to the command `find`, the whole process of it, and the growth.
void addFolderRow(const std::string &name, const FolderWork &command, const FolderWork &library)
{
    addFolders(name + "/find", command, false);
    addFolders(name + "/vex", library, false);
    addFolders("growth/" + name, library, true);
    bench::compare({name, name + "/find", name + "/vex", 1.0 / 1.5});
}

const bench::Registration registration([] {
    addNames("good", names(40, kAscii));
    addNames("bad end", withBadEnd(names(40, kAscii)));
    addNames("international", names(40, kInternational));
    addNameGrowth("isValidFileName",
        [](const QString &name) { return FileUtilsGeneric::isValidFileName(name); });
    addNameGrowth("validFileName",
        [](const QString &name) { return FileUtilsGeneric::validFileName(name, u'_'); });

    addFolderRow(
        "getFolderContent", [](const QString &folder) { find(listingOf(folder)); },
        [](const QString &folder) { benchmark::DoNotOptimize(filesBelow(folder)); });
    addFolderRow(
        "contentSize", [](const QString &folder) { find(sizesOf(folder)); },
        [](const QString &folder) {
            benchmark::DoNotOptimize(FileUtilsGeneric::contentSize(folder));
        });
    // what a process costs that has nothing to find
    addFolders(
        "start of find",
        [](const QString &folder) {
            find({folder, u"-maxdepth"_s, u"0"_s, u"-type"_s, u"f"_s});
        },
        false);
});

} // namespace
