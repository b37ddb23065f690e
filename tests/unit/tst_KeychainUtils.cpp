#include "ErrorTrace.h"

#include <vex/KeychainUtils.h>

#include <QCoreApplication>
#include <QDataStream>
#include <QDateTime>
#include <QEasingCurve>
#include <QElapsedTimer>
#include <QIODevice>
#include <QProcess>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#if defined(Q_OS_UNIX)
#    include <csignal>
#endif

using namespace Qt::StringLiterals;
using namespace vex::KeychainUtils;
using namespace std::chrono_literals;
using vex::test::ErrorReport;

namespace {

using Map = QMap<QString, QVariant>;
using Reports = QList<ErrorReport>;

#if defined(Q_OS_WIN)
constexpr bool kIsWindows = true;
#else
constexpr bool kIsWindows = false;
#endif

/// A piece of every secret here, which no message may show.
constexpr const char *kMark = "s3cretMark";

const QString kKey = u"vex-test/k"_s;
const QString kOtherKey = u"vex-test/e"_s;
const QString kThirdKey = u"vex-test/K2"_s;

QString s_messages;
QtMessageHandler s_before = nullptr;

void keepMessage(QtMsgType type, const QMessageLogContext &at, const QString &text)
{
    s_messages += text + u'\n';
    s_before(type, at, text);
}

ErrorReport seen(const vex::Error &error)
{
    s_messages += error.errorMessages().join(u'\n') + error.warnings().join(u'\n');
    return vex::test::reportOf(error);
}

template <typename Value>
ErrorReport seen(const vex::Result<Value> &result)
{
    return seen(result.hasError() ? result.error() : vex::Error());
}

/// What a checked call says of the entry k, from these lines, innermost first.
ErrorReport denied(const QString &reason, const QList<int> &lines = {118},
    vex::ErrorCode code = vex::GeneralFailure)
{
    ErrorReport report{code, u"No access to the secret 'vex-test/k': "_s + reason, {}};
    for (const int line : lines)
        report.trace.append(u"src/KeychainUtils:%1"_s.arg(line));
    return report;
}

QString textOf(const QString &key)
{
    QString text = u"before"_s;
    QString said = u"before"_s;
    const auto error = readFromKeychain(key, &text, &said);
    s_messages += said;
    return error == QKeychain::NoError ? text : QString::number(error);
}

/// Every kind of failure through one message: what each checked call says of @p key.
Reports checkedReports(const QString &key, std::chrono::milliseconds limit = 5s)
{
    return {seen(readTextChecked(key, limit)), seen(readBytesChecked(key, limit)),
        seen(readMapChecked(key, limit)), seen(writeTextChecked(key, u"s3cretMark"_s, limit)),
        seen(writeBytesChecked(key, kMark, limit)), seen(writeMapChecked(key, {}, limit)),
        seen(deleteChecked(key, limit))};
}

/// A program of its own for what changes a whole process. Prints what the calls say.
int scene(const QByteArray &what, int argc, char **argv)
{
    const auto print = [](const QString &text) { std::puts(text.toUtf8().constData()); };
    std::unique_ptr<QCoreApplication> application;
    if (what != "no-application")
        application = std::make_unique<QCoreApplication>(argc, argv);
    if (what == "ending") { // loops end at once then
        QTimer::singleShot(0, application.get(), [print] {
            QCoreApplication::quit();
            print(QString::number(writeToKeychain(kOtherKey, u"s3cretMark"_s, nullptr)));
            print(textOf(kOtherKey) + seen(readTextChecked(kOtherKey)).message);
        });
        return QCoreApplication::exec();
    }
    if (what == "no-store") {
        QString said;
        QByteArray bytes("before"); // replaced by nothing
        const auto error = readFromKeychain(kKey, &bytes, &said);
        print(QString::number(error) + QString::fromUtf8(bytes));
        for (const ErrorReport &report :
            {seen(readVariantMap(kKey)), seen(writeToKeychain(kKey, Map{{u"a"_s, 1}}))})
            print(u"%1 %2 %3"_s.arg(QString::number(report.code), report.trace.join(u' '),
                report.message == said ? u"same"_s : report.message));
    }
    for (const ErrorReport &report : checkedReports(kKey))
        print(QString::number(report.code) + u' ' + report.message);
    return 0;
}

} // namespace

class TestKeychainUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
#if defined(Q_OS_UNIX)
        m_store = qEnvironmentVariableIntValue("VEX_KEYRING_PID");
        if (m_store <= 0)
            QFAIL("run it through tests/support/keyring-session: the store is the user's");
