#include "commands/Command.h"

#include "Crashes.h"
#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

void declare(CommandLine *commandLine)
{
    QString kinds = u"Kinds:"_s;
    for (const Crash &crash : crashes())
        kinds += u"\n  %1 %2"_s.arg(QString(crash.name).leftJustified(21),
            crash.run ? QString(crash.summary) : u"not possible on this system"_s);
    commandLine->describe(
        u"Crashes the program on purpose, to see what a crash leaves behind: a report in a file, which the message on standard error names."_s,
        {u"vex crash null-write"_s, u"vex crash abort --log-severity debug"_s},
        u"The exit status is that of the crash: on Linux the signal, on Windows the exception.\n"_s
            + kinds);
    commandLine->addPositional(u"KIND"_s, u"What happens; see above."_s, u"KIND"_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    const QStringList kinds = commandLine.positional();
    if (kinds.size() != 1)
        return usageFailure(commandLine.withHint(
            kinds.isEmpty() ? u"no kind of crash given"_s : u"one kind of crash is enough"_s));
    const auto known = crashes();
    const auto found = std::find_if(known.begin(), known.end(),
        [&kinds](const Crash &crash) { return kinds[0] == crash.name; });
    if (found == known.end()) {
        QStringList names;
        for (const Crash &crash : known)
            names.append(crash.name);
        const QString meant = similarWord(kinds[0], names);
        return usageFailure(commandLine.withHint(u"there is no crash '%1'%2"_s.arg(
            kinds[0], meant.isEmpty() ? QString() : u"; did you mean %1?"_s.arg(meant))));
    }
    if (!found->run)
        return failure(u"this system has no crash '%1'"_s.arg(kinds[0]));
    if (found->isInCommand)
        found->run();
    else
        results->setEnding(found->run);
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kCrashCommand{
    "crash"_L1, "crashes on purpose, and shows what is told of it"_L1, declare, run, false};

} // namespace vexcli
