#include "detail/VariantMapBytes.h"

#include <QDataStream>
#include <QIODevice>
#include <QMetaType>
#include <QObject>
#include <QVarLengthArray>
#include <QtEndian>

#include <algorithm>
#include <iterator>
#include <optional>

namespace vex::detail {

namespace {

constexpr int kMostNesting = 100; // each level is one on the stack of whoever reads
constexpr quint32 kNull = 0xffffffff; // in place of a size

/// Bytes of the types that always take the same number, in every version of QDataStream since 6.0.
std::optional<qsizetype> sizeOf(quint32 type)
{
    switch (type) {
    case QMetaType::UnknownType:
        return 0;
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return 1;
    case QMetaType::QChar:
    case QMetaType::Short:
    case QMetaType::UShort:
        return 2;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::QTime:
        return 4;
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Double:
    case QMetaType::Float: // as a double
    case QMetaType::QDate:
    case QMetaType::QPoint:
    case QMetaType::QSize:
        return 8;
    case QMetaType::QPointF:
    case QMetaType::QSizeF:
    case QMetaType::QLine:
    case QMetaType::QRect:
    case QMetaType::QUuid:
        return 16;
    case QMetaType::QLineF:
    case QMetaType::QRectF:
        return 32;
    default:
        return {};
    }
}

/// Goes along the bytes of a map. Every step tells whether there was room for it.
class Walk
{
public:
    explicit Walk(const QByteArray &bytes)
        : m_rest(bytes)
    {
    }

    bool map(int depth)
    {
        return each([this, depth] { return text() && variant(depth); });
    }
    bool isAtEnd() const { return m_rest.isEmpty(); }
    /// More than that there is no room.
    const QString &problem() const { return m_problem; }

private:
    bool skip(qsizetype size)
    {
        if (size > m_rest.size())
            return false;
        m_rest = m_rest.sliced(size);
        return true;
    }
    std::optional<quint32> number()
    {
        const QByteArrayView at = m_rest;
        return skip(4) ? std::optional(qFromBigEndian<quint32>(at.data())) : std::nullopt;
    }
    template <typename Step>
    bool each(Step step)
    {
        const auto count = number();
        for (quint32 i = 0; count && i < *count; ++i) {
            if (!step())
                return false;
        }
        return count.has_value();
    }
    bool block()
    {
        const auto size = number();
        return size && (*size == kNull || skip(*size));
    }
    bool text()
    {
        const qsizetype before = m_rest.size();
        return block() && (before - m_rest.size()) % 2 == 0;
    }
    bool dateTime()
    {
        constexpr qsizetype kDateAndTime = 12;
        if (m_rest.size() <= kDateAndTime)
            return false;
        const Qt::TimeSpec kind = static_cast<Qt::TimeSpec>(m_rest[kDateAndTime]);
        if (!skip(kDateAndTime + 1))
            return false;
        if (kind == Qt::OffsetFromUTC)
            return skip(4);
        return kind == Qt::LocalTime || kind == Qt::UTC || (kind == Qt::TimeZone && zone());
    }
    bool zone()
    {
        // stands for a zone without a name of its own; the size comes first
        static constexpr char16_t kOffset[] = u"\0\x1a"
                                              "OffsetFromUtc";
        const QByteArrayView at = m_rest;
        if (!text())
            return false;
        constexpr qsizetype kSize = std::size(kOffset) - 1;
        QVarLengthArray<char16_t, kSize> begin(kSize);
        if (at.size() < kSize * 2)
            return true;
        qFromBigEndian<char16_t>(at.data(), kSize, begin.data());
        if (!std::equal(begin.cbegin(), begin.cend(), kOffset))
            return true;
        return text() && skip(4) && text() && text() && skip(4) && text();
    }
    bool variant(int depth)
    {
        const auto type = number();
        if (!type || !skip(1)) // whether it is null
            return false;
        if (const auto size = sizeOf(*type))
            return skip(*size);
        if (depth == kMostNesting) {
            m_problem = QObject::tr("its values are nested deeper than %1").arg(kMostNesting);
            return false;
        }
        switch (*type) {
        case QMetaType::QString:
            return text();
        case QMetaType::QByteArray:
        case QMetaType::QUrl:
            return block();
        case QMetaType::QDateTime:
            return dateTime();
        case QMetaType::QStringList:
            return each([this] { return text(); });
        case QMetaType::QByteArrayList:
            return each([this] { return block(); });
        case QMetaType::QVariantList:
            return each([this, depth] { return variant(depth + 1); });
        case QMetaType::QVariantMap:
        case QMetaType::QVariantHash:
            return map(depth + 1);
        default:
            m_problem =
                QObject::tr("it has a value of type %1, which is none of settings").arg(*type);
            return false;
        }
    }

    QByteArrayView m_rest;
    QString m_problem;
};

} // namespace

QByteArray bytesOf(const QMap<QString, QVariant> &map)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << map;
    return bytes;
}

QMap<QString, QVariant> mapFrom(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    QMap<QString, QVariant> map;
    stream >> map;
    return map;
}

QString problemOfMap(const QByteArray &bytes)
{
    Walk walk(bytes);
    if (!walk.map(0))
        return walk.problem().isEmpty() ? QObject::tr("it is no map") : walk.problem();
    return walk.isAtEnd() ? QString() : QObject::tr("something follows the map");
}

} // namespace vex::detail
