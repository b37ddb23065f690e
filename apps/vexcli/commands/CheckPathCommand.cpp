#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Output.h"
#include "output/Table.h"

#include <vex/PathCheck.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using Finding = vex::PathCheck::Finding;

/// What a text can be valid as.
struct Kind
{
    QLatin1StringView name; // as --kind has it
    QLatin1StringView title;
    vex::PathCheck (*check)(const QString &text);
};

constexpr std::array kKinds{
    Kind{"name"_L1, "file name"_L1, vex::PathCheck::ofFileName},
    Kind{"path"_L1, "file path"_L1, vex::PathCheck::ofFilePath},
    Kind{"local"_L1, "local path"_L1, vex::PathCheck::ofLocalPath},
};

struct Judgement
{
    Kind kind;
    vex::PathCheck check;
};

/// A text and what each kind makes of it.
struct Reading
{
    QString text;
    QList<Judgement> judgements;

    bool isValid() const
    {
        return std::all_of(judgements.begin(), judgements.end(),
            [](const Judgement &judgement) { return judgement.check.isValid(); });
    }
};

QString kindName(Finding::Kind kind)
{
    switch (kind) {
    case Finding::Empty:
        return u"empty"_s;
    case Finding::UnsupportedCharacter:
        return u"unsupported character"_s;
    case Finding::UnknownDrive:
        return u"unknown drive"_s;
    case Finding::NothingBehindServerPrefix:
        return u"nothing behind server prefix"_s;
    case Finding::InvalidText:
        return u"invalid text"_s;
    case Finding::UntestedCharacter:
        return u"untested character"_s;
    case Finding::ReservedName:
        return u"reserved name"_s;
    case Finding::DotOrBlankAtEnd:
        return u"dot or blank at end"_s;
    case Finding::LongName:
        return u"long name"_s;
    case Finding::LongPath:
        return u"long path"_s;
    }
    return {};
}

QByteArray asText(const Reading &reading)
{
    QString text = (reading.text.isEmpty() ? u"(empty)"_s : shownText(reading.text)) + u'\n';
    for (const auto &[kind, check] : reading.judgements) {
        text += "  "_L1 + QString(kind.title).leftJustified(12)
            + (check.isValid() ? "valid"_L1 : "not valid"_L1)
            + (check.text == reading.text ? QString() : ", taken as "_L1 + shownText(check.text))
            + u'\n';
        for (const bool isReason : {true, false}) {
            for (const Finding &finding : check.findings) {
                if (finding.isReason() == isReason)
                    text += u"    %1 at %2: "_s.arg(isReason ? u"reason"_s : u"advice"_s,
                                QString::number(finding.position + 1))
                        + shownText(finding.message) + u'\n';
            }
        }
    }
    return text.toUtf8();
}

QJsonObject asJson(const Reading &reading)
{
    QJsonObject judgements;
    for (const auto &[kind, check] : reading.judgements) {
        QJsonArray findings;
        for (const Finding &finding : check.findings)
            findings.append(QJsonObject{{u"kind"_s, kindName(finding.kind)},
                {u"isReason"_s, finding.isReason()}, {u"position"_s, finding.position},
                {u"length"_s, finding.length}, {u"message"_s, finding.message}});
        judgements.insert(kind.name,
            QJsonObject{{u"isValid"_s, check.isValid()}, {u"text"_s, check.text},
                {u"findings"_s, findings}});
    }
    return {{u"text"_s, reading.text}, {u"isValid"_s, reading.isValid()}, {u"as"_s, judgements}};
}

} // namespace

vex::Error runCheckPath(const QStringList &arguments)
{
    CommandLine commandLine(u"checkpath"_s,
        u"Tells whether texts are valid as the name of a file, as the path of a file and as a path "
        "in a local file system or on a server, and why not. The rules are those of Windows on "
        "every system, so that a file can travel; whether there is such a file makes no "
        "difference. Next to the reasons against a text there is advice: it is valid, but a system "
        "may take it for something else. A local path is judged once cleaned. Positions count "
        "UTF-16 code units, from 1 in tables, from 0 in JSON. The exit code is 1 when a text is "
        "not valid as one of the kinds asked for."_s);
    commandLine.addPositional(u"PATH"_s, u"Name or path."_s, u"PATH..."_s);
    commandLine.addOption({u"kind"_s},
        u"What to judge the texts as: name, path or local (default: all three); may be repeated."_s,
        u"KIND"_s);
    if (auto error = commandLine.parse(arguments); error.hasError() || commandLine.isHelpShown())
        return error;
    if (commandLine.positional().isEmpty())
        return usageFailure(u"no path given (see vex checkpath --help)"_s);
    const QStringList wanted = commandLine.values(u"kind"_s);
    for (const QString &name : wanted) {
        if (std::none_of(kKinds.begin(), kKinds.end(),
                [&name](const Kind &kind) { return name == kind.name; }))
            return usageFailure(u"kind '%1' is none of name, path, local"_s.arg(name));
    }

    QList<Reading> readings;
    for (const QString &text : commandLine.positional()) {
        Reading reading{text, {}};
        for (const Kind &kind : kKinds) {
            if (wanted.isEmpty() || wanted.contains(kind.name))
                reading.judgements.append({kind, kind.check(text)});
        }
        readings.append(reading);
    }

    auto output = Output::open({});
    if (output.hasError())
        return passedOn(std::move(output).error());
    if (commandLine.isSet(u"json"_s)) {
        QJsonArray array;
        for (const Reading &reading : std::as_const(readings))
            array.append(asJson(reading));
        output.value()->write(QJsonDocument(array).toJson());
    } else {
        for (const Reading &reading : std::as_const(readings))
            output.value()->write(asText(reading));
    }
    if (auto error = output.value()->commit(); error.hasError())
        return passedOn(std::move(error));
    const auto invalid = std::count_if(readings.begin(), readings.end(),
        [](const Reading &reading) { return !reading.isValid(); });
    if (invalid == 0)
        return vex::ErrorCode::NoError;
    return failure(u"%1 of %2 %3 not valid"_s.arg(invalid)
                       .arg(readings.size())
                       .arg(invalid == 1 ? "is"_L1 : "are"_L1));
}

} // namespace vexcli
