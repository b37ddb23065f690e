#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "input/Secret.h"
#include "output/NumberList.h"

#include <vex/Obfuscator.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qint64 kMostBytes = std::numeric_limits<int>::max() - 255; // whose elements fit 32 bits

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Turns a secret from standard input into a list of numbers, which keeps it out of plain sight."_s,
        {u"vex obfuscate"_s, u"vex obfuscate < key.bin > list.txt"_s,
            u"vex obfuscate --drop-line-end < key.txt > list.txt"_s},
        u"This is no encryption: whoever has the list has the secret, with vex deobfuscate. A "
        "password belongs into the credential store of the system.\n"
        "At a terminal the secret is one line, without its end, and is not shown while you type. "
        "From a file or a pipe every byte counts, a line end at the end as well unless "
        "--drop-line-end is given.\n"
        "There are no arguments, since other users of the machine can see them."_s);
    commandLine->refusePositional(
        u"the secret is no argument, which others can see: obfuscate reads it from standard input"_s);
    commandLine->addFlag(
        u"drop-line-end"_s, u"Leaves out one line end (LF or CR LF) at the end of the input."_s);
    commandLine->addOutputOption(u"Writes the list to FILE instead of printing it."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    NumberListWriter list(
        results->file() ? results->file() : results->standard(), commandLine.isJson());
    qint64 done = 0; // bytes
    const auto take = [&](QByteArrayView piece) -> vex::Error {
        if (piece.size() > kMostBytes - done)
            return failure(u"the secret is longer than a list can be: %1 bytes"_s.arg(kMostBytes));
        // an element grows with its position, so those of a later piece by what is before it
        for (const int element : vex::Obfuscator::obfuscate(piece.toByteArray()))
            list.add(element + done);
        done += piece.size();
        return vex::ErrorCode::NoError;
    };
    if (auto error = readSecret(u"the secret"_s, commandLine.isSet(u"drop-line-end"_s), take);
        error.hasError())
        return passedOn(std::move(error));
    list.end();
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kObfuscateCommand{
    "obfuscate"_L1, "a secret as a list of numbers; no encryption"_L1, declare, run, false};

} // namespace vexcli
