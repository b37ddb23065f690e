#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QFile>
#include <QString>

#include <functional>
#include <memory>

#include <vex/Error.h>
#include <vex/Result.h>

#include "output/Progress.h"

namespace vexcli {

/// A file that is read from its beginning to its end, or standard input. Shows progress, and ends
/// with an error after Ctrl-C.
class Input
{
public:
    /// Standard input for "-". Waits for a pipe that nobody writes to yet.
    static vex::Result<std::shared_ptr<Input>> open(const QString &path);

    /// For messages: the path, or "standard input".
    const QString &name() const { return m_name; }

    /// Reads up to @p most bytes to @p data; from a pipe what is there.
    /// @return how many there were; 0 at the end
    vex::Result<qint64> read(char *data, qint64 most);

private:
    QString m_name;
    QFile m_file;
    int m_descriptor = -1; // of a pipe, which is read as it fills; -1 for a file
    qint64 m_done = 0;
    std::unique_ptr<Progress> m_progress;
};

/// What a file is called in messages, tables and titles: "standard input" for "-".
QString inputName(const QString &path);

/// Calls @p take with each line of @p input and its number, from 1. A line ends with LF, CR LF or
/// CR; the ends and a byte order mark are not part of it. Lines of more than 64 KiB are an error.
/// @param beforeRead  called before each read, which may wait; may be empty
vex::Error forEachLine(Input *input,
    const std::function<vex::Error(QByteArrayView line, qint64 number)> &take,
    const std::function<void()> &beforeRead);

/// @p field for a message: trimmed, in quotes, not too long.
QString quoted(QByteArrayView field);

/// What a reader does with a record that cannot be used.
class BadRecords
{
public:
    /// @param keepGoing  a bad record is reported and left out instead of ending the reading
    explicit BadRecords(bool keepGoing)
        : m_keepsGoing(keepGoing)
    {
    }

    /// The error that ends the reading; none when the record is reported and left out.
    vex::Error leaveOut(vex::Error problem);

    /// An error that says how many records were left out, if any.
    vex::Error verdict() const;

private:
    bool m_keepsGoing;
    qint64 m_count = 0;
};

} // namespace vexcli
