#include <vex/Error.h>
#include <vex/Result.h>

#include "ErrorTrace.h"
#include "Processes.h"

#include <QProcess>
#include <QTest>

#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace vex;
using vex::test::ErrorReport;

namespace {

using R = Result<int>;

// A code alone must not become a value.
static_assert(std::is_convertible_v<ErrorCode, Error>);
static_assert(!std::is_constructible_v<R, ErrorCode>);

Error unreadable()
{
    Error error(FileAccessError, "größer als %1");
    error.addWarning(u"a"_s);
    return error.ecatch("read(%2)", "src/Inner", 12).ecatch("load()", "src/Äußer", 345);
}

/// Gives the protected operations names that a pointer can be made of.
struct Exposed : Warnings
{
    using Warnings::addWarningInternal, Warnings::addWarningsInternal;
    using Warnings::clearWarningsInternal;
    using Warnings::resetWarningInternal, Warnings::resetWarningsInternal;
};

/// Place in the table of virtual functions: by the Itanium C++ ABI, a pointer to such a function
/// begins with its offset in bytes, plus 1 on some processors.
template <typename Function>
quintptr slotOf(Function function)
{
    quintptr offset = 0;
    std::memcpy(&offset, &function, sizeof(offset));
    return (offset & ~quintptr{1}) / sizeof(void *);
}

/// What the child process of misuseEndsTheProcess() does; it must not come back.
void misuse(const QByteArray &kind)
{
    R result = kind.endsWith("value") ? R(unreadable()) : R(7);
    result.addWarning(u"only just"_s);
    if (kind.startsWith("moved"))
        kind.endsWith("value") ? void(std::move(result).value()) : void(std::move(result).error());
    else
        kind.endsWith("value") ? void(result.value()) : void(result.error());
    std::puts("came back");
}

} // namespace

class TestError : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    void textsFollowTheTrace()
    {
        QString printed;
        QDebug(&printed).nospace() << unreadable() << '|' << u"quoted"_s;
        QCOMPARE(printed,
            u"größer als %1\nat read(%2) (src/Inner:12)\nat load() (src/Äußer:345)|\"quoted\""_s);
        const auto codeAlone = Error(InvalidInput).ecatch("f()", "A", 1);
        QCOMPARE(codeAlone.errorMessages(), QStringList{u"at f() (A:1)"_s});
        const auto success = Error(NoError, "fine").ecatch("f()", "A", 1); // no place joins it
        QCOMPARE(success.errorMessages(), QStringList{u"fine"_s});
    }

    void warningsReachResultAndHeldError()
    {
        using Operation = void (*)(R *);
        static const QStringList more{u"b"_s, u"c"_s};
        const std::pair<Operation, QString> operations[] = {
            {[](R *r) { r->addWarnings(more); }, u"abc"_s},
            {[](R *r) { r->clearWarnings(); }, u""_s},
            {[](R *r) { r->resetWarning(u"b"_s); }, u"b"_s},
            {[](R *r) { r->resetWarnings(more); }, u"bc"_s},
            // arguments that are the object's own
            {[](R *r) { r->addWarning(r->warnings().constFirst()); }, u"aa"_s},
            {[](R *r) { r->addWarnings(r->warnings()); }, u"aa"_s},
            {[](R *r) { r->addWarning(u"b"_s).resetWarning(r->warnings().constLast()); }, u"b"_s},
            {[](R *r) { r->addWarning(u"b"_s).resetWarnings(r->warnings()); }, u"ab"_s},
            {[](R *r) { *r = *r; }, u"a"_s}, {[](R *r) { *r = std::move(*r); }, u"a"_s}};
        for (const auto &[run, expected] : operations) {
            const R before(unreadable());
            R failed = before;
            QCOMPARE(failed.warnings(), unreadable().warnings());
            run(&failed);
            QCOMPARE(failed.warnings().join(QString()), expected);
            QCOMPARE(failed.error().warnings(), failed.warnings());
            QCOMPARE((before.warnings() + before.error().warnings()).join(QString()), u"aa"_s);

            R good(7);
            QVERIFY(good.warnings().isEmpty());
            good.addWarning(u"a"_s);
            run(&good);
            QCOMPARE(good.warnings().join(QString()), expected);
            QCOMPARE(good.value(), 7);
        }
    }

    void passingOnIsOneStatement()
    {
        const auto outer = [](R inner) -> R { return inner.ecatch("f()", "src/Outer", 2); };
        const auto other = [](R inner) -> Result<QString> {
            return std::move(inner.ecatch("f()", "src/Outer", 2)).error();
        };
        const R inner(Error(InvalidInput, "no number").ecatch("inner()", "src/Inner", 1));
        const ErrorReport expected{
            InvalidInput, u"no number"_s, {u"src/Inner:1"_s, u"src/Outer:2"_s}};
        QCOMPARE(test::reportOf(outer(inner).error()), expected);
        QCOMPARE(test::reportOf(other(inner).error()), expected);
        QCOMPARE(outer(7).value() + outer(7).valueOr(3), 14);
        const R noError{Error(NoError)}; // holds an error all the same
        QVERIFY(!noError && noError.hasError());
        QCOMPARE(noError.valueOr(3), 3);
    }

    void misuseEndsTheProcess()
    {
        const QStringList report = QStringList{u"Error code 4"_s} + unreadable().errorMessages();
        const QStringList warning{u"The error of a result with a value"_s, u"only just"_s};
        qputenv("QT_FORCE_STDERR_LOGGING", "1");
        for (const QString &kind : {u"value"_s, u"moved value"_s, u"error"_s, u"moved error"_s}) {
            QProcess child;
            child.start(QCoreApplication::applicationFilePath(), {u"--misuse"_s, kind});
            const bool finished = child.waitForFinished(-1);
            if (child.errorString() == test::kNoProcesses)
                QSKIP("qemu-user cannot start the process that is to end.");
            QVERIFY2(finished, qPrintable(child.errorString()));
            QVERIFY(child.exitStatus() == QProcess::CrashExit || child.exitCode() != 0);
            QCOMPARE(child.readAllStandardOutput(), QByteArray());
            const QString text = QString::fromLocal8Bit(child.readAllStandardError());
            for (const QString &line : kind.endsWith("value"_L1) ? report : warning)
                QVERIFY2(text.contains(line), qPrintable(kind + u": "_s + text));
        }
    }

    void virtualOperationsFollowTheDestructor()
    {
#if defined(_MSC_VER)
        QSKIP("A pointer to a virtual function does not tell its place with this compiler.");
#else
        const QList<quintptr> places{slotOf(&Exposed::addWarningInternal),
            slotOf(&Exposed::addWarningsInternal), slotOf(&Exposed::clearWarningsInternal),
            slotOf(&Exposed::resetWarningInternal), slotOf(&Exposed::resetWarningsInternal)};
        QCOMPARE(places, (QList<quintptr>{2, 3, 4, 5, 6})); // two are the destructor's
#endif
    }
};

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--misuse") == 0) {
        misuse(argv[2]);
        return 0;
    }
    QCoreApplication application(argc, argv);
    TestError test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Error.moc"
