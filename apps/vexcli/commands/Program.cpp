#include "commands/Command.h"

#include "CrashReport.h"
#include "Failure.h"
#include "Interruptible.h"
#include "commands/CommandLine.h"
#include "output/Messages.h"
#include "output/Output.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "output/Text.h"
#include "platform/Terminal.h"

#include <vex/CommandLineKeys.h>
#include <vex/InternalVersion.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr std::array kCommands
{
    &kApexCommand, &kCheckPathCommand, &kCompareCommand, &kCrashCommand,
#if VEX_HAS_KEYCHAIN
        &kCredentialCommand,
#endif
        &kDeobfuscateCommand, &kDistributionCommand, &kFileTypeCommand, &kFormulaCommand,
        &kMassCommand, &kModificationsCommand, &kMoveCommand, &kObfuscateCommand, &kPatternCommand,
        &kSysInfoCommand,
};

enum ExitCode {
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
};

int report(const vex::Error &error, bool withTrace)
{
    if (!error.hasError())
        return Done;
    sayError(error.message());
    for (const QString &more : error.warnings())
        sayError(more);
    const auto lines = error.errorMessages();
    for (qsizetype i = 1; withTrace && i < lines.size(); ++i)
        std::fprintf(stderr, "  %s\n", qUtf8Printable(shownText(lines[i])));
    return error.code() == vex::ErrorCode::InvalidInput ? WrongUsage : Failed;
}

/// Prints @p text and nothing else.
vex::Error printAll(const QString &text)
{
    auto output = Output::open({});
    if (output.hasError())
        return passedOn(std::move(output).error());
    output.value()->write(text.toUtf8());
    return passedOn(output.value()->commit());
}

/// What a run works with.
class Run
{
public:
    explicit Run(const QString &command)
        : commandLine(command)
    {
    }

    /// Opens an output; the file of -o comes before standard output.
    vex::Result<std::shared_ptr<Output>> open(const QString &path)
    {
        auto output = Output::open(path);
        if (output.hasError())
            return passedOn(std::move(output).error());
        const std::scoped_lock lock(m_mutex);
        m_outputs.append(output.value());
        return output;
    }
    QList<std::shared_ptr<Output>> outputs()
    {
        const std::scoped_lock lock(m_mutex);
        return m_outputs;
    }

    CommandLine commandLine;
    std::unique_ptr<Results> results;

private:
    std::mutex m_mutex; // one may be opened while all are given up
    QList<std::shared_ptr<Output>> m_outputs;
};

/// Runs @p work. When it has to be left behind after Ctrl-C, so is everything: the outputs are
/// given up and the process ends. What @p isIrreversible is not left behind.
vex::Error runStep(Run *run, const std::function<vex::Error()> &work, bool isIrreversible = false)
{
    const auto leave = [run] {
        for (const auto &output : run->outputs())
            output->abandon();
        endProcess(report(interrupted(), run->commandLine.isSet(u"trace"_s)));
    };
    return passedOn(
        runInterruptibly(work, isIrreversible ? std::function<void()>() : std::function(leave)));
}

vex::Error open(Run *run)
{
    const CommandLine &line = run->commandLine;
    if (auto error = requireOtherFiles(line.inputFiles(), line.outputFiles()); error.hasError())
        return passedOn(std::move(error));
    if (auto error = setUpMessages(line.value(vex::klog), line.value(vex::klog_severity));
        error.hasError())
        return passedOn(std::move(error));
    line.logParameters();
    setReportedParameters(line.parameters());
    if (const QString path = line.plotFile(); !path.isEmpty()) {
        if (auto error = checkPlotPath(path); error.hasError())
            return passedOn(std::move(error));
        if (!path.contains(kNamePlaceholder)) {
            if (auto error = requireWritable(path); error.hasError())
                return passedOn(std::move(error));
        }
    }
    std::shared_ptr<Output> file;
    std::shared_ptr<Output> standard;
    if (const QString path = line.outputFile(); !path.isEmpty()) {
        auto output = run->open(path);
        if (output.hasError())
            return passedOn(std::move(output).error());
        file = output.value();
    }
    if (line.outputFile() != "-"_L1) {
        auto output = run->open({});
        if (output.hasError())
            return passedOn(std::move(output).error());
        standard = output.value();
    }
    run->results = std::make_unique<Results>(standard, file);
    return vex::ErrorCode::NoError;
}

/// Writes the pictures, one after the other.
vex::Error draw(Run *run)
{
    qsizetype done = 0;
    const auto &plots = run->results->plots();
    Progress progress(u"drawing"_s, qint64(plots.size()));
    for (const auto &[path, drawing] : plots) {
        auto error = [&, path = path, &drawing = drawing]() -> vex::Error {
            if (isInterrupted())
                return interrupted();
            auto picture = drawing(path);
            if (picture.hasError())
                return passedOn(std::move(picture).error());
            return runStep(run, [path, bytes = picture.value()]() -> vex::Error {
                auto output = Output::open(path);
                if (output.hasError())
                    return passedOn(std::move(output).error());
                output.value()->write(bytes);
                return passedOn(output.value()->commit());
            });
        }();
        if (error.hasError() && done > 0)
            return failure(u"%1; %2 of %3 plots are written, no other file is"_s.arg(
                isInterrupted() ? u"interrupted"_s : error.message(), QString::number(done),
                QString::number(plots.size())));
        if (error.hasError())
            return passedOn(std::move(error));
        progress.update(++done);
    }
    return vex::ErrorCode::NoError;
}

