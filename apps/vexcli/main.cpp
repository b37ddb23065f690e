#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "Failure.h"
#include "output/Plot.h"
#include "output/Progress.h"
#include "platform/Terminal.h"

#include <vex/CommandLineKeys.h>
#include <vex/InternalVersion.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>

using namespace Qt::StringLiterals;

namespace {

enum ExitCode {
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
};

struct Command
{
    QLatin1StringView name;
    const char *summary;
    vex::Error (*run)(const QStringList &arguments);
};

constexpr std::array kCommands{
    Command{"apex"_L1, "where a chromatogram is highest, and the area under it", vexcli::runApex},
    Command{"checkpath"_L1, "whether paths and names are valid, and why not", vexcli::runCheckPath},
    Command{
        "compare"_L1, "whether two signals are alike, and by which measure", vexcli::runCompare},
    Command{"distribution"_L1, "the precomputed table of isotope patterns over mass",
        vexcli::runDistribution},
    Command{"filetype"_L1, "the type of a file by its name, and all types", vexcli::runFileType},
    Command{"formula"_L1, "how formula texts are read, and what the reading leaves out",
        vexcli::runFormula},
    Command{"mass"_L1, "average to monoisotopic mass and back", vexcli::runMass},
    Command{"move"_L1, "a folder to another place, telling every step", vexcli::runMove},
    Command{"pattern"_L1, "isotope patterns from masses or protein sequences", vexcli::runPattern},
};

void printHelp()
{
    std::puts(
        "Usage: vex COMMAND [OPTION...] [INPUT...]\n"
        "Isotope patterns and masses of molecules of an average composition; sampled signals; "
        "files.\n\n"
        "Commands:");
    for (const Command &command : kCommands)
        std::printf("  %-13s %s\n", command.name.data(), command.summary);
    std::puts("\nvex COMMAND --help tells more, vex --version the version.\n"
              "Exit codes: 0 done, 1 the operation failed, 2 wrong usage.");
}

int report(const vex::Error &error, bool withTrace)
{
    if (!error.hasError())
        return Done;
    const auto lines = error.errorMessages();
    std::fprintf(stderr, "vex: %s\n", qUtf8Printable(lines.value(0)));
    for (qsizetype i = 1; withTrace && i < lines.size(); ++i)
        std::fprintf(stderr, "  %s\n", qUtf8Printable(lines[i]));
    return error.code() == vex::ErrorCode::InvalidInput ? WrongUsage : Failed;
}

vex::Error run(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return vexcli::usageFailure(u"no command given (see vex --help)"_s);
    const QString &name = arguments.constFirst();
    if (name == "--help"_L1 || name == "-h"_L1 || name == "help"_L1) {
        printHelp();
        return vex::ErrorCode::NoError;
    }
    if (name == "--"_L1 + vex::kversion) {
        std::printf("vex %s\n", qPrintable(vex::appInternalVersion().toString()));
        return vex::ErrorCode::NoError;
    }
    const auto command = std::find_if(kCommands.begin(), kCommands.end(),
        [&name](const Command &known) { return name == known.name; });
    if (command == kCommands.end())
        return vexcli::usageFailure(u"unknown command '%1' (see vex --help)"_s.arg(name));
    return command->run(arguments.sliced(1));
}

} // namespace

int main(int argc, char *argv[])
{
    vexcli::prepareStreams();
    const bool needsPlot = std::any_of(argv, argv + argc,
        [](const char *argument) { return QLatin1StringView(argument).startsWith("--plot"_L1); });
    const auto application = vexcli::makeApplication(argc, argv, needsPlot);
    vexcli::catchInterrupts();
    const QStringList arguments = QCoreApplication::arguments().sliced(1);
    return report(run(arguments), arguments.contains("--trace"_L1));
}
