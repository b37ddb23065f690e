#include "platform/ProcessorFaults.h"

#if defined(_MSC_VER)
#    include <intrin.h>
#endif

namespace vexcli {

namespace {

void runIllegalInstruction()
{
#if defined(_MSC_VER) && !defined(__clang__)
    __ud2();
#else
    __builtin_trap();
#endif
}

} // namespace

const bool isDivisionByZeroCaught = true;
void (*const illegalInstruction)() = runIllegalInstruction;
void (*const busError)() = nullptr; // no file becomes shorter while it is in memory

} // namespace vexcli