vex::Error runCommand(const Command &command, const QStringList &arguments)
{
    Run run(command.name);
    CommandLine &commandLine = run.commandLine;
    command.declare(&commandLine);
    if (auto error = commandLine.parse(arguments); error.hasError())
        return passedOn(std::move(error));
    const bool isHelp = commandLine.isHelpWanted();
    auto application = makeApplication(!isHelp && !commandLine.plotFile().isEmpty());
    if (application.hasError())
        return passedOn(std::move(application).error());
    if (isHelp)
        return passedOn(printAll(commandLine.helpText()));
    const auto commit = [&run, &command]() -> vex::Error {
        vex::Error verdict = run.results->verdict();
        for (const auto &output : run.outputs()) {
            auto error = output->commit();
            if (error.hasError() && !command.isIrreversible)
                return passedOn(std::move(error));
            if (error.hasError() && verdict.hasError())
                verdict.addWarning(error.message());
            else if (error.hasError())
                verdict = passedOn(std::move(error));
        }
        return verdict;
    };
    const auto work = [&]() -> vex::Error {
        if (auto error = open(&run); error.hasError())
            return passedOn(std::move(error));
        auto error = command.run(run.commandLine, run.results.get());
        if (error.hasError() && (command.isIrreversible || !isInterrupted()))
            return passedOn(std::move(error));
        if (!command.isIrreversible) {
            for (const auto &output : run.outputs()) { // none shall appear when another cannot
                if (auto problem = output->check(); problem.hasError())
                    return passedOn(std::move(problem));
            }
            if (isInterrupted())
                return error.hasError() ? passedOn(std::move(error)) : interrupted();
        }
        // pictures come first
        return run.results->plots().empty() ? commit() : vex::Error(vex::ErrorCode::NoError);
    };
    if (auto error = runStep(&run, work, command.isIrreversible); error.hasError())
        return passedOn(std::move(error));
    if (!run.results->plots().empty()) {
        if (auto error = draw(&run); error.hasError())
            return passedOn(std::move(error));
        if (auto error = runStep(&run, commit, command.isIrreversible); error.hasError())
            return passedOn(std::move(error));
    }
    if (run.results->ending() != nullptr)
        run.results->ending()();
    return vex::ErrorCode::NoError;
}

QString helpText()
{
    QString text = u"Usage: vex COMMAND [OPTION...] [INPUT...]\n"
                   "Masses and isotope patterns of molecules, sampled signals, and files.\n\n"
                   "Examples:\n"
                   "  vex pattern 1000\n"
                   "  vex pattern --fasta proteins.fasta --plot patterns.svg\n"
                   "  vex help pattern\n\n"
                   "Commands:\n"_s;
    for (const Command *command : kCommands)
        text += u"  %1 %2\n"_s.arg(QString(command->name).leftJustified(13), command->summary);
    return text
        + u"\nOptions:\n"
          "  -h, --help     Shows this help; behind a command, that of the command.\n"
          "  -V, --version  Shows the version.\n\n"
          "A file named - is standard input, or standard output behind -o.\n"
          "Exit codes: 0 done, 1 the operation failed, 2 wrong usage.\n"_s;
}

vex::Error runArguments(QStringList arguments)
{
    if (arguments.isEmpty())
        return usageFailure(u"no command given (see vex --help)"_s);
    const QString name = arguments.takeFirst();
    if (name == "-V"_L1 || name == "--"_L1 + vex::kversion)
        return passedOn(printAll(u"vex %1\n"_s.arg(vex::appInternalVersion().toString())));
    if (name == "help"_L1 && !arguments.isEmpty())
        return passedOn(runArguments({arguments.constFirst(), u"--help"_s}));
    if (name == "--help"_L1 || name == "-h"_L1 || name == "help"_L1)
        return passedOn(printAll(helpText()));
    QStringList names;
    for (const Command *command : kCommands) {
        if (name == command->name)
            return passedOn(runCommand(*command, arguments));
        names.append(command->name);
    }
    const QString meant = similarWord(name, names);
    return usageFailure(u"there is no command '%1'%2 (see vex --help)"_s.arg(
        name, meant.isEmpty() ? QString() : u"; did you mean %1?"_s.arg(meant)));
}

} // namespace

void Results::print(const QByteArray &text) const
{
    if (m_standard)
        m_standard->write(text);
}

int runProgram(const vex::Result<QStringList> &arguments)
{
    if (arguments.hasError())
        return report(arguments.error(), false);
    return report(runArguments(arguments.value()), arguments.value().contains("--trace"_L1));
}

} // namespace vexcli
