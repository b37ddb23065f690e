#include "commands/Command.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Json.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/FileTypes.h>
#include <vex/TraceFileTypes.h>

#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// @p texts in one cell of a table; files without a suffix have the empty one.
QString listed(QStringList texts)
{
    for (QString &text : texts)
        text = text.isEmpty() ? u"(none)"_s : text;
    return texts.join(", "_L1);
}

QString yesOrNo(bool isYes)
{
    return isYes ? u"yes"_s : u"no"_s;
}

/// The types other than @p own that list the suffix of @p file.
QStringList otherTypesOf(const QString &file, FileTypes::TypeRef own)
{
    QStringList names;
    for (const FileTypes::Type &type : FileTypes::Type::registeredValues()) {
        if (FileTypes::isType(file, type) && type.name() != own.name())
            names.append(FileTypes::typeToString(type));
    }
    return names;
}

QByteArray typesAsText(const QStringList &files)
{
    Table table({u"name"_s, u"type"_s, u"trace"_s, u"suffixes"_s, u"masks"_s, u"also listed by"_s});
    for (const QString &file : files) {
        const FileTypes::TypeRef type = FileTypes::fileToType(file);
        table.addRow({file, FileTypes::typeToString(type),
            yesOrNo(vex::TraceFileTypes::isTraceFileType(file)),
            listed(FileTypes::fileSuffixesForExtensionType(type)),
            listed(FileTypes::fileMasksForExtensionType(type)), listed(otherTypesOf(file, type))});
    }
    return table.toText();
}

QJsonObject typeAsJson(FileTypes::TypeRef type)
{
    const auto strings = [](const QStringList &texts) { return QJsonArray::fromStringList(texts); };
    return {{u"type"_s, FileTypes::typeToString(type)},
        {u"isTrace"_s, vex::TraceFileTypes::traceFileTypes().contains(type)},
        {u"suffixes"_s, strings(FileTypes::fileSuffixesForExtensionType(type))},
        {u"masks"_s, strings(FileTypes::fileMasksForExtensionType(type))}};
}

void typesAsJson(const QStringList &files, Output *output)
{
    JsonArrayWriter array(output);
    for (const QString &file : files) {
        const FileTypes::TypeRef type = FileTypes::fileToType(file);
        QJsonObject object = typeAsJson(type);
        object.insert(u"name"_s, file);
        object.insert(u"alsoListedBy"_s, QJsonArray::fromStringList(otherTypesOf(file, type)));
        array.add(object);
    }
    array.end();
}

QByteArray registryAsText()
{
    Table types({u"type"_s, u"trace"_s, u"suffixes"_s});
    for (const FileTypes::Type &type : FileTypes::Type::registeredValues())
        types.addRow({FileTypes::typeToString(type),
            yesOrNo(vex::TraceFileTypes::traceFileTypes().contains(type)),
            listed(type.data().suffixes)});
    Table suffixes({u"suffix"_s, u"matches files"_s, u"type of such a file"_s, u"listed by"_s});
    for (const FileTypes::SuffixEntry &entry : FileTypes::suffixTable()) {
        if (entry.types.size() > 1 || !entry.isMatchable)
            suffixes.addRow({listed({entry.suffix}), yesOrNo(entry.isMatchable), entry.winner,
                listed(entry.types)});
    }
    return types.toText() + "\nSuffixes that several types list, or that no file can match:\n"
        + suffixes.toText();
}

QByteArray registryAsJson()
{
    QJsonArray types;
    for (const FileTypes::Type &type : FileTypes::Type::registeredValues())
        types.append(typeAsJson(type));
    QJsonArray suffixes;
    for (const FileTypes::SuffixEntry &entry : FileTypes::suffixTable())
        suffixes.append(QJsonObject{{u"suffix"_s, entry.suffix},
            {u"isMatchable"_s, entry.isMatchable}, {u"winner"_s, entry.winner},
            {u"types"_s, QJsonArray::fromStringList(entry.types)}});
    return jsonText({{u"types"_s, types}, {u"suffixes"_s, suffixes}});
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Tells the type of files by their names: all suffixes and masks of the type, whether it holds traces, and which other types list the same suffix."_s,
        {u"vex filetype run.mgf archive.tar.zip"_s, u"vex filetype --list"_s},
        u"What stands behind the last point of a name counts, in upper or lower case. The files "
        "need not exist. A suffix that no type lists gives the type Invalid. Where several types "
        "list a suffix, the one with the fewest suffixes wins, of those the first in the registry."_s);
    commandLine->addPositional(
        u"NAME"_s, u"Name or path of a file, such as run.mgf."_s, u"NAME..."_s);
    commandLine->addFlag(u"list"_s,
        u"Shows all types; then the suffixes that several types list, with the type that wins, and "
        "the suffixes that no file can have. With --json all suffixes."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    const QStringList files = commandLine.positional();
    const bool isList = commandLine.isSet(u"list"_s);
    if (isList && !files.isEmpty())
        return usageFailure(commandLine.withHint(u"--list takes no names"_s));
    if (!isList && files.isEmpty())
        return usageFailure(commandLine.withHint(u"no file name given"_s));
    if (files.contains(QString()))
        return usageFailure(u"an empty text is no file name"_s);
    const bool isJson = commandLine.isJson();
    if (isJson && !isList)
        typesAsJson(files, results->standard());
    else
        results->print(isList ? isJson ? registryAsJson() : registryAsText() : typesAsText(files));
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kFileTypeCommand{
    "filetype"_L1, "the type of a file by its name, and all types"_L1, declare, run, false};

} // namespace vexcli
