#pragma once

#include <QByteArray>
#include <QList>

#include <vex/Export.h>
#include <vex/Result.h>

namespace vex {

/// Short byte strings out of plain sight, as lists of integers.
///
/// **This is no encryption.** There is no key: whoever has the list has the bytes. A password
/// belongs into the credential store of the system.
///
/// The element at position i, from 0, is the byte there (0 to 255) plus i + 1: "AA" is 66, 67. The
/// least that can stand at position i is i + 1.
class VEX_EXPORT Obfuscator
{
public:
    /// The bytes that @p data stands for; none for an empty list.
    ///
    /// Deliberate: an element above 255 + i + 1 is no error. It counts modulo 256: 300 at position
    /// 0 is the byte 43.
    ///
    /// @par Errors  InvalidInput "Invalid obuscated data value!", in this spelling, for an element
    ///              at position i below i + 1; nothing is decoded then
    static Result<QByteArray> deObfuscate(const QList<int> &data);

    /// True when @p data stands for exactly @p plain; false for data that stand for nothing.
    ///
    /// The plain text of @p data is not built. The comparison ends at the first difference, so its
    /// time tells how much is right.
    static bool compareObfuscated(const QList<int> &data, const QByteArray &plain);

    /// The list that stands for @p plain, which is what deObfuscate() gives back.
    ///
    /// The elements of up to 2147483392 bytes fit their type; of more bytes the list is not valid.
    static QList<int> obfuscate(const QByteArray &plain);
};

} // namespace vex
