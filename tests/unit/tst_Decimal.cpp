#include <QLocale>
#include <QTest>
#include <QVariant>

#include <vex/Decimal.h>
#include <vex/TimeRange.h>

using namespace Qt::StringLiterals;
using vex::Decimal;

class TestDecimal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void texts()
    {
        for (const auto &[locale, text, value, sigFig, shown] :
            {std::tuple(u"C"_s, u"3.140"_s, 3.14, 3, u"3.140"_s),
                {u"C"_s, u"42"_s, 42.0, 0, u"42"_s}, {u"C"_s, u"1.5 "_s, 1.5, 2, u"1.50"_s},
                {u"C"_s, u"abc.d"_s, 0.0, 1, u"0.0"_s},
                {u"de_DE"_s, u"1234,50"_s, 1234.5, 2, u"1.234,50"_s},
                {u"de_DE"_s, u"1x50"_s, 0.0, 0, u"0"_s}}) {
            QLocale::setDefault(QLocale(locale));
            const Decimal decimal = Decimal::fromString(text);
            QCOMPARE(decimal.value(), value);
            QCOMPARE(decimal.sigFig(), sigFig);
            QCOMPARE(decimal.toString(), shown);
            QVERIFY(Decimal::fromJson(decimal.toJson()) == decimal);
        }
    }

    void valuesTravel()
    {
        QVERIFY(QMetaType::fromName("vex::Decimal") == QMetaType::fromType<Decimal>());
        QVERIFY(QVariant::fromValue(Decimal(1.5, 2)).value<Decimal>() == Decimal(1.5, 2));
        QCOMPARE(QDebug::toString(Decimal(1.5, 2)), u"Decimal(value:1.5, sigFig:2)"_s);
        QVERIFY(
            Decimal(1.0, 2) == Decimal(1.0 + 1e-13, 2) && !(Decimal(1.0, 2) == Decimal(1.0, 3)));
        QVERIFY(Decimal(1e6, 2) == Decimal(1e6 + 1e-7, 2)
            && !(Decimal(0.5, 2) == Decimal(0.5 + 2e-12, 2)));
        QVERIFY(Decimal::fromJson({{u"value"_s, u"3"_s}}) == Decimal(0.0, 0));
        QCOMPARE(Decimal().toString(), u"0.00"_s);
    }

    void rangesKeepTheirOrder()
    {
        vex::TimeRange range(5.0, 2.0, true);
        QVERIFY(range.start() == 5.0 && range.end() == 2.0 && !range.valid() && range.useRange());
        range.setTime(5.0, 2.0);
        QVERIFY(range.start() == 2.0 && range.end() == 5.0 && range.valid());
        range.setTime(2.0, 2.0);
        QVERIFY(!range.valid() && !vex::TimeRange().valid() && !vex::TimeRange().useRange());
    }
};

QTEST_GUILESS_MAIN(TestDecimal)
#include "tst_Decimal.moc"
