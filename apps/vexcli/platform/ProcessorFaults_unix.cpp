#include "platform/ProcessorFaults.h"

#include <cstdio>

#include <sys/mman.h>
#include <unistd.h>

namespace vexcli {

namespace {

[[gnu::noinline]] void runIllegalInstruction()
{
#if defined(__x86_64__) || defined(__i386__)
    asm volatile("ud2");
#elif defined(__aarch64__)
    asm volatile("udf #0");
#else
    __builtin_trap();
#endif
}

/// Of a file that has become shorter.
[[gnu::noinline]] void readBehindFile()
{
    std::FILE *const file = std::tmpfile();
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    if (!file)
        return;
    void *const memory = mmap(nullptr, size, PROT_READ, MAP_SHARED, fileno(file), 0);
    if (memory != MAP_FAILED && *static_cast<volatile char *>(memory) != 0)
        munmap(memory, size);
}

} // namespace

#if defined(__x86_64__) || defined(__i386__)
const bool isDivisionByZeroCaught = true;
#else
const bool isDivisionByZeroCaught = false;
#endif
void (*const illegalInstruction)() = runIllegalInstruction;
void (*const busError)() = readBehindFile;

} // namespace vexcli
