#include "Files.h"
#include "LoggedMessage.h"

#include <vex/AppParamsPrinter.h>
#include <vex/CommandLineKeys.h>
#include <vex/ProcessUtils.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QProcess>

using namespace Qt::StringLiterals;
using vex::AppParamsPrinter;

namespace {

/// An application that was started with these arguments.
class Started
{
public:
    explicit Started(const QStringList &arguments)
    {
        for (const QString &argument : QStringList{u"/opt/an app"_s} + arguments)
            m_texts.append(argument.toLocal8Bit());
        for (QByteArray &text : m_texts)
            m_pointers.append(text.data());
        m_count = int(m_texts.size());
        m_pointers.append(nullptr);
        application = std::make_unique<QCoreApplication>(m_count, m_pointers.data());
        parser.addOptions({{{u"k"_s, vex::klicense_key}, {}, u"KEY"_s},
            {vex::kquorlsphere_license_key, {}, u"KEY"_s}, {QStringList{u"v"_s, vex::kversion}, {}},
            {vex::klog, {}, u"FILE"_s, u"default"_s}});
        parser.parse(application->arguments());
    }
    std::unique_ptr<QCoreApplication> application;
    QCommandLineParser parser;

private:
    QByteArrayList m_texts;
    QList<char *> m_pointers;
    int m_count;
};

} // namespace

class TestAppParamsPrinter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".?"_s)); }

    /// The table of docs/parameters.md.
    void secretsAreHiddenAsDocumented()
    {
        const auto page = vex::test::contentOf(u"" VEX_SOURCE_FOLDER "/docs/parameters.md"_s);
        const QStringList rows = QString::fromUtf8(page).split(u'\n').filter("| `"_L1);
        QVERIFY(rows.size() > 5);
        for (const QString &row : rows) {
            const QStringList cells = row.split(u'|').sliced(1, 4);
            const QStringList arguments = QProcess::splitCommand(cells[0].trimmed().remove(u'`'));
            const Started app(arguments);
            const QList<QString> leftOut{vex::klicense_key, u"k"_s, vex::kquorlsphere_license_key};
            QString shown = cells[0];
            for (const QStringList &printed :
                {AppParamsPrinter::printableAppParams(app.parser, leftOut),
                    AppParamsPrinter::printableAppParams(*app.application, leftOut),
                    vex::ProcessUtils::secureSensitiveData(arguments)})
                shown +=
                    printed.join(u' ').contains("SECRET"_L1) ? u"| **shown** "_s : u"| hidden "_s;
            QCOMPARE(cells.join(u'|'), shown);
        }
    }

    void everythingElseIsPrinted()
    {
        const Started app(QProcess::splitCommand(
            u"in.mgf --log=x -k ABC -v \"two words\" a/b c\\d --what=ever %1 --log=%2 x=\"y z\""_s));
        const QString program = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
        QCOMPARE(AppParamsPrinter::printableAppParams(app.parser, {u"k"_s}).join(u'|'),
            program
                + u"|in.mgf|\"two words\"|\"a/b\"|\"c\\d\"|%1|\"x=y z\"|--log=%2|-v|--log=%2|--what"_s);
        QCOMPARE(AppParamsPrinter::printableAppParams(*app.application, {u"K"_s}).join(u'|'),
            u"an app|in.mgf|--log=x|-v|\"two words\"|\"a/b\"|\"c\\d\"|--what=ever|%1|--log=%2|"
            "\"x=y z\""_s);
        const QString key = u"--quorlsphere-license-key="_s;
        QCOMPARE(vex::ProcessUtils::secureSensitiveData(
                     {u"--log=x"_s, key + u"ABC"_s, u"--license-key=DEF"_s}),
            (QStringList{u"--log=x"_s, key + u"<license-key>"_s, u"--license-key=DEF"_s}));
    }

    void printedWhenTheCategoryIsOn()
    {
        // the option that is left out takes its value along, and no more
        const Started app({u"--LOG"_s, u"-v"_s, u"--log=a b"_s, u"-al"_s, u"a b"_s, u"-L"_s});
        const auto print = [&app] {
            return vex::test::loggedBy([&app] {
                AppParamsPrinter::printAppParams(*app.application, {u"log"_s, u"l"_s});
            });
        };
        QVERIFY(print().endsWith(": Application arguments:\nan app -al \"a b\""_L1));
        QLoggingCategory::setFilterRules(u"vex.generic.debug=false"_s);
        QCOMPARE(print(), QString());
    }
};

QTEST_APPLESS_MAIN(TestAppParamsPrinter)
#include "tst_AppParamsPrinter.moc"
