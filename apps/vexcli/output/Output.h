#pragma once

#include <QFileDevice>
#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>

#include <vex/Error.h>
#include <vex/Result.h>

namespace vexcli {

/// Where results go: standard output, or a file that appears whole or not at all.
class Output
{
public:
    /// Standard output for an empty @p path and for "-". A file is opened at once, so that a place
    /// that cannot be written is known before the work begins; an existing file keeps its content
    /// until commit().
    static vex::Result<std::shared_ptr<Output>> open(const QString &path);

    /// Appends @p data; a failure shows in check() and commit().
    void write(const QByteArray &data);

    /// Hands out what is still held back, and tells whether everything could be written so far.
    vex::Error check();

    /// Ends the output: a file gets its name now. Without this call it never appears.
    vex::Error commit();

    /// Gives the output up, also while another thread writes to it; nothing appears.
    void abandon();

private:
    void flush();

    QString m_name; // for messages
    bool m_isStandard = false;
    std::mutex m_mutex; // held while the device is used
    std::unique_ptr<QFileDevice> m_device; // null once the output has ended
    QByteArray m_buffer; // not written yet
    QString m_problem; // of the first write that failed
};

/// Fails when no file can be written at @p path; leaves nothing there.
vex::Error requireWritable(const QString &path);

/// Fails when an output is one of the inputs or another output, by whatever path: nothing that
/// somebody still needs is overwritten. Empty paths count as not given, "-" is no file.
vex::Error requireOtherFiles(const QStringList &inputs, const QStringList &outputs);

} // namespace vexcli
