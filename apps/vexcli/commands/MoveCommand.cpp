#include "commands/Command.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "output/Progress.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/FileUtilsGeneric.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <optional>
#include <tuple>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using Step = vex::MoveReport::Step;

constexpr qsizetype kMostShown = 20; // of what was left behind

/// What the command line asks for.
struct Request
{
    QString source;
    QString destination;
    QStringList files; // that are written
    bool mustDelete = true;
    bool followsLinks = false;
    bool isJson = false;
};

/// What became of it.
struct Outcome
{
    vex::MoveReport report;
    vex::Error error;
    QString problem; // in one line; empty when all went well
    QString hint; // what to do about it
};

bool isLinkToFolder(const QString &path)
{
    const QFileInfo info(path);
    return info.isDir() && (info.isSymbolicLink() || info.isJunction());
}

/// A symbolic link to a folder among the visible content of @p folder, or itself; empty when there
/// is none.
QString linkToFolderIn(const QString &folder)
{
    using vex::FileUtilsGeneric;
    QStringList folders{folder};
    QSet<QString> entered; // not every link can be told from a folder
    while (!folders.isEmpty()) {
        QString next = folders.takeLast();
        if (isLinkToFolder(next))
            return next;
        const qsizetype before = entered.size();
        entered.insert(FileUtilsGeneric::identity(next));
        if (entered.size() > before)
            folders += FileUtilsGeneric::getFolderContent(
                next, FileUtilsGeneric::Folders | FileUtilsGeneric::NoDotAndDotDot);
    }
    return {};
}

QString kindName(Step::Kind kind)
{
    switch (kind) {
    case Step::Renamed:
        return u"renamed"_s;
    case Step::Created:
        return u"created"_s;
    case Step::Copied:
        return u"copied"_s;
    case Step::Deleted:
        return u"deleted"_s;
    case Step::LeftBehind:
        return u"left behind"_s;
    }
    return {};
}

QString whatOf(const Step &step)
{
    return !step.link.isEmpty() ? u"link"_s : step.isFolder ? u"folder"_s : u"file"_s;
}

QString amountOf(const vex::MoveReport &report, Step::Kind kind)
{
    QStringList parts;
    bool hasContent = report.bytes(kind) > 0;
    for (const QString &what : {u"folder"_s, u"file"_s, u"link"_s}) {
        const auto count = std::count_if(report.steps.begin(), report.steps.end(),
            [&](const Step &step) { return step.kind == kind && whatOf(step) == what; });
        if (count > 0)
            parts.append(counted(count, what));
        hasContent = hasContent || (count > 0 && what == "file"_L1);
    }
    if (hasContent)
        parts.append(counted(report.bytes(kind), u"byte"_s));
    return parts.join(", "_L1);
}

QByteArray asText(const Request &request, const Outcome &outcome)
{
    const vex::MoveReport &report = outcome.report;
    const qsizetype all = report.count(Step::LeftBehind); // they are the last steps
    QString text = (all == 0 ? u"moved %1 to %2\n"_s : u"did not move all of %1 to %2\n"_s)
                       .arg(shownText(request.source), shownText(request.destination));
    for (const auto &[kind, what] : {std::pair(Step::Renamed, u"renamed"_s),
             {Step::Created, u"created"_s}, {Step::Copied, u"copied"_s},
             {Step::Deleted, u"deleted at source"_s}, {Step::LeftBehind, u"left behind"_s}}) {
        if (report.count(kind) > 0)
            text += reportLine(what, amountOf(report, kind));
    }
    Table left({u"left behind"_s, u"bytes"_s, u"path"_s, u"reason"_s});
    for (const Step &step : report.steps.last(all).first(std::min(all, kMostShown)))
        left.addRow(
            {whatOf(step), step.isFolder ? QString() : QString::number(step.bytes), step.source,
                (step.destination.isEmpty() ? QString() : u"copied, but not deleted: "_s)
                    + step.reason});
    QByteArray bytes = text.toUtf8();
    if (!left.isEmpty())
        bytes += left.toText(2);
    if (all > kMostShown)
        bytes += "  and " + QByteArray::number(all - kMostShown) + " more\n";
    return bytes;
}

