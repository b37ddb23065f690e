#include "output/Output.h"

#include "Failure.h"
#include "platform/Files.h"

#include <vex/FileUtilsGeneric.h>

#include <QFile>
#include <QSaveFile>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

// Qt's own buffer would swallow why a write fell short.
constexpr QIODevice::OpenMode kMode = QIODevice::WriteOnly | QIODevice::Unbuffered;
constexpr qsizetype kBuffer = 1 << 16; // bytes

} // namespace

vex::Result<std::shared_ptr<Output>> Output::open(const QString &path)
{
    auto output = std::make_shared<Output>();
    if (path.isEmpty()) {
        auto file = std::make_unique<QFile>();
        output->m_name = u"standard output"_s;
        if (!file->open(stdout, kMode))
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
    return output;
}

vex::Error requireOtherFiles(const QStringList &inputs, const QStringList &outputs)
{
    QStringList taken = inputs;
    for (const QString &output : outputs) {
        for (const QString &other : std::as_const(taken)) {
            if (!output.isEmpty() && !other.isEmpty()
                && vex::FileUtilsGeneric::identity(output)
                    == vex::FileUtilsGeneric::identity(other))
                return usageFailure(u"%1 would overwrite %2"_s.arg(output, other));
        }
        taken.append(output);
    }
    return vex::ErrorCode::NoError;
}

void Output::write(const QByteArray &data)
{
    m_buffer += data;
    if (m_buffer.size() >= kBuffer)
        flush();
}

void Output::flush()
{
    // A device that fills up takes a part first; only the next attempt tells why.
    for (qsizetype done = 0; m_problem.isEmpty() && done < m_buffer.size();) {
        const qint64 written = m_device->write(m_buffer.constData() + done, m_buffer.size() - done);
        if (written <= 0)
            m_problem = m_device->errorString();
        done += written;
    }
    m_buffer.clear();
}

vex::Error Output::commit()
{
    flush();
    if (auto *file = qobject_cast<QSaveFile *>(m_device.get())) {
        if (!m_problem.isEmpty())
            file->cancelWriting();
        if (!file->commit() && m_problem.isEmpty())
            m_problem = file->errorString();
    } else {
        m_device->close();
        if (m_device->error() != QFileDevice::NoError && m_problem.isEmpty())
            m_problem = m_device->errorString();
    }
    if (!m_problem.isEmpty())
        return failure(u"cannot write %1: %2"_s.arg(m_name, m_problem));
    return vex::ErrorCode::NoError;
}

} // namespace vexcli
