#include "detail/WholeFile.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>

namespace vex::detail {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("WholeFile", text);
}

} // namespace

QString writeWholeFile(const QString &path, const QByteArray &content)
{
    if (path.isEmpty())
        return tr("No file name specified");
    if (path.contains(QChar::Null)) // Qt would write to what stands in front of it
        return tr("The name holds a NUL");
    const QFileInfo there(path);
    if (there.isDir())
        return tr("It is a folder");
    if (there.exists() && !there.isFile()) // the new file would take its name
        return tr("It is a device or a pipe, not a file");
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
