#include <vex_common_core_mini/CsvWriter.h>

namespace vex {

namespace {

constexpr qsizetype kBuffer = 1 << 16; // bytes

} // namespace

CsvWriter::CsvWriter(const QString &path, const QString &lineTerminator, QChar separator)
    : m_file(path)
    , m_lineTerminator(lineTerminator)
    , m_separator(separator)
{
}

CsvWriter::~CsvWriter()
{
    close();
}

bool CsvWriter::open()
{
    // Qt logs an empty name, and opens what stands in front of a NUL.
    if (const QString name = m_file.fileName(); name.isEmpty() || name.contains(QChar::Null)) {
        m_problem = QStringLiteral("This is no file name");
        return false;
    }
    // Qt's own buffer would swallow why a write fell short.
    return m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || fail();
}

bool CsvWriter::writeRow(const QList<QString> &fields)
{
    if (!m_file.isOpen() || !m_problem.isEmpty())
        return false;
    QString row;
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (i > 0)
            row += m_separator;
        const QString &field = fields[i];
        if (field.contains(m_separator) || field.contains(u'"') || field.contains(u'\n')
            || field.contains(u'\r'))
            row += u'"' + QString(field).replace(u'"', QLatin1StringView("\"\"")) + u'"';
        else
            row += field;
    }
    m_buffer += (row + m_lineTerminator).toUtf8();
    return m_buffer.size() < kBuffer || flush();
}

bool CsvWriter::close()
{
    if (!m_file.isOpen())
        return m_problem.isEmpty();
    const bool isWritten = flush();
    m_file.close();
    return (m_file.error() == QFileDevice::NoError || fail()) && isWritten;
}

bool CsvWriter::flush()
{
    // A device that fills up takes a part first; only the next attempt tells why.
    for (qsizetype done = 0; done < m_buffer.size() && m_problem.isEmpty();) {
        const qint64 written = m_file.write(m_buffer.constData() + done, m_buffer.size() - done);
        if (written <= 0)
            fail();
        else
            done += written;
    }
    m_buffer.clear();
    return m_problem.isEmpty();
}

bool CsvWriter::fail()
{
    if (m_problem.isEmpty())
        m_problem = m_file.errorString();
    return false;
}

} // namespace vex
