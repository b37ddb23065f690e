#include "output/Json.h"

#include "output/Output.h"
#include "output/Text.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// @p json with an escape for each UTF-16 unit of a character that cannot be seen.
QByteArray escaped(const QByteArray &json)
{
    const bool isPlain = std::all_of(json.begin(), json.end(),
        [](char character) { return static_cast<unsigned char>(character) < 0x7f; });
    if (isPlain)
        return json;
    QString text;
    const QList<uint> characters = QString::fromUtf8(json).toUcs4();
    for (const char32_t character : characters) {
        const QString units = QString::fromUcs4(&character, 1);
        if (isSeen(character) || character == U'\n') {
            text += units;
            continue;
        }
        for (const QChar unit : units)
            text += u"\\u%1"_s.arg(uint{unit.unicode()}, 4, 16, QLatin1Char('0'));
    }
    return text.toUtf8();
}

} // namespace

QByteArray jsonText(const QJsonObject &object)
{
    return escaped(QJsonDocument(object).toJson());
}

JsonArrayWriter::JsonArrayWriter(Output *output, Layout layout)
    : m_output(output)
    , m_layout(layout)
{
    if (m_output && m_layout == Array)
        m_output->write("[\n");
}

void JsonArrayWriter::add(const QJsonObject &object)
{
    if (!m_output)
        return;
    if (m_layout == Lines) {
        m_output->write(escaped(QJsonDocument(object).toJson(QJsonDocument::Compact)) + '\n');
        return;
    }
    QByteArray text = jsonText(object).trimmed();
    text.replace("\n", "\n    ");
    m_output->write((std::exchange(m_isEmpty, false) ? "    " : ",\n    ") + text);
}

void JsonArrayWriter::end()
{
    if (m_output && m_layout == Array)
        m_output->write(m_isEmpty ? "]\n" : "\n]\n");
}

} // namespace vexcli
