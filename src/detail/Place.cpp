#include "detail/Place.h"

#include "platform/Folder.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace vex::detail {

QString resolved(const QString &path)
{
    const QString text = QDir::fromNativeSeparators(path);
    bool isAtEnd = true; // nothing but separators follows
    for (qsizetype end = text.size(); end > 0; end = text.lastIndexOf(u'/', end - 1)) {
        const QStringView head = QStringView(text).first(end);
        const QStringView part = head.sliced(head.lastIndexOf(u'/') + 1);
        if (part == ".."_L1 || (isAtEnd && part == "."_L1)) {
            const QString real = QFileInfo(head.toString()).canonicalFilePath();
            if (!real.isEmpty())
                return real + text.sliced(end);
        }
        isAtEnd = isAtEnd && part.isEmpty();
    }
    return path;
}

QString identityOf(const QString &path)
{
    return fileIdentity(resolved(path));
}

QStringList placesAbove(const QString &path)
{
    QStringList places;
    QString place = resolved(path);
    for (bool isReal = false;;) {
        if (!isReal) {
            const QFileInfo info(place);
            const QString real = info.canonicalFilePath(); // empty when there is nothing
            isReal = !real.isEmpty();
            place = isReal ? real : info.absoluteFilePath();
        }
        const QString above = QFileInfo(place).path();
        if (above == place) // a root, or a drive that is not there
            return places;
        place = above;
        places.append(fileIdentity(place));
    }
}

bool isWithin(const QString &path, const QString &folder)
{
    const QString identity = identityOf(folder);
    return identityOf(path) == identity || placesAbove(path).contains(identity);
}

} // namespace vex::detail
