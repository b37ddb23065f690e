#pragma once

#include <QFile>
#include <QList>
#include <QString>

#include <vex_common_core_mini/Export.h>

namespace vex {

/// Writes rows of text fields to a file, in UTF-8.
///
/// A field is written as it is unless it holds the separator, a quote or a line end; then it stands
/// in double quotes and each quote in it is doubled (RFC 4180).
class VEX_COMMON_CORE_MINI_EXPORT CsvWriter
{
public:
    /// @param path            the file; nothing happens to it before open()
    /// @param lineTerminator  written after every row
    /// @param separator       written between fields
    CsvWriter(const QString &path, const QString &lineTerminator, QChar separator);
    /// Closes the file.
    ~CsvWriter();
    Q_DISABLE_COPY_MOVE(CsvWriter)

    /// Opens the file for writing; what it held is lost. False when that fails.
    bool open();

    /// Writes one row; false when it, or one before it, could not be written whole.
    bool writeRow(const QList<QString> &fields);

    /// Writes what is held back and closes; false when anything could not be written.
    bool close();

    /// What went wrong first; empty when nothing did.
    QString errorString() const { return m_problem; }

private:
    bool flush();
    bool fail();

    QFile m_file;
    QString m_lineTerminator;
    QChar m_separator;
    QByteArray m_buffer; // rows not written yet
    QString m_problem;
};

} // namespace vex
