#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringDecoder>

#include <vector>

namespace vex::detail {

/// Takes a text apart into lines, as QTextStream does, while its bytes arrive in pieces.
///
/// The stream itself takes a failure of its file for the end, and loses the line end behind half a
/// character when one of its buffers ends between them.
class TextRows
{
public:
    /// For bytes in @p encoding, behind the mark of UTF-8 if there is one.
    explicit TextRows(QStringConverter::Encoding encoding);

    /// Goes on with @p bytes, of any number.
    void add(QByteArrayView bytes);

    /// Ends the last line. Then rows() has all.
    void finish();

    /// The lines without their ends.
    QList<QString> &rows() { return m_rows; }

    /// The first line, from 1, with bytes that are no text: they were read as U+FFFD, left out
    /// where the text ends within a character, or kept as half of a surrogate pair. 0 for none.
    qsizetype firstBroken() const { return m_firstBroken; }

private:
    void decode(QByteArrayView bytes);
    void extendRow(QStringView text);
    void endRow();
    void noteBroken();

    QStringConverter::Encoding m_encoding;
    QStringDecoder m_decoder;
    std::vector<QChar> m_decoded; // room
    QByteArray m_begun; // character of UTF-8, whose end is still to come
    QString m_row; // as far as it has come
    QList<QString> m_rows;
    qsizetype m_firstBroken = 0;
};

} // namespace vex::detail
