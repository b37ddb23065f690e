#include "detail/Backtrace.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#if defined(__GNUC__)
#    include <cxxabi.h>
#endif

namespace vex::detail {

namespace {

constexpr unsigned kHexadecimal = 16;
constexpr std::size_t kAddressDigits = 16;

template <std::size_t Size>
void demangle(FixedText<Size> *symbol)
{
#if defined(__GNUC__) // the names of Microsoft's compiler are readable when they come
    // a function of C called f would be read as the type float
    if (std::strncmp(symbol->text(), "_Z", 2) != 0)
        return;
    int status = 0;
    char *const name = abi::__cxa_demangle(symbol->text(), nullptr, nullptr, &status);
    if (status == 0 && name) {
        FixedText<Size> readable;
        *symbol = readable << name;
    }
    std::free(name);
#else
    static_cast<void>(symbol);
#endif
}

} // namespace

void demangleNames(Backtrace *backtrace)
{
    std::for_each_n(backtrace->frames.begin(), backtrace->count.load(), [](Frame &frame) {
        demangle(&frame.symbol);
        demangle(&frame.inlined);
    });
}

FrameLine frameLine(const Frame &frame)
{
    FrameLine line;
    line << "\t";
    if (!frame.inlined.isEmpty())
        line << frame.inlined.text() << ", inlined into ";
    line << (frame.symbol.isEmpty() ? "(No symbol)" : frame.symbol.text()) << " [0x";
    line.number(frame.address, kHexadecimal, kAddressDigits);
    if (!frame.symbol.isEmpty() && frame.hasDisplacement)
        (line << "+").number(frame.displacement);
    line << "]";
    if (frame.file.isEmpty())
        return line << "(No line info)";
    (line << "(" << frame.file.text() << ":").number(frame.line);
    return line << ")";
}

FrameLine moduleLine(const Frame &frame)
{
    FrameLine line;
    if (!frame.file.isEmpty() || frame.module.isEmpty())
        return line;
    (line << "\t0x").number(frame.address, kHexadecimal, kAddressDigits);
    (line << " " << frame.module.text() << "+0x")
        .number(frame.address - frame.moduleStart, kHexadecimal);
    return line;
}

} // namespace vex::detail
