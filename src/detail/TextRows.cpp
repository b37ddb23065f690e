#include "detail/TextRows.h"

#include <QStringEncoder>

#include <algorithm>
#include <utility>

namespace vex::detail {

namespace {

using Flag = QStringConverter::Flag;

/// Number of bytes at the end of UTF-8 text that begin a character and do not end it.
qsizetype sizeOfBegun(QByteArrayView text)
{
    const qsizetype most = std::min<qsizetype>(text.size(), 3);
    for (qsizetype count = 1; count <= most; ++count) {
        const auto byte = static_cast<unsigned char>(text[text.size() - count]);
        if ((byte & 0xc0) == 0x80) // not the first of its character
            continue;
        const int length = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : byte >= 0xc0 ? 2 : 1;
        return length > count ? count : 0;
    }
    return 0;
}

} // namespace

TextRows::TextRows(QStringConverter::Encoding encoding)
    : m_encoding(encoding)
    // The state that is kept for UTF-8 swallows what follows half a character.
    , m_decoder(encoding,
          encoding == QStringConverter::Utf8 ? Flag::Stateless | Flag::ConvertInitialBom
                                             : Flag::Default)
{
}

void TextRows::add(QByteArrayView bytes)
{
    const QByteArray joined = m_begun.isEmpty() ? QByteArray() : m_begun + bytes.toByteArray();
    if (!joined.isEmpty())
        bytes = joined;
    const qsizetype begun = m_encoding == QStringConverter::Utf8 ? sizeOfBegun(bytes) : 0;
    const QByteArray rest = bytes.last(begun).toByteArray();
    bytes.chop(begun);
    // A line at a time, so that it is known which one is broken. A line feed is a byte of this
    // value in every encoding, not always with the character's other bytes in front of it.
    while (!bytes.isEmpty()) {
        const qsizetype end = bytes.indexOf('\n');
        const qsizetype size = end < 0 ? bytes.size() : end + 1;
        decode(bytes.first(size));
        bytes = bytes.sliced(size);
    }
    m_begun = rest;
}

void TextRows::finish()
{
    // A letter comes out as something else behind a character that is not whole.
    QStringDecoder begun(m_encoding);
    QStringDecoder &decoder = m_encoding == QStringConverter::Utf8 ? begun : m_decoder;
    extendRow(QString(decoder(m_begun)));
    const QByteArray letter = QStringEncoder(m_encoding)(u"a");
    const QString decoded = decoder(letter);
    if (decoded != u"a")
        noteBroken();
    if (!m_row.isEmpty())
        endRow();
}

void TextRows::decode(QByteArrayView bytes)
{
    m_decoded.resize(
        std::max(m_decoded.size(), std::size_t(m_decoder.requiredSpace(bytes.size()))));
    const QChar *const end = m_decoder.appendToBuffer(m_decoded.data(), bytes);
    QStringView text(m_decoded.data(), end);
    if (m_decoder.hasError())
        noteBroken();
    for (qsizetype feed = 0; (feed = text.indexOf(u'\n')) >= 0; text = text.sliced(feed + 1)) {
        extendRow(text.first(feed));
        endRow();
    }
    extendRow(text);
}

void TextRows::extendRow(QStringView text)
{
    if (m_row.isEmpty()) // mostly: a string of just that size
        m_row = text.toString();
    else
        m_row += text;
}

void TextRows::endRow()
{
    if (m_row.endsWith(u'\r'))
        m_row.chop(1);
    if (m_encoding != QStringConverter::Utf8 && !m_row.isValidUtf16())
        noteBroken();
    m_row.squeeze();
    m_rows.append(std::exchange(m_row, QString()));
}

void TextRows::noteBroken()
{
    if (m_firstBroken == 0)
        m_firstBroken = m_rows.size() + 1;
}

} // namespace vex::detail
