#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include <vex/ExceptionPointers.h>

namespace vex::detail {

// Functions on the stack of a thread, and their text. Nothing here allocates: all of it runs while
// the process crashes.

/// A text of limited size, always ended by NUL; what does not fit is left out.
template <std::size_t Size>
class FixedText
{
public:
    const char *text() const { return m_text.data(); }
    std::size_t size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }

    void clear() { m_text[m_size = 0] = '\0'; }
    FixedText &operator<<(const char *text)
    {
        for (; *text != '\0' && m_size + 1 < Size; ++text)
            m_text[m_size++] = *text;
        m_text[m_size] = '\0';
        return *this;
    }
    /// At least @p width digits, which are at most 20.
    FixedText &number(std::uint64_t value, unsigned base = 10, std::size_t width = 1)
    {
        std::array<char, 21> digits = {};
        std::size_t at = digits.size() - 1;
        for (std::size_t i = 0; i < width || value != 0; ++i, value /= base)
            digits[--at] = "0123456789abcdef"[value % base];
        return *this << &digits[at];
    }

private:
    std::array<char, Size> m_text = {};
    std::size_t m_size = 0;
};

struct Frame
{
    std::uint64_t address = 0;
    bool isCaller = false; ///< the address is where a call returns to: behind what it names

    FixedText<256> module; ///< file name of the program or library; empty for none
    std::uint64_t moduleStart = 0;

    FixedText<1024> symbol; ///< empty while not known
    FixedText<1024> inlined; ///< whose code the compiler has put into the symbol; mostly empty
    bool hasDisplacement = false;
    std::uint64_t displacement = 0; ///< bytes from the symbol's beginning

    FixedText<512> file; ///< empty while not known
    std::uint64_t line = 0;
};

struct Backtrace
{
    std::array<Frame, 62> frames;
    std::atomic<std::size_t> count = 0; ///< of the frames that are complete but for names
    FixedText<512> problem; ///< why there is no more; empty for none
};

/// Makes symbols readable that are not. Allocates, unlike all else here.
void demangleNames(Backtrace *backtrace);

using FrameLine = FixedText<3072>;

/// A tab, the symbol, the address, and the place in the source.
FrameLine frameLine(const Frame &frame);

/// A tab, the address, and the place in its module; empty where frameLine() says enough.
FrameLine moduleLine(const Frame &frame);

/// Hands out each line of the text in order, without line ends.
template <typename Take>
void forEachLine(const Backtrace &backtrace, const Take &take)
{
    take(".Backtrace begin");
    const std::size_t count = backtrace.count;
    bool arePlacesMissing = false;
    for (std::size_t i = 0; i < count; ++i) {
        take(frameLine(backtrace.frames[i]).text());
        arePlacesMissing = arePlacesMissing || !moduleLine(backtrace.frames[i]).isEmpty();
    }
    if (!backtrace.problem.isEmpty())
        take(backtrace.problem.text());
    take(".Backtrace end");
    if (!arePlacesMissing)
        return;
    take(".Modules begin");
    for (std::size_t i = 0; i < count; ++i) {
        if (const FrameLine line = moduleLine(backtrace.frames[i]); !line.isEmpty())
            take(line.text());
    }
    take(".Modules end");
}

} // namespace vex::detail
