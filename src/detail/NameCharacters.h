#pragma once

#include <QString>

#include <algorithm>
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

/// @p bits when @p isSet, else none. Without a branch: compilers take many characters at a time.
constexpr quint16 bitsIf(bool isSet, int bits)
{
    return static_cast<quint16>(-int{isSet} & bits);
}

/// The bits of one character.
constexpr quint16 classOf(QChar character)
{
    const char16_t code = character.unicode();
    quint16 classes = bitsIf((code & 0xf800) == 0xd800, Surrogate);
    classes |= bitsIf(code < kFirstPrintable, NotInPath | NotInName);
    for (const char16_t other : kNotInPath)
        classes |= bitsIf(code == other, NotInPath | NotInName);
    for (const char16_t other : kSeparators)
        classes |= bitsIf(code == other, NotInName);
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

/// @p text with @p after in the place of each character that has @p bit.
template <CharacterClass bit>
QString replaced(QStringView text, QChar after)
{
    QString result(text.size(), Qt::Uninitialized);
    std::transform(text.begin(), text.end(), result.begin(), [after](QChar character) {
        const quint16 kept = bitsIf((classOf(character) & bit) == 0, 0xffff);
        return QChar((character.unicode() & kept) | (after.unicode() & ~kept));
    });
    return result;
}

} // namespace vex::detail
