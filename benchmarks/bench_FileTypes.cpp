#include "Harness.h"
#include "PlainFileTypes.h"

#include <benchmark/benchmark.h>

namespace {

using namespace Qt::StringLiterals;

/// Early and late in the registry, of several types, of none, in upper case, not of ASCII alone.
const QList<QString> &suffixes()
{
    static const QList<QString> list{u"jpg"_s, u"csv"_s, u"tsv"_s, u"bpf"_s, u"rptc"_s, u"lvcfg"_s,
        u"raw"_s, u"mzml"_s, u"PDF"_s, u"Fasta"_s, u"größe"_s, QString()};
    return list;
}

/// The same behind paths.
const QList<QString> &files()
{
    static const QList<QString> list = [] {
        QList<QString> paths;
        for (const QString &suffix : suffixes())
            paths.append(u"/data/projects/2024.03/sample 17 (repeat)."_s + suffix);
        return paths;
    }();
    return list;
}

using Lookup = FileTypes::TypeRef (*)(const QString &);

/// A benchmark of one look-up for each text.
void add(const std::string &name, Lookup lookup, const QList<QString> &texts)
{
    benchmark::RegisterBenchmark(name.c_str(), [lookup, texts](benchmark::State &state) {
        for (auto _ : state) {
            for (const QString &text : texts)
                benchmark::DoNotOptimize(lookup(text));
        }
        state.counters[bench::kItems] = static_cast<double>(texts.size());
    });
}

void addRow(
    const std::string &name, Lookup slow, Lookup fast, const QList<QString> &texts, double floor)
{
    for (const QString &text : texts)
        bench::requireEqual(slow(text) == fast(text), name + ' ' + text.toStdString());
    add(name + "/plain", slow, texts);
    add(name + "/vex", fast, texts);
    bench::compare({name, name + "/plain", name + "/vex", floor});
}

const bench::Registration registration([] {
    addRow("suffixToType", plain::suffixToType, FileTypes::suffixToType, suffixes(), 3.0);
    addRow("fileToType", plain::fileToType, FileTypes::fileToType, files(), 3.0);
});

} // namespace