QByteArray asJson(const Request &request, const Outcome &outcome)
{
    QJsonArray steps;
    for (const Step &step : outcome.report.steps)
        steps.append(QJsonObject{{u"kind"_s, kindName(step.kind)}, {u"what"_s, whatOf(step)},
            {u"source"_s, step.source}, {u"destination"_s, step.destination},
            {u"bytes"_s, step.bytes}, {u"reason"_s, step.reason}, {u"link"_s, step.link}});
    QJsonObject object{{u"source"_s, request.source}, {u"destination"_s, request.destination},
        {u"isDone"_s, outcome.problem.isEmpty()}, {u"steps"_s, steps}};
    if (!outcome.problem.isEmpty())
        object.insert(u"error"_s, outcome.problem);
    if (!outcome.hint.isEmpty())
        object.insert(u"hint"_s, outcome.hint);
    return jsonText(object);
}

void writeCsv(const vex::MoveReport &report, Output *output)
{
    output->write("kind,what,source,destination,bytes,reason,link\n");
    for (const Step &step : report.steps)
        output->write((kindName(step.kind) + u',' + whatOf(step) + u',' + csvField(step.source)
            + u',' + csvField(step.destination) + u',' + QString::number(step.bytes) + u','
            + csvField(step.reason) + u',' + csvField(step.link) + u'\n')
                          .toUtf8());
}

/// How to go on and how to go back, as far as that is true.
QString hintFor(
    const Request &request, const vex::MoveReport &report, bool isUnfinished, bool isNew)
{
    if (report.count(Step::LeftBehind) == report.steps.size())
        return {}; // nothing has changed
    const bool isTwice =
        std::any_of(report.steps.begin(), report.steps.end(), [](const Step &step) {
            return step.kind == Step::LeftBehind && !step.isFolder && !step.destination.isEmpty();
        });
    const QString goOn = u"run the same command again to go on"_s;
    QString hint;
    if (isTwice)
        hint = u"some files were copied, but not deleted: delete them in %1"_s.arg(request.source)
            + (isUnfinished ? ", then "_L1 + goOn : QString());
    else if (isInterrupted())
        hint = goOn;
    else
        hint = isUnfinished ? "once that is put right, "_L1 + goOn : u"see what was left behind"_s;
    if (isNew && !isTwice)
        hint += u"; to undo, move %1 back"_s.arg(request.destination);
    return hint;
}

/// Moves the folder. @p refused gets a link that must not be followed; nothing has changed then.
Outcome move(const Request &request, QString *refused)
{
    const bool isNew = !QFileInfo::exists(request.destination);
    Outcome outcome;
    std::optional<Progress> bar;
    bool isUnfinished = false;
    const auto progress = [&](const vex::MoveProgress &state) {
        isUnfinished = state.filesDone < state.filesTotal;
        if (state.path.isEmpty())
            return true; // the end
        if (!bar) { // the folder could not be renamed, and nothing has been moved yet
            if (!request.followsLinks)
                *refused = linkToFolderIn(request.source);
            if (!refused->isEmpty())
                return false;
            bar.emplace(u"moving"_s, state.bytesTotal + state.filesTotal);
        }
        bar->update(state.bytesDone + state.filesDone); // empty files take their time as well
        return !isInterrupted();
    };
    outcome.error = vex::FileUtilsGeneric::moveDirectory(
        request.source, request.destination, request.mustDelete, &outcome.report, progress);
    if (!refused->isEmpty()) {
        const QList<Step> &steps = outcome.report.steps;
        for (auto step = steps.crbegin(); step != steps.crend(); ++step) {
            if (step->kind == Step::Created)
                QDir().rmdir(step->destination);
        }
    } else if (outcome.error.hasError()) {
        const QStringList reasons = QStringList{outcome.error.message()} + outcome.error.warnings();
        outcome.problem = reasons.join(": "_L1);
        outcome.hint = hintFor(request, outcome.report, isUnfinished || isInterrupted(), isNew);
    }
    return outcome;
}

