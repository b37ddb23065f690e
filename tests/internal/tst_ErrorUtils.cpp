#include "algo/detail/ErrorUtils.h"

#include "ErrorTrace.h"

#include <QMap>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::ErrorReport;

namespace {

Error given()
{
    return Error(InvalidInput, u"given"_s).ecatch("f()", "src/Caller", 9);
}

ErrorReport givenAt(const QString &place)
{
    return {InvalidInput, u"given"_s, {u"src/Caller:9"_s, place}};
}

} // namespace

class TestErrorUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    void checks()
    {
        using ErrorUtils::emptyCheckReturn;
        using ErrorUtils::indexInRange;
        const QList<double> one{1.0};
        const ErrorReport empty = givenAt(u"src/algo/ErrorUtils:82"_s);
        const ErrorReport outside = givenAt(u"src/algo/ErrorUtils:120"_s);
        QCOMPARE(test::reportOf(emptyCheckReturn(QMap<QString, double>(), given())), empty);
        QCOMPARE(test::reportOf(indexInRange(one, -1, given())), outside);
        QCOMPARE(test::reportOf(indexInRange(one, 1, given())), outside);
        for (const Error &good : {emptyCheckReturn(one, given()), indexInRange(one, 0, given()),
                 indexInRange(one, 1, NoError), notSameSizeReturn(one, {2.0}, given()),
                 checkOutOfBounds(QList<double>(), 100), checkOutOfBounds(QList<double>(100), 100)})
            QCOMPARE(test::reportOf(good), ErrorReport());
    }

    void loggedFailures()
    {
        const QString file = u"src/algo/AveragineIsotopeModelRefactored:%1"_s;
        const QList<double> one{1.0};
        for (const QList<double> &other : {QList<double>(), QList<double>{1.0, 2.0}}) {
            QTest::ignoreMessage(
                QtWarningMsg, "Different sized isotopic mass and abundance vectors.");
            QCOMPARE(test::reportOf(notSameSizeReturn(one, other, given())), givenAt(file.arg(78)));
        }
        for (const auto &[size, bound] : {std::pair(101, 100), std::pair(1, 0), std::pair(0, -1)}) {
            QTest::ignoreMessage(QtCriticalMsg, "Convolution index out of bounds..");
            QCOMPARE(test::reportOf(checkOutOfBounds(QList<double>(size), bound)),
                (ErrorReport{GeneralFailure, {}, {file.arg(64)}}));
        }
    }
};

QTEST_APPLESS_MAIN(TestErrorUtils)
#include "tst_ErrorUtils.moc"
