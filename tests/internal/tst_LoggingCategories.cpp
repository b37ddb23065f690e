#include "detail/LoggingCategories.h"

#include <QTest>

using namespace vex::detail;

class TestLoggingCategories : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registry()
    {
        // The first call ever decides how the library's own category logs; that was at load time.
        const auto *const generic = loggingCategory("test.made", QtCriticalMsg, false);
        QCOMPARE(generic->categoryName(), kGenericCategory);
        QCOMPARE(loggingCategory(kGenericCategory, QtFatalMsg), generic);
        QCOMPARE(genericCategory(), generic);
        QVERIFY(generic->isDebugEnabled());

        const auto *const made = loggingCategory("test.made", QtWarningMsg);
        QCOMPARE(made->categoryName(), "test.made");
        static const char sameText[] = "test.made";
        QCOMPARE(loggingCategory(sameText, QtDebugMsg, false), made);
        QVERIFY(made->isWarningEnabled() && !made->isInfoEnabled());
        QVERIFY(loggingCategory("test.Made", QtDebugMsg) != made);
    }
};

QTEST_APPLESS_MAIN(TestLoggingCategories)
#include "tst_LoggingCategories.moc"
