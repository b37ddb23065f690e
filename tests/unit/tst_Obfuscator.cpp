#include "ErrorTrace.h"

#include <QTest>

#include <vex/Obfuscator.h>

#include <limits>

using namespace Qt::StringLiterals;
using vex::Obfuscator;

class tst_Obfuscator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lists()
    {
        constexpr int kLeast = std::numeric_limits<int>::min();
        constexpr int kMost = std::numeric_limits<int>::max();
        QByteArray allBytes;
        QList<int> longList;
        for (int i = 0; i < 70000; ++i) { // longer than any type of two bytes counts
            allBytes.append(static_cast<char>(i));
            longList.append(i % 256 + i + 1);
        }
        // null bytes: the list stands for nothing; true: it is what the encoder gives
        for (const auto &[list, plain, isFromEncoder] :
            {std::tuple<QList<int>, QByteArray, bool>({}, "", true), {{66, 67}, "AA", true},
                {{257, 258}, QByteArray(2, '\0'), false}, {{kMost, kMost}, "\xfe\xfd", false},
                {{0}, {}, false}, {{kLeast, kLeast}, {}, false}, {{66, 67, 2}, {}, false},
                {{66, 67 - 256}, {}, false}, {longList, allBytes, true}})
            check(list, plain, isFromEncoder);
    }

private:
    static void check(const QList<int> &list, const QByteArray &plain, bool isFromEncoder)
    {
        const auto decoded = Obfuscator::deObfuscate(list);
        QCOMPARE(decoded.hasValue(), !plain.isNull());
        if (plain.isNull()) {
            const vex::test::ErrorReport expected{vex::ErrorCode::InvalidInput,
                u"Invalid obuscated data value!"_s, {u"src/Obfuscator:1"_s}};
            QCOMPARE(vex::test::reportOf(decoded.error()), expected);
            // not even the bytes that the low bits would give
            QByteArray low;
            for (qsizetype i = 0; i < list.size(); ++i)
                low.append(static_cast<char>((qint64{list[i]} - i - 1) & 0xff));
            QVERIFY(!Obfuscator::compareObfuscated(list, low));
            return;
        }
        QCOMPARE(decoded.value(), plain);
        QVERIFY(Obfuscator::compareObfuscated(list, plain));
        QCOMPARE(Obfuscator::obfuscate(plain) == list, isFromEncoder);
        // one byte more, one less, and each end changed
        QVERIFY(!Obfuscator::compareObfuscated(list, plain + '\0'));
        QVERIFY(plain.isEmpty() || !Obfuscator::compareObfuscated(list, plain.chopped(1)));
        for (qsizetype i : {qsizetype{0}, plain.size() - 1}) {
            QByteArray other = plain;
            if (!plain.isEmpty())
                other[i] = static_cast<char>(other[i] ^ '\x80');
            QCOMPARE(Obfuscator::compareObfuscated(list, other), plain.isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(tst_Obfuscator)
#include "tst_Obfuscator.moc"