#endif
        s_before = qInstallMessageHandler(keepMessage);
    }
    void cleanup()
    {
#if defined(Q_OS_UNIX)
        ::kill(m_store, SIGCONT);
#endif
        for (const QString &key : {kKey, kOtherKey, kThirdKey})
            std::ignore = deleteFromKeychain(key, nullptr);
    }
    void cleanupTestCase()
    {
        qInstallMessageHandler(s_before);
        for (const QByteArray &form :
            {QByteArray(kMark), QByteArray(kMark).toBase64().left(11), QByteArray(kMark).toHex()})
            QVERIFY2(!s_messages.contains(QLatin1StringView(form)), qPrintable(s_messages));
    }

    /// What is said to be kept is; what is not kept leaves nothing behind.
    void secretsComeBack()
    {
        const QByteArray mark = kMark;
        for (const QByteArray &bytes : {QByteArray(), mark + " \u00e4\u03bc\U0001F600 %1\n",
                 mark + '\0' + "end", "\xff\xfe" + ('\0' + mark), mark.repeated(60),
                 mark.repeated(104'858).left(1 << 20)}) {
            const QString text = QString::fromUtf8(bytes);
            const bool isText = text.toUtf8() == bytes;
            const bool isTooLarge = kIsWindows && bytes.size() > 16'000;

            QString said = u"before"_s;
            QByteArray read("before");
            const auto written = writeToKeychain(kKey, bytes, &said);
            QCOMPARE(written, isTooLarge ? QKeychain::OtherError : QKeychain::NoError);
            QCOMPARE(said.isEmpty(), !isTooLarge);
            if (!isTooLarge && (!kIsWindows || bytes.size() < 500)) { // Wine cuts at 512
                QCOMPARE(readFromKeychain(kKey, &read, nullptr), QKeychain::NoError);
                QCOMPARE(read, bytes);
                if (isText && (kIsWindows || !text.contains(u'\0')))
                    QCOMPARE(textOf(kKey), text);
            }
            std::ignore = deleteFromKeychain(kKey, nullptr);
            QCOMPARE(textOf(kKey), u"1"_s);

            const vex::Error checked = writeBytesChecked(kKey, bytes);
            seen(checked);
            QVERIFY(kIsWindows || !checked.hasError());
            QCOMPARE(
                checked.warnings().size() == 1, bytes.size() > kMostPortableSize && !kIsWindows);
            QCOMPARE(readBytesChecked(kKey).value(),
                checked.hasError() ? std::nullopt : std::optional(bytes));
            if (!isText || bytes.size() > 500)
                continue;
            QCOMPARE(seen(writeTextChecked(kKey, text + u'2')), ErrorReport());
            QCOMPARE(readTextChecked(kKey).value(), std::optional(text + u'2'));
            QCOMPARE(textOf(kKey), text + u'2'); // also for who uses the plain call
            for (int times = 0; times < 2; ++times)
                QCOMPARE(seen(deleteChecked(kKey)), ErrorReport());
            QCOMPARE(readTextChecked(kKey).value(), std::nullopt);
        }
    }

    void plainCallsTellWhatTheStoreSays()
    {
        QString said;
        QString text = u"before"_s;
        QCOMPARE(writeToKeychain(kKey, u"s3cretMark1"_s, nullptr), QKeychain::NoError);
        QCOMPARE(writeToKeychain(kKey, u"s3cretMark2"_s, nullptr), QKeychain::NoError);
        QCOMPARE(textOf(kKey), u"s3cretMark2"_s);
        QCOMPARE(deleteFromKeychain(kKey, &said), QKeychain::NoError);
        QCOMPARE(readFromKeychain(kKey, &text, &said), QKeychain::EntryNotFound);
        QCOMPARE(text, QString());
        QCOMPARE(said, kIsWindows ? u"Password entry not found"_s : u"Entry not found"_s);
        QCOMPARE(deleteFromKeychain(kKey, &said), kNoEntry);
        QCOMPARE(readVariantMap(kKey).value(), Map());
    }

    void mapsComeBack()
    {
        const Map map{{u"user"_s, u"s3cretMark"_s}, {QString(), QVariant()},
            {u"nested"_s, QVariantMap{{u"list"_s, QVariantList{1, 2.5, QByteArray("\0", 1)}}}},
            {u"when"_s, QDateTime(QDate(2026, 11, 22), QTime(6, 25), Qt::UTC)}};
        QCOMPARE(seen(writeToKeychain(kKey, map)), ErrorReport());
        QCOMPARE(readVariantMap(kKey).value(), map);
        QCOMPARE(readMapChecked(kKey).value(), std::optional(map));
        QByteArray bytes; // of QDataStream, and nothing else
        QByteArray expected;
        QDataStream stream(&expected, QIODevice::WriteOnly);
        stream << map;
        QCOMPARE(readFromKeychain(kKey, &bytes, nullptr), QKeychain::NoError);
        QCOMPARE(bytes, expected);
        QCOMPARE(seen(writeMapChecked(kKey, {})), ErrorReport());
        QCOMPARE(readMapChecked(kKey).value(), std::optional(Map()));
        QCOMPARE(seen(deleteChecked(kKey)), ErrorReport());
        QCOMPARE(readMapChecked(kKey).value(), std::nullopt);
    }

    void bytesThatAreNoMap()
    {
        for (const auto &[bytes, reason] : {std::pair(QByteArray(kMark), u"it is no map"_s),
                 {QByteArray(5, '\0'), u"something follows the map"_s}}) {
            QCOMPARE(writeToKeychain(kKey, bytes, nullptr), QKeychain::NoError);
            QCOMPARE(readVariantMap(kKey).value(), Map()); // Deliberate: not detected
            QCOMPARE(seen(readMapChecked(kKey)), denied(reason, {121}));
        }
    }

    void checkedCallsReplaceTheOtherKind()
    {
        QCOMPARE(writeToKeychain(kKey, u"s3cretMark old"_s, nullptr), QKeychain::NoError);
        QCOMPARE(writeToKeychain(kKey, QByteArray("s3cretMark new"), nullptr), QKeychain::NoError);
        QCOMPARE(textOf(kKey), kIsWindows ? u"s3cretMark new"_s : u"s3cretMark old"_s);
        QCOMPARE(seen(writeBytesChecked(kKey, "s3cretMark newest")), ErrorReport());
        QCOMPARE(textOf(kKey), u"s3cretMark newest"_s);
    }

    void refusedKeysAndSecrets()
    {
        const QString longest(kMostKeySize, u'k');
        const QString odd = u"a key has neither NUL nor half of a surrogate pair"_s;
        for (const auto &[key, shown, reason] :
            {std::tuple(QString(), QString(), u"a key is not empty"_s),
                {longest + u'k', longest, u"a key has at most 200 characters"_s},
                {u"a\0b"_s, u"a<U+0000>b"_s, odd}, {u"a"_s + QChar(0xd800), u"a<U+D800>"_s, odd}}) {
            ErrorReport expected = denied(reason, {118}, vex::InvalidInput);
            expected.message.replace(kKey, shown);
            QCOMPARE(checkedReports(key), Reports(7, expected));
        }
        QCOMPARE(seen(writeTextChecked(longest, u"s3cretMark"_s)), ErrorReport());
        QCOMPARE(seen(deleteChecked(longest)), ErrorReport());
        QCOMPARE(seen(writeTextChecked(kKey, u"s3cretMark"_s + QChar(0xdc00))),
            denied(u"the text has half of a surrogate pair"_s, {123}, vex::InvalidInput));
        QCOMPARE(seen(writeMapChecked(kKey, {{u"k"_s, QVariant(QEasingCurve())}})),
            denied(u"it has a value of type 29, which is none of settings"_s, {122},
                vex::InvalidInput));
        QCOMPARE(readTextChecked(kKey).value(), std::nullopt);
    }

    void otherThreadsAreRefused()
    {
        Reports reports;
        const auto ask = [&reports] { reports = checkedReports(kKey); };
        std::thread(ask).join();
        QCOMPARE(reports, Reports(7, denied(u"this thread has no event dispatcher"_s)));
        const std::unique_ptr<QThread> other(QThread::create(ask));
        other->start();
        other->wait();
        QCOMPARE(
            reports, Reports(7, denied(u"another thread has used the credential store first"_s)));
    }

    /// Events go on during a call, and may call again.
    void callsWithinCalls()
    {
        QStringList log;
        QTimer::singleShot(0, this, [&] {
            log += u"plain"_s;
            QCOMPARE(writeToKeychain(kThirdKey, u"s3cretMark in"_s, nullptr), QKeychain::NoError);
            log += textOf(kThirdKey);
        });
        QTimer::singleShot(0, this, [&] {
            log += u"checked"_s;
            QCOMPARE(seen(writeTextChecked(kOtherKey, u"s3cretMark e"_s)), ErrorReport());
            log += readTextChecked(kOtherKey).value().value_or(QString());
        });
        QCOMPARE(writeToKeychain(kKey, u"s3cretMark out"_s, nullptr), QKeychain::NoError);
        QTRY_COMPARE(log.size(), 4);
        QCOMPARE(
            log, (QStringList{u"plain"_s, u"checked"_s, u"s3cretMark e"_s, u"s3cretMark in"_s}));
    }

    void scenes()
    {
        const auto refused = [](const QString &reason) {
            return QStringList(7, u"1 "_s + denied(reason).message);
        };
        using List = QStringList;
        std::vector<std::tuple<QString, List, List>> scenes{
            {u"no-application"_s, {}, refused(u"there is no QCoreApplication"_s)},
            {u"ending"_s, {}, {u"0"_s, u"s3cretMark"_s}}};
#if defined(Q_OS_UNIX)
        const List plain{
            u"7"_s, u"1 src/KeychainUtils:104 same"_s, u"1 src/KeychainUtils:117 same"_s};
        for (const auto &[wrapper, reason] :
            {std::pair(List{u"env"_s, u"DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere"_s},
                 u"Could not connect: No such file or directory"_s),
                std::pair(List{QLatin1StringView(VEX_SESSION), u"--no-service"_s},
                    u"The name org.freedesktop.secrets was not provided by any .service files"_s)})
            scenes.emplace_back(u"no-store"_s, wrapper,
                plain + refused(u"the credential store says '%1' (7)"_s.arg(reason)));
#endif
        for (const auto &[what, wrapper, expected] : scenes) {
            QProcess process;
            process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
            const List command =
                wrapper + List{QCoreApplication::applicationFilePath(), u"scene"_s, what};
            process.start(command.constFirst(), command.sliced(1));
            QVERIFY2(process.waitForFinished(60'000), qPrintable(process.errorString()));
            QCOMPARE(process.exitCode(), 0);
            const QString printed = QString::fromUtf8(process.readAllStandardOutput());
            QCOMPARE(QString(printed).remove(u'\r').chopped(1).split(u'\n'), expected);
        }
    }

#if defined(Q_OS_UNIX)
    /// A store that does not answer: the limit ends the call, and nothing is left that the late
    /// answer could hit.
    void frozenStore()
    {
        QCOMPARE(seen(writeTextChecked(kKey, u"s3cretMark before"_s)), ErrorReport());
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(::kill(m_store, SIGSTOP), 0);
        const QString begin = u"the credential store has not answered "_s;
        QCOMPARE(seen(writeTextChecked(kKey, u"s3cretMark late"_s, 300ms)),
            denied(begin + u"within 300 ms"_s, {119, 124, 124}));
        QCOMPARE(seen(readTextChecked(kKey, 200ms)),
            denied(begin + u"an earlier call within 200 ms"_s, {119, 120}));
        QVERIFY(clock.elapsed() >= 500 && clock.elapsed() < 5000);
        QCOMPARE(::kill(m_store, SIGCONT), 0);
        // the write that came too late took place
        QCOMPARE(readTextChecked(kKey).value().value_or(u"none"_s), u"s3cretMark late"_s);

        // the plain call waits until the store goes on
        QCOMPARE(::kill(m_store, SIGSTOP), 0);
        clock.restart();
        QTimer::singleShot(400, this, [this] { ::kill(m_store, SIGCONT); });
        QCOMPARE(textOf(kKey), u"s3cretMark late"_s);
        QVERIFY(clock.elapsed() >= 400);
    }

    /// What others find the entry by.
    void entryBelongsToTheService()
    {
        QCOMPARE(writeToKeychain(kKey, u"s3cretMark"_s, nullptr), QKeychain::NoError);
        const QByteArray found =
            askStore(u"SearchItems"_s, u"dict:string:string:server,VexCredentials,user,"_s + kKey);
        QCOMPARE(found.count("object path"), 1);
    }

    /// The last one: nothing opens the store again.
    void lockedStore()
    {
        QCOMPARE(writeToKeychain(kKey, u"s3cretMark"_s, nullptr), QKeychain::NoError);
        askStore(u"Lock"_s, u"array:objpath:/org/freedesktop/secrets/aliases/default"_s);
        QCOMPARE(textOf(kKey), u"1"_s); // Deliberate: as if there were none
        QString said;
        QCOMPARE(writeToKeychain(kKey, u"s3cretMark"_s, &said), QKeychain::AccessDenied);
        for (ErrorReport &report : checkedReports(kKey)) {
            report.trace.clear();
            QCOMPARE(report, denied(u"the credential store is locked"_s, {}));
        }
    }
#endif

private:
#if defined(Q_OS_UNIX)
    /// What the store answers to a call of D-Bus.
    static QByteArray askStore(const QString &call, const QString &argument)
    {
        QProcess asking;
        asking.start(u"dbus-send"_s,
            {u"--session"_s, u"--print-reply"_s, u"--dest=org.freedesktop.secrets"_s,
                u"/org/freedesktop/secrets"_s, u"org.freedesktop.Secret.Service."_s + call,
                argument});
        asking.waitForFinished();
        return asking.exitCode() == 0 ? asking.readAllStandardOutput() : "failed";
    }

    pid_t m_store = 0;
#endif
    const QKeychain::Error kNoEntry = kIsWindows ? QKeychain::EntryNotFound : QKeychain::NoError;
};

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "scene") == 0)
        return scene(argv[2], argc, argv);
    QCoreApplication application(argc, argv);
    TestKeychainUtils test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_KeychainUtils.moc"
