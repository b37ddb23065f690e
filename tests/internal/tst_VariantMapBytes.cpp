#include "detail/VariantMapBytes.h"

#include <QDataStream>
#include <QDateTime>
#include <QIODevice>
#include <QLine>
#include <QPoint>
#include <QRandomGenerator>
#include <QRect>
#include <QSize>
#include <QTest>
#include <QTimeZone>
#include <QUrl>
#include <QUuid>

using namespace Qt::StringLiterals;
using namespace vex::detail;

namespace {

using Map = QMap<QString, QVariant>;

/// A value of each type that settings have.
Map everything()
{
    const QDate day(2026, 11, 22);
    const QDateTime moment(day, QTime(6, 25, 1, 7));
    const QVariantList values{QVariant(), true, 1, 2u, 3ll, 4ull, 5.5, 6.5f, QChar(u'x'), 'c',
        QVariant::fromValue<signed char>(-7), QVariant::fromValue<uchar>(8),
        QVariant::fromValue<short>(-9), QVariant::fromValue<ushort>(10),
        QVariant::fromValue<long>(-11), QVariant::fromValue<ulong>(12), u"\u03bc\U0001F600"_s,
        QString(), QByteArray("\0\xff", 2), QByteArray(), QUrl(u"https://a.example/?b"_s), day,
        moment.time(), moment, moment.toUTC(), moment.toOffsetFromUtc(3600),
        QDateTime(day, moment.time(), QTimeZone(7260)),
        QDateTime(day, moment.time(), QTimeZone::utc()), QDateTime(),
        QUuid(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11), QPoint(1, 2), QPointF(1, 2), QSize(3, 4),
        QSizeF(3, 4), QLine(1, 2, 3, 4), QLineF(1, 2, 3, 4), QRect(1, 2, 3, 4), QRectF(1, 2, 3, 4),
        QStringList{u"a"_s, QString()}, QVariant::fromValue(QByteArrayList{"b", QByteArray()}),
        QVariantList{1, QVariantList()}, QVariantMap{{u"m"_s, QVariantMap{{u"n"_s, 1}}}},
        QVariantHash{{u"h"_s, u"i"_s}}};
    Map map{{QString(), 1}};
    for (const QVariant &value : values)
        map.insert(QString::number(map.size()), value);
    return map;
}

/// A map of one entry, "a", whose value is in hexadecimal: type, whether it is null, and the rest.
QByteArray entry(const QByteArray &hex)
{
    return QByteArray::fromHex("00000001 00000002 0061" + hex);
}

/// A value that is a list in a list in a list ..., or maps likewise.
QByteArray nested(int levels, const QByteArray &level = "000000090000000001")
{
    return entry(level.repeated(levels) + "0000000000");
}

} // namespace

class TestVariantMapBytes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The walk agrees with QDataStream about where each value ends; a byte less is too little.
    void everyTypeOfSettings()
    {
        const QByteArray whole = bytesOf(everything());
        QCOMPARE(problemOfMap(whole), QString());
        QCOMPARE(mapFrom(whole), everything());
        QCOMPARE(problemOfMap(whole + '\0'), u"something follows the map"_s);
        for (qsizetype size = 0; size < whole.size(); ++size)
            QCOMPARE(problemOfMap(whole.first(size)), u"it is no map"_s);
        QVERIFY(problemOfMap(bytesOf({})).isEmpty());
    }

    void hostileBytes()
    {
        const QString noMap = u"it is no map"_s;
        const QString tooDeep = u"its values are nested deeper than 100"_s;
        for (const auto &[name, bytes, problem] :
            {std::tuple("text", QByteArray("user=ann;password=x"), noMap),
                {"4 billion entries", QByteArray(4, '\xff'), noMap},
                {"key of 4 GB", QByteArray::fromHex("00000001 fffffffe 0061"), noMap},
                {"list of 4 billion", entry("00000009 00 ffffffff"), noMap},
                {"2 billion texts", entry("0000000b 00 7fffffff"), noMap},
                {"type of an application", entry("00010000 00 00000002 4100"),
                    u"it has a value of type 65536, which is none of settings"_s},
                {"100 levels", nested(100), QString()}, {"101 levels", nested(101), tooDeep},
                {"a million levels", nested(1'000'000), tooDeep},
                {"maps", nested(101, "00000008000000000100000000"), tooDeep}})
            QVERIFY2(problemOfMap(bytes) == problem, name);
    }

    /// Whatever passes is read by QDataStream to the last byte; a fault in a byte here or there
    /// ends in a refusal or in another map, never in a crash or in bytes left over.
    void damagedBytes()
    {
        const QByteArray whole = bytesOf(everything());
        QRandomGenerator random(20261122);
        int taken = 0;
        for (int turn = 0; turn < 200'000; ++turn) {
            QByteArray bytes = whole;
            for (quint32 faults = random.bounded(1u, 4u); faults > 0; --faults)
                bytes[random.bounded(int(bytes.size()))] =
                    random.bounded(2) ? char(random.bounded(256)) : char(random.bounded(-2, 3));
            if (!problemOfMap(bytes).isEmpty())
                continue;
            ++taken;
            QDataStream stream(bytes);
            Map map;
            stream >> map;
            QVERIFY2(stream.status() == QDataStream::Ok && stream.atEnd(), bytes.toHex());
        }
        QVERIFY(taken > 1000 && taken < 190'000); // both ways were taken
    }
};

QTEST_GUILESS_MAIN(TestVariantMapBytes)
#include "tst_VariantMapBytes.moc"
