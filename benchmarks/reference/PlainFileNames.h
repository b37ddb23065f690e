#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>

/// Judging and mending names of files with regular expressions: what the library's answers and
/// times are compared with.
namespace plain {

/// What no name may hold, separators first.
inline QList<QString> unsupportedCharacters()
{
    using namespace Qt::StringLiterals;
    QList<QString> list{u"/"_s, u"\\"_s, u"|"_s, u"<"_s, u">"_s, u":"_s, u"\""_s, u"?"_s, u"*"_s};
    for (char16_t code = 0; code <= 0x1f; ++code)
        list.append(QString(QChar(code)));
    return list;
}

/// Matches any one of the characters, which stand in the pattern as they are, U+0000 as well.
inline QRegularExpression anyOf(const QList<QString> &characters)
{
    QString joined = characters.join(QString());
    joined.replace(QChar(u'\\'), QStringLiteral("\\\\"));
    return QRegularExpression(u'[' + joined + u']');
}

inline const QRegularExpression &notInName()
{
    static const QRegularExpression pattern = anyOf(unsupportedCharacters());
    return pattern;
}

inline const QRegularExpression &notInPath()
{
    static const QRegularExpression pattern = anyOf(unsupportedCharacters().sliced(2));
    return pattern;
}

inline bool isValidFileName(const QString &name)
{
    return !name.isEmpty() && !name.contains(notInName());
}

inline bool isValidFilePath(const QString &path)
{
    return !path.isEmpty() && !path.contains(notInPath());
}

inline QString validFileName(const QString &name, const QString &replacement)
{
    return QString(name).replace(notInName(), replacement);
}

inline QString validFilePath(const QString &path, const QString &replacement)
{
    return QString(path).replace(notInPath(), replacement);
}

} // namespace plain
