#include <vex/InternalVersion.h>
#include <vex/ScopedStreamRedirector.h>
#include <vex/Version.h>

#include <QTest>

#include <sstream>
#include <stdexcept>

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
            try {
                const ScopedStreamRedirector toInner(stream, inner);
                stream << 'c';
                throw std::runtime_error("out of the scope");
            } catch (const std::runtime_error &) {
            }
            stream << 'd';
        }
        stream << 'e';
        QCOMPARE(own.str(), std::string("ae"));
        QCOMPARE(outer.str(), std::string("bd"));
        QCOMPARE(inner.str(), std::string("c"));
        QCOMPARE(later.str(), std::string());
    }

    /// Failures of the stream are neither forgotten nor made by a redirector.
    void failuresStay()
    {
        std::ostringstream target;
        std::ostringstream failed;
        failed.setstate(std::ios::failbit);
        std::ostringstream fails;
        {
            const ScopedStreamRedirector redirector(failed, target);
            QVERIFY(failed.fail() && !failed.bad());
            const ScopedStreamRedirector other(fails, target);
            fails.setstate(std::ios::eofbit);
        }
        QVERIFY(failed.fail() && !failed.bad() && fails.eof());

        std::ostream without(nullptr);
        {
            const ScopedStreamRedirector redirector(without, target);
            without << 'a';
        }
        QVERIFY(without.bad());
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
