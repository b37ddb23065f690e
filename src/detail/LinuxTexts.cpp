#include "detail/LinuxTexts.h"

#include <QList>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

/// The first value of "key : value"; empty when there is none.
QByteArray valueIn(const QByteArray &text, const QByteArray &key)
{
    for (const QByteArray &line : text.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon >= 0 && line.first(colon).trimmed() == key)
            return line.sliced(colon + 1).trimmed();
    }
    return {};
}

} // namespace

QString processorIn(const QByteArray &cpuinfo)
{
    // x86, LoongArch, MIPS, RISC-V; 32-bit ARM has "model name", too; POWER
    for (const char *key : {"model name", "Model Name", "cpu model", "uarch", "cpu"}) {
        if (const QByteArray name = valueIn(cpuinfo, key); !name.isEmpty())
            return QString::fromUtf8(name);
    }
    const QByteArray maker = valueIn(cpuinfo, "CPU implementer"); // 64-bit ARM
    const QByteArray part = valueIn(cpuinfo, "CPU part");
    if (maker.isEmpty() || part.isEmpty())
        return {};
    return u"ARM, CPU implementer: %1, CPU part: %2"_s.arg(
        QString::fromUtf8(maker), QString::fromUtf8(part));
}

std::optional<qint64> bytesIn(const QByteArray &meminfo, const QByteArray &key)
{
    const QByteArray value = valueIn(meminfo, key); // "16357788 kB", whatever the size
    bool isNumber = false;
    const qint64 kibibytes =
        value.first(value.size() - (value.endsWith(" kB") ? 3 : 0)).toLongLong(&isNumber);
    if (!isNumber || !value.endsWith(" kB") || kibibytes <= 0)
        return {};
    return 1024 * kibibytes;
}

} // namespace vex::detail
