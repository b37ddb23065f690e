#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "input/Secret.h"
#include "output/Json.h"
#include "output/Output.h"
#include "output/Table.h"
#include "platform/Terminal.h"

#include <vex/KeychainUtils.h>

#include <QEventLoop>
#include <QJsonObject>
#include <QStringDecoder>

#include <array>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

using Limit = std::chrono::milliseconds;

constexpr qsizetype kMostBytes = 1 << 20; // more is a file that was taken for a secret

/// What is done with an entry.
struct Action
{
    QLatin1StringView name;
    vex::Error (*run)(
        const QString &key, Limit limit, const CommandLine &commandLine, Results *results);
};

vex::Error noEntry(const QString &key)
{
    return failure(u"there is no entry '%1'"_s.arg(key));
}

/// @p secret as JSON can hold it.
QJsonObject asJson(const QString &key, const QByteArray &secret)
{
    QStringDecoder toUtf16(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = toUtf16(secret);
    if (toUtf16.hasError())
        return {{u"key"_s, key}, {u"base64"_s, QString::fromLatin1(secret.toBase64())}};
    return {{u"key"_s, key}, {u"text"_s, text}};
}

vex::Error get(const QString &key, Limit limit, const CommandLine &commandLine, Results *results)
{
    const auto secret = vex::KeychainUtils::readBytesChecked(key, limit);
    if (secret.hasError())
        return passedOn(secret.error());
    if (!secret.value())
        return passedOn(noEntry(key));
    QByteArray shown =
        commandLine.isJson() ? jsonText(asJson(key, *secret.value())) : *secret.value();
    if (!commandLine.isJson() && !results->file() && isTerminal(stdout))
        shown += '\n'; // a prompt begins a line of its own
    (results->file() ? results->file() : results->standard())->write(shown);
    return vex::ErrorCode::NoError;
}

vex::Error set(const QString &key, Limit limit, const CommandLine &commandLine, Results *)
{
    QByteArray secret;
    const auto take = [&secret](QByteArrayView piece) -> vex::Error {
        secret += piece;
        if (secret.size() > kMostBytes)
            return failure(u"the secret has more than %1 bytes"_s.arg(kMostBytes));
        return vex::ErrorCode::NoError;
    };
    if (auto error = readSecret(u"the secret"_s, commandLine.isSet(u"drop-line-end"_s), take);
        error.hasError())
        return passedOn(std::move(error));
    if (secret.isEmpty())
        return failure(u"standard input holds no secret; nothing is stored"_s);
    return passedOn(vex::KeychainUtils::writeBytesChecked(key, secret, limit));
}

vex::Error remove(const QString &key, Limit limit, const CommandLine &, Results *)
{
    return passedOn(vex::KeychainUtils::deleteChecked(key, limit));
}

vex::Error listMap(
    const QString &key, Limit limit, const CommandLine &commandLine, Results *results)
{
    const auto map = vex::KeychainUtils::readMapChecked(key, limit);
    if (map.hasError())
        return passedOn(map.error());
    if (!map.value())
        return passedOn(noEntry(key));
    Table table({u"name"_s, u"type"_s});
    JsonArrayWriter json(commandLine.isJson() ? results->standard() : nullptr);
    for (auto value = map.value()->cbegin(); value != map.value()->cend(); ++value) {
        const QString type = QString::fromLatin1(value->typeName());
        table.addRow({value.key(), type});
        json.add({{u"name"_s, value.key()}, {u"type"_s, type}});
    }
    json.end();
    if (!commandLine.isJson())
        results->print(table.toText());
    return vex::ErrorCode::NoError;
}

constexpr std::array kActions{Action{"get"_L1, get}, Action{"set"_L1, set},
    Action{"delete"_L1, remove}, Action{"list-map"_L1, listMap}};

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Keeps secrets in the credential store of the system, in the entries of vex."_s,
        {u"vex credential set archive"_s, u"vex credential get archive"_s,
            u"vex credential set archive --drop-line-end < password.txt"_s,
            u"vex credential delete archive"_s, u"vex credential list-map servers"_s},
        u"set reads the secret from standard input: at a terminal it is one line and is not shown "
        "while you type; from a file or a pipe every byte counts. get prints it as it is. list-map "
        "names the values of a stored map and their types, without the values. The secret itself "
        "is never an argument, which other users of the machine could see.\n"
        "Every program that runs as you can read these entries while the store is open."_s);
    commandLine->addPositional(u"ACTION"_s, u"get, set, delete or list-map."_s, u"ACTION"_s);
    commandLine->addPositional(u"KEY"_s, u"Name of the entry."_s, u"KEY"_s);
    commandLine->refusePositional(
        u"one entry at a time; a secret is no argument, which others can see"_s, 2);
    commandLine->addFlag(u"drop-line-end"_s,
        u"set: leaves out one line end (LF or CR LF) at the end of the input."_s);
    commandLine->addOption(
        {u"timeout"_s}, u"Longest time to wait for the store; 120 if not given."_s, u"SECONDS"_s);
    commandLine->addOutputOption(u"get: writes the secret to FILE instead of printing it."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    const QStringList words = commandLine.positional();
    const auto action = std::find_if(kActions.begin(), kActions.end(),
        [&words](const Action &known) { return words.value(0) == known.name; });
    if (action == kActions.end())
        return usageFailure(
            commandLine.withHint(u"say what to do first: get, set, delete or list-map"_s));
    if (words.size() == 1)
        return usageFailure(commandLine.withHint(u"name the entry behind %1"_s.arg(action->name)));
    if (results->file() && action->run != get)
        return usageFailure(commandLine.withHint(u"-o is for get"_s));
    Limit limit = vex::KeychainUtils::kAnswerLimit;
    if (commandLine.isSet(u"timeout"_s)) {
        const auto seconds =
            wholeNumber(commandLine.value(u"timeout"_s), u"the timeout"_s, 1, 86400);
        if (seconds.hasError())
            return passedOn(seconds.error());
        limit = std::chrono::seconds(static_cast<int>(seconds.value()));
    }
    const QEventLoop dispatcher; // the thread of a command has none yet, and the store needs it
    return passedOn(action->run(words[1], limit, commandLine, results));
}

} // namespace

const Command kCredentialCommand{
    "credential"_L1, "secrets in the credential store of the system"_L1, declare, run, false};

} // namespace vexcli
