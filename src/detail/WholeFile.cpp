#include "detail/WholeFile.h"

#include <QFileInfo>
#include <QObject>
#include <QSaveFile>

namespace vex::detail {

QString writeWholeFile(const QString &path, const QByteArray &content)
{
    if (path.isEmpty())
        return QObject::tr("No file name specified");
    if (path.contains(QChar::Null)) // Qt would write to what stands in front of it
        return QObject::tr("The name holds a NUL");
    // renaming would put a file in the place of a device
    if (const QFileInfo there(path); there.exists() && !there.isFile())
        return QObject::tr("It is no regular file");
    QSaveFile file(path);
    // Qt's own buffer would swallow why a write fell short
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return file.errorString();
    for (qsizetype done = 0; done < content.size();) {
        // a device that fills up takes a part first; only the next attempt tells why
        const qint64 written = file.write(content.constData() + done, content.size() - done);
        if (written <= 0)
            return file.errorString();
        done += written;
    }
    return file.commit() ? QString() : file.errorString();
}

} // namespace vex::detail
