#pragma once

#include <QFileDevice>
#include <QString>
#include <QStringList>

#include <memory>

#include <vex/Error.h>
#include <vex/Result.h>

namespace vexcli {

/// Where results go: standard output, or a file that appears whole or not at all.
class Output
{
public:
    /// Standard output for an empty @p path. A file is opened at once, so that a place that cannot
    /// be written is known before the work begins; an existing file keeps its content until
    /// commit().
    static vex::Result<std::shared_ptr<Output>> open(const QString &path);

    /// Appends @p data; a failure shows in commit().
    void write(const QByteArray &data);

    /// Ends the output: a file gets its name now. Without this call it never appears.
    vex::Error commit();

private:
    void flush();

    QString m_name; // for messages
    std::unique_ptr<QFileDevice> m_device;
    QByteArray m_buffer; // not written yet
    QString m_problem; // of the first write that failed
};

/// Fails when an output is one of the inputs or another output, by whatever path: nothing that
/// somebody still needs is overwritten. Empty paths count as not given.
vex::Error requireOtherFiles(const QStringList &inputs, const QStringList &outputs);

} // namespace vexcli
