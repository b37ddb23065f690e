#include "commands/Command.h"
#include "output/Progress.h"
#include "platform/Terminal.h"

int main(int argc, char *argv[])
{
    vexcli::prepareProcess();
    vexcli::prepareStreams();
    vexcli::catchInterrupts();
    return vexcli::runProgram(vexcli::commandArguments(argc, argv));
}
