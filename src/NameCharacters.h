#pragma once

#include <QString>

#include <string_view>

namespace vex::detail {

/// What the tests of names and paths know of a character, as bits.
enum CharacterClass : quint16 {
    NotInPath = 1, ///< neither in a name nor in a path
    NotInName = 2, ///< not in a name; separators only have this
    Surrogate = 4, ///< half of a pair; no valid text when it stands alone
};

/// Not in a path either: these and what lies below U+0020. In the order of unsupportedCharacters().
inline constexpr std::u16string_view kNotInPath = u"|<>:\"?*";
/// In a path, not in a name.
inline constexpr std::u16string_view kSeparators = u"/\\";
/// Control characters lie below.
inline constexpr char16_t kFirstPrintable = u' ';

/// The bits of one character, by comparisons alone: compilers take eight characters at a time.
constexpr quint16 classOf(QChar character)
{
    const char16_t code = character.unicode();
    quint16 classes = (code & 0xf800) == 0xd800 ? Surrogate : 0;
    classes |= code < kFirstPrintable ? NotInPath | NotInName : 0;
    for (const char16_t other : kNotInPath)
        classes |= code == other ? NotInPath | NotInName : 0;
    for (const char16_t other : kSeparators)
        classes |= code == other ? NotInName : 0;
    return classes;
}

/// The bits of all characters.
inline quint16 classesOf(QStringView text)
{
    quint16 classes = 0;
    for (const QChar character : text)
        classes |= classOf(character);
    return classes;
}

} // namespace vex::detail
