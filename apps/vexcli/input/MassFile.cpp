#include "input/MassFile.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "input/Columns.h"
#include "output/Text.h"

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// An error for a mass below 0.
vex::Error checkMass(double mass, const QString &what, const QString &name, qint64 line)
{
    if (!(mass < 0.0))
        return vex::ErrorCode::NoError;
    return failure(u"%1, line %2: %3 '%4' is negative"_s.arg(
        name, QString::number(line), what, exactNumber(mass)));
}

} // namespace

vex::Error forEachMass(const CommandLine &commandLine, BadRecords *bad,
    const std::function<vex::Error(double mass)> &take, const std::function<void()> &beforeRead)
{
    bool isEmpty = true;
    const QString path = commandLine.value(u"masses"_s);
    const QString name = inputName(path);
    ColumnsRequest request = columnsRequest(commandLine, path, {u"mass"_s});
    request.beforeRead = beforeRead;
    vex::Error refused = vex::ErrorCode::NoError; // by take(): no fault of the record
    auto titles = readColumns(request, bad, [&](const ColumnsRow &row) -> vex::Error {
        if (auto error = checkMass(row.numbers[0], u"mass"_s, name, row.line); error.hasError())
            return error;
        isEmpty = false;
        if (!refused.hasError())
            refused = take(row.numbers[0]);
        return vex::ErrorCode::NoError;
    });
    if (refused.hasError())
        return passedOn(std::move(refused));
    if (titles.hasError())
        return passedOn(std::move(titles).error());
    if (isEmpty && !bad->verdict().hasError())
        return failure(u"%1 holds no mass"_s.arg(name));
    return vex::ErrorCode::NoError;
}

vex::Result<QList<double>> readMasses(const CommandLine &commandLine, BadRecords *bad)
{
    QList<double> masses;
    auto error = forEachMass(commandLine, bad,
        [&masses](double mass) {
            masses.append(mass);
            return vex::Error(vex::ErrorCode::NoError);
        },
        {});
    if (error.hasError())
        return passedOn(std::move(error));
    return masses;
}

vex::Result<QHash<QString, PublishedMasses>> readPublishedMasses(const QString &path)
{
    QHash<QString, PublishedMasses> published;
    const QString name = inputName(path);
    BadRecords none(false);
    ColumnsRequest request{
        path, {u"name"_s, u"average mass"_s, u"monoisotopic mass"_s}, true, {}, {}, {}};
    auto titles = readColumns(request, &none, [&](const ColumnsRow &row) -> vex::Error {
        for (const int i : {1, 2}) {
            if (auto error = checkMass(row.numbers[i], request.names[i], name, row.line);
                error.hasError())
                return error;
        }
        if (published.contains(row.text))
            return failure(u"%1, line %2: there are masses of '%3' already"_s.arg(
                name, QString::number(row.line), row.text));
        published.insert(row.text, {row.numbers[1], row.numbers[2]});
        return vex::ErrorCode::NoError;
    });
    if (titles.hasError())
        return passedOn(std::move(titles).error());
    if (published.isEmpty())
        return failure(u"%1 holds no masses; expected are name, average, monoisotopic"_s.arg(name));
    return published;
}

} // namespace vexcli
