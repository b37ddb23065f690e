#include "detail/VariantMapBytes.h"

#include <QDataStream>
#include <QDateTime>
#include <QEasingCurve>
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

#include <limits>

using namespace Qt::StringLiterals;
using namespace vex::detail;

namespace {

using Map = QMap<QString, QVariant>;

/// A value of each type that settings have.
QVariantList values()
{
    const QDate day(2026, 11, 22);
    const QDateTime moment(day, QTime(6, 25, 1, 7));
    return {QVariant(), true, 1, 2u, 3ll, 4ull, 5.5, 6.5f, QChar(u'x'), 'c',
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
}

Map everything()
{
    Map map{{QString(), 1}};
    for (const QVariant &value : values())
        map.insert(QString::number(map.size()), value);
    return map;
}

QByteArray nested(int levels)
{
    QByteArray bytes = QByteArray::fromHex("00000001"
                                           "00000002"
                                           "0061");
    for (int i = 0; i < levels; ++i)
        bytes += QByteArray::fromHex("00000009"
                                     "00"
                                     "00000001");
    return bytes
        + QByteArray::fromHex("00000000"
                              "00");
}

QByteArray hostile(const char *hex)
{
    return QByteArray::fromHex(hex);
}

} // namespace

class TestVariantMapBytes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The walk agrees with QDataStream about where each value ends; a byte less is too little.
    void everyTypeOfSettings()
    {
        for (const QVariant &value : values()) {
            const Map map{{u"k"_s, value}};
            const QByteArray bytes = bytesOf(map);
            QVERIFY2(problemOfMap(bytes).isEmpty(), value.typeName());
            QCOMPARE(mapFrom(bytes), map);
            QCOMPARE(problemOfMap(bytes + '\0'), u"something follows the map"_s);
        }
        const QByteArray whole = bytesOf(everything());
        QVERIFY(problemOfMap(whole).isEmpty());
        for (qsizetype size = 0; size < whole.size(); ++size)
            QCOMPARE(problemOfMap(whole.first(size)), u"it is no map"_s);
        QVERIFY(problemOfMap(bytesOf({})).isEmpty());
    }

    void hostileBytes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("problem");
        const QString noMap = u"it is no map"_s;
        QTest::newRow("empty") << QByteArray() << noMap;
        QTest::newRow("text") << QByteArray("user=ann;password=x") << noMap;
        QTest::newRow("4 billion entries") << hostile("ffffffff") << noMap;
        QTest::newRow("key of 4 GB") << hostile("00000001fffffffe0061") << noMap;
        QTest::newRow("odd key") << hostile("000000010000000161000000000100") << noMap;
        QTest::newRow("list of 4 billion") << hostile("00000001000000020061"
                                                      "0000000900"
                                                      "ffffffff")
                                           << noMap;
        QTest::newRow("list of 2 billion texts") << hostile("00000001000000020061"
                                                            "0000000b00"
                                                            "7fffffff")
                                                 << noMap;
        QTest::newRow("date of no kind") << hostile("00000001000000020061"
                                                    "0000001000"
                                                    "0000000000000000"
                                                    "00000000"
                                                    "09")
                                         << noMap;
        QTest::newRow("type of an application") << hostile(
            "00000001000000020061"
            "0001000000"
            "00000002"
            "4100") << u"it has a value of type 65536, which is none of settings"_s;
        QTest::newRow("type of nobody") << hostile(
            "00000001000000020061"
            "7fffffff00") << u"it has a value of type 2147483647, which is none of settings"_s;
        QTest::newRow("easing curve") << bytesOf({{u"k"_s, QVariant(QEasingCurve())}})
                                      << u"it has a value of type 29, which is none of settings"_s;
        QTest::newRow("100 levels") << nested(100) << QString();
        QTest::newRow("101 levels") << nested(101) << u"its values are nested deeper than 100"_s;
        QTest::newRow("a million levels")
            << nested(1'000'000) << u"its values are nested deeper than 100"_s;
    }
    void hostileBytes()
    {
        QFETCH(QByteArray, bytes);
        QTEST(problemOfMap(bytes), "problem");
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
