#include <vex/Obfuscator.h>

#include "detail/Trace.h"

#include <QObject>

#include <optional>

namespace vex {

namespace {

// Trace sites of this file.
constexpr detail::TraceSource kSource{"src/Obfuscator"};
namespace at {
constexpr auto elementTooSmall = kSource.line(1); // chosen here
} // namespace at

/// The byte that @p element stands for at @p position; none when it is too small.
std::optional<char> byteOf(int element, qsizetype position)
{
    const qsizetype least = position + 1;
    if (element < least)
        return std::nullopt;
    // Deliberate: what is above 255 loses its higher bits.
    return static_cast<char>(static_cast<unsigned char>(element - least));
}

} // namespace

Result<QByteArray> Obfuscator::deObfuscate(const QList<int> &data)
{
    QByteArray plain(data.size(), '\0');
    for (qsizetype i = 0; i < data.size(); ++i) {
        const auto byte = byteOf(data[i], i);
        if (!byte)
            return detail::stamped(at::elementTooSmall, Q_FUNC_INFO,
                Error(ErrorCode::InvalidInput, QObject::tr("Invalid obuscated data value!")));
        plain[i] = *byte;
    }
    return plain;
}

bool Obfuscator::compareObfuscated(const QList<int> &data, const QByteArray &plain)
{
    if (data.size() != plain.size())
        return false;
    for (qsizetype i = 0; i < data.size(); ++i) {
        if (byteOf(data[i], i) != plain[i])
            return false;
    }
    return true;
}

QList<int> Obfuscator::obfuscate(const QByteArray &plain)
{
    QList<int> data(plain.size());
    for (qsizetype i = 0; i < plain.size(); ++i)
        data[i] = static_cast<int>(static_cast<unsigned char>(plain[i]) + i + 1);
    return data;
}

} // namespace vex
