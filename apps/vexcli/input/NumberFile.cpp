#include "input/NumberFile.h"

#include "commands/CommandLine.h"
#include "Failure.h"
#include "output/Progress.h"

#include <QFile>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qint64 kLongestLine = 1 << 12; // bytes

/// Calls visit(text, number) for each line of @p path that is not blank and no comment.
template <typename Visitor>
vex::Error forEachLine(const QString &path, Visitor visit)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(u"cannot read %1: %2"_s.arg(path, file.errorString()));
    Progress progress(u"reading"_s, file.size());
    for (qint64 number = 1;; ++number) {
        const QByteArray line = file.readLine(kLongestLine);
        if (file.error() != QFileDevice::NoError)
            return failure(u"cannot read %1: %2"_s.arg(path, file.errorString()));
        if (line.isEmpty())
            return vex::ErrorCode::NoError;
        const QString where = u"%1, line %2"_s.arg(path, QString::number(number));
        if (line.size() >= kLongestLine - 1 && !line.endsWith('\n'))
            return failure(u"%1: the line is too long"_s.arg(where));
        const QString text = QString::fromUtf8(line).trimmed();
        if (!text.isEmpty() && !text.startsWith(u'#')) {
            if (auto error = visit(text, where); error.hasError())
                return error;
        }
        if (isInterrupted())
            return failure(u"interrupted, nothing was written"_s);
        progress.update(file.pos());
    }
}

} // namespace

bool isTitle(const QString &field)
{
    bool isNumber = false;
    field.toDouble(&isNumber); // nan and inf are
    return !field.isEmpty() && !isNumber
        && std::none_of(field.begin(), field.end(), [](QChar c) { return c.isDigit(); });
}

vex::Result<QList<double>> readMasses(const QString &path)
{
    QList<double> masses;
    bool isFirst = true;
    auto error = forEachLine(path, [&](const QString &text, const QString &where) -> vex::Error {
        if (std::exchange(isFirst, false) && isTitle(text))
            return vex::ErrorCode::NoError;
        auto mass = nonNegativeNumber(text, u"mass"_s);
        if (mass.hasError())
            return failure(u"%1: %2"_s.arg(where, mass.error().message()));
        masses.append(mass.value());
        return vex::ErrorCode::NoError;
    });
    if (error.hasError())
        return passedOn(std::move(error));
    if (masses.isEmpty())
        return failure(u"%1 holds no mass"_s.arg(path));
    return masses;
}

vex::Result<QHash<QString, PublishedMasses>> readPublishedMasses(const QString &path)
{
    QHash<QString, PublishedMasses> published;
    bool isFirst = true;
    auto error = forEachLine(path, [&](const QString &text, const QString &where) -> vex::Error {
        if (std::exchange(isFirst, false) && isTitle(text.section(u',', 1, 1)))
            return vex::ErrorCode::NoError;
        const QStringList fields = text.split(u',');
        if (fields.size() != 3)
            return failure(u"%1: expected name,average,monoisotopic"_s.arg(where));
        auto average = nonNegativeNumber(fields[1], u"average mass"_s);
        auto monoisotopic = nonNegativeNumber(fields[2], u"monoisotopic mass"_s);
        for (const auto *mass : {&average, &monoisotopic}) {
            if (mass->hasError())
                return failure(u"%1: %2"_s.arg(where, mass->error().message()));
        }
        published.insert(fields[0], {average.value(), monoisotopic.value()});
        return vex::ErrorCode::NoError;
    });
    if (error.hasError())
        return passedOn(std::move(error));
    return published;
}

} // namespace vexcli
