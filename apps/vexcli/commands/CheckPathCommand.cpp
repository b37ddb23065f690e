#include "commands/Command.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Json.h"
#include "output/Table.h"
#include "output/Text.h"

#include <vex/PathCheck.h>

#include <QJsonArray>
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
    QString text = headLine(reading.text.isEmpty() ? u"(empty)"_s : reading.text);
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

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Tells whether texts are valid as the name of a file, as the path of a file, and as a path on a drive or a server; and why not."_s,
        {u"vex checkpath 'run 1?.mgf'"_s, u"vex checkpath --kind local C:/data/run1.mgf"_s},
        u"The rules are those of Windows on every system, so that a file can travel. The files "
        "need not exist. A reason makes a text not valid. Advice does not: the text is valid, but "
        "some system takes it for something else. A local path is judged once it is cleaned of "
        "parts such as a/../.\n"
        "Positions count UTF-16 code units, from 1 in tables, from 0 in JSON. The exit code is 1 "
        "when a text is not valid as one of the kinds asked for."_s);
    commandLine->addPositional(u"PATH"_s, u"Name or path."_s, u"PATH..."_s);
    commandLine->addRepeatableOption(
        {u"kind"_s}, u"What to judge the texts as (default: all three)."_s, u"name|path|local"_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    if (commandLine.positional().isEmpty())
        return usageFailure(commandLine.withHint(u"no path given"_s));
    const QStringList wanted = commandLine.values(u"kind"_s);
    for (const QString &name : wanted) {
        if (std::none_of(kKinds.begin(), kKinds.end(),
                [&name](const Kind &kind) { return name == kind.name; }))
            return usageFailure(u"--kind '%1' is none of name, path, local"_s.arg(name));
    }
    JsonArrayWriter json(commandLine.isJson() ? results->standard() : nullptr);
    qsizetype invalid = 0;
    for (const QString &text : commandLine.positional()) {
        Reading reading{text, {}};
        for (const Kind &kind : kKinds) {
            if (wanted.isEmpty() || wanted.contains(kind.name))
                reading.judgements.append({kind, kind.check(text)});
        }
        invalid += reading.isValid() ? 0 : 1;
        if (commandLine.isJson())
            json.add(asJson(reading));
        else
            results->print(asText(reading));
    }
    json.end();
    if (invalid > 0)
        results->setVerdict(failure(u"%1 of %2 %3 not valid"_s.arg(QString::number(invalid),
            QString::number(commandLine.positional().size()), invalid == 1 ? u"is"_s : u"are"_s)));
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kCheckPathCommand{
    "checkpath"_L1, "whether paths and names are valid, and why not"_L1, declare, run, false};

} // namespace vexcli
