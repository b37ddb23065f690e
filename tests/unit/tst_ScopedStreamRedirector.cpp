#include <vex/InternalVersion.h>
#include <vex/ScopedStreamRedirector.h>
#include <vex/Version.h>

#include <QTest>

#include <sstream>

using vex::ScopedStreamRedirector;

class TestScopedStreamRedirector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void redirectorsNestAndEndWithTheirScope()
    {
        std::ostringstream own;
        std::ostringstream outer;
        std::ostringstream inner;
        std::ostringstream later;
        std::ostream target(outer.rdbuf());
        std::ostream stream(own.rdbuf());
        stream << 'a';
        {
            const ScopedStreamRedirector toOuter(stream, target);
            target.rdbuf(later.rdbuf()); // the buffer of the beginning counts
            stream << 'b';
            {
                const ScopedStreamRedirector toInner(stream, inner);
                stream << 'c';
            }
            stream << 'd';
        }
        stream << 'e';
        const std::string all = own.str() + '|' + outer.str() + '|' + inner.str() + '|';
        QCOMPARE(all + later.str(), std::string("ae|bd|c|"));
    }

    /// Failures of the stream are neither forgotten nor made by a redirector.
    void failuresStay()
    {
        std::ostringstream target;
        std::ostringstream failed;
        failed.setstate(std::ios::failbit);
        std::ostringstream fails;
        std::ostream without(nullptr);
        {
            const ScopedStreamRedirector redirector(failed, target);
            QVERIFY(failed.fail() && !failed.bad());
            const ScopedStreamRedirector second(fails, target);
            fails.setstate(std::ios::eofbit);
            const ScopedStreamRedirector third(without, target);
            without << 'a';
        }
        QVERIFY(failed.fail() && !failed.bad() && fails.eof() && without.bad());
        QCOMPARE(target.str(), std::string("a"));
    }

    void version()
    {
        QCOMPARE(vex::appInternalVersion(), QVersionNumber(6, 0, 0));
        QCOMPARE(vex::appInternalVersion().toString(), QStringLiteral(VEX_VERSION_STRING));
        static_assert(
            VEX_VERSION == VEX_VERSION_CHECK(6, 0, 0) && VEX_VERSION < VEX_VERSION_CHECK(6, 0, 1));
    }
};

QTEST_APPLESS_MAIN(TestScopedStreamRedirector)
#include "tst_ScopedStreamRedirector.moc"
