#include "output/Output.h"

#include "Failure.h"
#include "output/Progress.h"
#include "platform/Files.h"

#include <vex/FileUtilsGeneric.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <chrono>
#include <thread>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

// Qt's own buffer would swallow why a write fell short.
constexpr QIODevice::OpenMode kMode = QIODevice::WriteOnly | QIODevice::Unbuffered;
constexpr qsizetype kBuffer = 1 << 16; // bytes
constexpr int kStandardOutput = 1; // descriptor; C's own stream would hold errors back

} // namespace

vex::Result<std::shared_ptr<Output>> Output::open(const QString &path)
{
    auto output = std::make_shared<Output>();
    if (path.isEmpty() || path == "-"_L1) {
        auto file = std::make_unique<QFile>();
        output->m_name = u"standard output"_s;
        output->m_isStandard = true;
        if (!file->open(kStandardOutput, kMode))
            return failure(u"cannot write standard output: %1"_s.arg(file->errorString()));
        output->m_device = std::move(file);
        return output;
    }
    output->m_name = path;
    if (const QString device = devicePath(path); !device.isEmpty())
        output->m_device = std::make_unique<QFile>(device);
    else
        output->m_device = std::make_unique<QSaveFile>(path);
    if (!output->m_device->open(kMode))
        return failure(u"cannot write %1: %2"_s.arg(path, output->m_device->errorString()));
    // opening cleans "missing/../file", which only the last step would refuse
    const QString folder = path.left(path.lastIndexOf(u'/') + 1);
    if (!folder.isEmpty() && !QFileInfo::exists(folder))
        return failure(u"cannot write %1: there is no such folder"_s.arg(path));
    return output;
}

vex::Error requireWritable(const QString &path)
{
    if (!devicePath(path).isEmpty()) // opening a pipe would be seen at its other end
        return vex::ErrorCode::NoError;
    auto output = Output::open(path);
    return output.hasError() ? passedOn(std::move(output).error()) : vex::ErrorCode::NoError;
}

vex::Error requireOtherFiles(const QStringList &inputs, const QStringList &outputs)
{
    using vex::FileUtilsGeneric;
    const auto isFile = [](const QString &path) { return !path.isEmpty() && path != "-"_L1; };
    QStringList taken = inputs;
    for (const QString &output : outputs) {
        for (const QString &other : std::as_const(taken)) {
            if (isFile(output) && isFile(other)
                && FileUtilsGeneric::identity(output) == FileUtilsGeneric::identity(other))
                return usageFailure(u"%1 would overwrite %2"_s.arg(output, other));
        }
        taken.append(output);
    }
    return vex::ErrorCode::NoError;
}

void Output::write(const QByteArray &data)
{
    const std::scoped_lock lock(m_mutex);
    m_buffer += data;
    if (m_buffer.size() >= kBuffer)
        flush();
}

void Output::flush()
{
    // A device that fills up takes a part first; only the next attempt tells why.
    for (qsizetype done = 0; m_device && m_problem.isEmpty() && done < m_buffer.size();) {
        const qint64 written = m_device->write(m_buffer.constData() + done, m_buffer.size() - done);
        if (written <= 0) {
            m_problem = m_device->errorString();
            if (m_isStandard)
                stopWork(); // nobody reads what is still to come
        }
        done += written;
    }
    m_buffer.clear();
}

vex::Error Output::check()
{
    const std::scoped_lock lock(m_mutex);
    flush();
    if (!m_problem.isEmpty())
        return failure(u"cannot write %1: %2"_s.arg(m_name, m_problem));
    return vex::ErrorCode::NoError;
}

vex::Error Output::commit()
{
    auto problem = check();
    const std::scoped_lock lock(m_mutex);
    if (auto *file = qobject_cast<QSaveFile *>(m_device.get())) {
        if (!m_problem.isEmpty())
            file->cancelWriting();
        if (!file->commit() && m_problem.isEmpty())
            m_problem = file->errorString();
    } else if (m_device) { // not given up meanwhile
        m_device->close();
        if (m_device->error() != QFileDevice::NoError && m_problem.isEmpty())
            m_problem = m_device->errorString();
    }
    if (!m_problem.isEmpty() && !problem.hasError())
        problem = failure(u"cannot write %1: %2"_s.arg(m_name, m_problem));
    return problem;
}

void Output::abandon()
{
    constexpr std::chrono::milliseconds kWait(1); // between two attempts
    constexpr int kAttempts = 500; // a reader of standard output may never go on
    for (int attempt = 0; attempt < kAttempts && !m_isStandard; ++attempt) {
        if (m_mutex.try_lock()) {
            m_device.reset(); // takes the unfinished file away
            m_mutex.unlock();
            return;
        }
        std::this_thread::sleep_for(kWait);
    }
}

} // namespace vexcli
