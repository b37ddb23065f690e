#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Output.h"
#include "output/Table.h"

#include <vex/FileTypes.h>
#include <vex/TraceFileTypes.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// @p texts in one cell of a table; files without a suffix have the empty one.
QString listed(QStringList texts)
{
    for (QString &text : texts)
        text = text.isEmpty() ? u"(none)"_s : shownText(text);
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
        table.addRow({shownText(file), FileTypes::typeToString(type),
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

QByteArray typesAsJson(const QStringList &files)
{
    QJsonArray array;
    for (const QString &file : files) {
        const FileTypes::TypeRef type = FileTypes::fileToType(file);
        QJsonObject object = typeAsJson(type);
        object.insert(u"name"_s, file);
        object.insert(u"alsoListedBy"_s, QJsonArray::fromStringList(otherTypesOf(file, type)));
        array.append(object);
    }
    return QJsonDocument(array).toJson();
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
    return QJsonDocument(QJsonObject{{u"types"_s, types}, {u"suffixes"_s, suffixes}}).toJson();
}

} // namespace

vex::Error runFileType(const QStringList &arguments)
{
    CommandLine commandLine(u"filetype"_s,
        u"Tells the type of files by their names: all suffixes and masks of the type, whether it "
        "holds traces, and which other types list the same suffix. Only what stands behind the "
        "last point of a name counts, in upper or lower case; the files need not exist. A suffix "
        "that nobody knows gives the type Invalid. Of several types that list a suffix the one "
        "with the fewest suffixes wins, of those the first in the registry."_s);
    commandLine.addPositional(
        u"NAME"_s, u"Name or path of a file, such as run.mgf."_s, u"NAME..."_s);
    commandLine.addFlag(u"list"_s,
        u"Shows all types instead, then the suffixes that several types list, with the one that "
        "wins, and the suffixes that no file can match. With --json all suffixes."_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    const QStringList files = commandLine.positional();
    const bool isList = commandLine.isSet(u"list"_s);
    if (isList && !files.isEmpty())
        return usageFailure(u"--list takes no names (see vex filetype --help)"_s);
    if (!isList && files.isEmpty())
        return usageFailure(u"no file name given (see vex filetype --help)"_s);
    if (files.contains(QString()))
        return usageFailure(u"an empty text is no file name"_s);

    auto output = Output::open({});
    if (output.hasError())
        return passedOn(std::move(output).error());
    const bool isJson = commandLine.isSet(u"json"_s);
    if (isList)
        output.value()->write(isJson ? registryAsJson() : registryAsText());
    else
        output.value()->write(isJson ? typesAsJson(files) : typesAsText(files));
    return passedOn(output.value()->commit());
}

} // namespace vexcli
