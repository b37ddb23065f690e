#include "output/PlotFiles.h"

#include "Failure.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "output/Output.h"
#include "output/Progress.h"

#include <vex/CommandLineKeys.h>
#include <vex/FileUtilsGeneric.h>

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

QString fileNameFor(const QString &name)
{
    QString result = name;
    for (QChar &character : result) {
        if (!character.isLetterOrNumber() && !u"-._"_s.contains(character))
            character = u'_';
    }
    const bool isDots = result.count(u'.') == result.size();
    return isDots ? QString(std::max<qsizetype>(1, result.size()), u'_') : result;
}

} // namespace

vex::Result<QStringList> plotFilesFor(
    const CommandLine &commandLine, const QStringList &names, qsizetype most)
{
    const QString path = commandLine.plotFile();
    if (path.isEmpty())
        return QStringList();
    if (!path.contains(kNamePlaceholder)) {
        if (names.size() > most)
            return usageFailure(
                u"%1 patterns are too many for one plot: write {name} into the file name for one each"_s
                    .arg(names.size()));
        return QStringList(path);
    }
    const QStringList taken = commandLine.inputFiles()
        + QStringList{commandLine.outputFile(), commandLine.value(vex::klog)};
    QStringList files;
    QSet<QString> identities;
    for (const QString &name : names) {
        QString filled = path;
        filled.replace(kNamePlaceholder, fileNameFor(name));
        const QString identity = vex::FileUtilsGeneric::identity(filled);
        if (identities.contains(identity))
            return failure(u"two patterns would be drawn into %1"_s.arg(filled));
        identities.insert(identity);
        if (auto error = requireOtherFiles(taken, {filled}); error.hasError())
            return passedOn(std::move(error));
        if (auto error = requireWritable(filled); error.hasError())
            return passedOn(std::move(error));
        if (isInterrupted())
            return interrupted();
        files.append(filled);
    }
    return files;
}

} // namespace vexcli