vex::Error check(const Request &request)
{
    const auto &[source, destination] = std::tie(request.source, request.destination);
    const QFileInfo from(source);
    const QFileInfo to(destination);
    if (!from.isDir())
        return failure(u"cannot move %1: %2"_s.arg(
            source, from.exists() ? u"it is not a folder"_s : u"there is no such folder"_s));
    if (to.exists() && !to.isDir())
        return failure(u"cannot move %1: %2 is not a folder"_s.arg(source, destination));
    using vex::FileUtilsGeneric;
    if (FileUtilsGeneric::identity(source) == FileUtilsGeneric::identity(destination))
        return usageFailure(u"%1 and %2 are the same folder"_s.arg(source, destination));
    if (FileUtilsGeneric::isWithin(destination, source))
        return usageFailure(
            u"cannot move %1 into itself: %2 lies in it"_s.arg(source, destination));
    for (const QString &file : request.files) {
        for (const QString &folder : {source, destination}) {
            if (FileUtilsGeneric::isWithin(file, folder)
                || FileUtilsGeneric::isWithin(folder, file))
                return usageFailure(
                    u"cannot write to %1: %2 is moved or filled"_s.arg(file, folder));
        }
    }
    return vex::ErrorCode::NoError;
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Moves a folder and everything in it, so that it is called DESTINATION afterwards."_s,
        {u"vex move old/run1 archive/run1"_s, u"vex move run1 /media/disk/run1 -o steps.csv"_s},
        u"The folder is renamed where that works. Otherwise, as from one drive to another, its "
        u"files "
        "are copied and then deleted, one after another. A file is deleted only when its copy is "
        "complete. A DESTINATION that is a folder already takes the content in. Nothing in it is "
        "overwritten: a file that is there already ends the move. Hidden files are moved only when "
        "the folder around them can be renamed.\n"
        "Ctrl-C ends the move between two files; the same command goes on later. The summary tells "
        "what was done and what was left behind."_s);
    commandLine->addPositional(u"SOURCE"_s, u"The folder to move."_s, u"SOURCE"_s);
    commandLine->addPositional(u"DESTINATION"_s,
        u"What it is to be called, not where it is put into."_s, u"DESTINATION"_s);
    commandLine->addFlag(u"keep-undeletable"_s,
        u"Does not fail when everything could be copied, but not everything deleted at the source."_s);
    commandLine->addFlag(u"follow-links"_s,
        u"Moves the content of the folders that symbolic links lead to, where SOURCE cannot be "
        "renamed. Without this a tree with such a link stays as it is."_s);
    commandLine->addOutputOption(
        u"Writes every step in order to FILE as CSV, also when the move fails: kind, what, source, "
        "destination, bytes, reason, and what a link holds. --json does not change it."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    const QStringList folders = commandLine.positional();
    if (folders.size() != 2)
        return usageFailure(commandLine.withHint(u"give a source and a destination"_s));
    if (folders.contains(QString()))
        return usageFailure(u"an empty text is no folder"_s);
    Request request{folders[0], folders[1], {}, !commandLine.isSet(u"keep-undeletable"_s),
        commandLine.isSet(u"follow-links"_s), commandLine.isJson()};
    for (const QString &file : commandLine.outputFiles()) {
        if (!file.isEmpty() && file != "-"_L1)
            request.files.append(file);
    }
    if (auto error = check(request); error.hasError())
        return passedOn(std::move(error));

    QString link;
    const Outcome outcome = move(request, &link);
    if (!link.isEmpty())
        return failure(u"%1 cannot be renamed, and the folder that the link %2 leads to would be "
                       "emptied (--follow-links allows that)"_s.arg(request.source, link));
    if (results->file())
        writeCsv(outcome.report, results->file());
    results->print(request.isJson ? asJson(request, outcome) : asText(request, outcome));
    if (outcome.error.hasError()) {
        vex::Error told(outcome.error.code(), outcome.problem);
        for (const auto &place : outcome.error.trace())
            told.ecatch(place.function.toUtf8(), place.file.toUtf8(), place.line);
        if (!outcome.hint.isEmpty())
            told.addWarning(outcome.hint);
        results->setVerdict(passedOn(std::move(told)));
    }
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kMoveCommand{
    "move"_L1, "a folder to another place, telling every step"_L1, declare, run, true};

} // namespace vexcli
