#include <vex_common_stable/JsonUtils.h>

#include <QCoreApplication>
#include <QJsonDocument>

#include <algorithm>

namespace vex {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("JsonUtils", text);
}

/// Where parsing stopped and why, for a person.
QString placed(const QByteArray &json, const QJsonParseError &problem)
{
    const qsizetype offset = std::clamp<qsizetype>(problem.offset, 0, json.size());
    const qsizetype line = 1 + std::count(json.begin(), json.begin() + offset, '\n');
    const qsizetype lineStart = offset == 0 ? 0 : json.lastIndexOf('\n', offset - 1) + 1;
    return tr("Invalid JSON, line %1, column %2: %3")
        .arg(QString::number(line), QString::number(offset - lineStart + 1), problem.errorString());
}

/// Parses into @p document; the text of what is wrong, if anything.
QString problemOf(const QByteArray &json, QJsonDocument *document)
{
    if (json.trimmed().isEmpty())
        return tr("Invalid JSON: there is nothing but white space");
    QJsonParseError problem;
    *document = QJsonDocument::fromJson(json, &problem);
    return problem.error == QJsonParseError::NoError ? QString() : placed(json, problem);
}

Error failure(const QString &text, const char *function, int line)
{
    return Error(InvalidInput, text).ecatch(function, "src/JsonUtils", line);
}

} // namespace

Result<QJsonArray> JsonUtils::arrayFromJson(const QByteArray &json)
{
    QJsonDocument document;
    QString problem = problemOf(json, &document);
    if (problem.isEmpty() && !document.isArray())
        problem = tr("The JSON text holds an object where an array is due");
    if (!problem.isEmpty())
        return failure(problem, Q_FUNC_INFO, __LINE__);
    return document.array();
}

Result<QJsonObject> JsonUtils::objectFromJson(const QByteArray &json)
{
    QJsonDocument document;
    QString problem = problemOf(json, &document);
    if (problem.isEmpty() && !document.isObject())
        problem = tr("The JSON text holds an array where an object is due");
    if (!problem.isEmpty())
        return failure(problem, Q_FUNC_INFO, __LINE__);
    return document.object();
}

} // namespace vex
