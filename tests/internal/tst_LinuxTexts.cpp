#include "detail/LinuxTexts.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace vex;

class TestLinuxTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts()
    {
        for (const auto &[text, processor] :
            {std::pair<QByteArray, QString>(
                 "model\t\t: 17\nmodel name\t: A 9 @ 2: x\n\nmodel name\t: B\n", u"A 9 @ 2: x"_s),
                {"processor\t: 0\nCPU implementer\t: 0x41\nCPU part\t: 0xd0c\n",
                    u"ARM, CPU implementer: 0x41, CPU part: 0xd0c"_s},
                {"processor\t: 0\n\ncpu\t\t: POWER9\n", u"POWER9"_s}, {"model name\t:\n", {}},
                {"CPU implementer\t: 0x41\n", {}}})
            QCOMPARE(detail::processorIn(text), processor);

        const QByteArray meminfo =
            "MemTotal:       16357788 kB\nMemFree: 0 kB\nHugePages_Total: 7\n"
            "Bad: x kB\nShort: kB\nMinus: -4 kB\nEmpty:\n";
        QCOMPARE(detail::bytesIn(meminfo, "MemTotal"), std::optional<qint64>(16750374912));
        for (const char *key :
            {"MemFree", "HugePages_Total", "Bad", "Short", "Minus", "Empty", "MemAvailable"})
            QCOMPARE(detail::bytesIn(meminfo, key), std::nullopt);
    }
};

QTEST_APPLESS_MAIN(TestLinuxTexts)
#include "tst_LinuxTexts.moc"
