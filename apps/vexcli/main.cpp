#include "commands/Command.h"
#include "CrashReport.h"
#include "output/Progress.h"
#include "platform/Terminal.h"

int main(int argc, char *argv[])
{
    vexcli::prepareProcess();
    vexcli::prepareStreams();
    vexcli::catchInterrupts();
    const auto arguments = vexcli::commandArguments(argc, argv);
    vexcli::catchCrashes(arguments.valueOr({}));
    return vexcli::runProgram(arguments);
}
