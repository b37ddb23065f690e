#pragma once

#include <QDir>
#include <QList>
#include <QString>

#include <optional>

#include <vex/PathCheck.h>

namespace vex::detail {

/// A local path taken apart.
struct LocalPath
{
    /// What is wrong before any part has been looked at.
    std::optional<PathCheck::Finding::Kind> problem;
    /// The path once cleaned.
    QString text;
    /// Where the first part begins in it.
    qsizetype start = 0;
    /// What lies between the slashes behind "/", "//" or a drive. With an unknown drive, which is
    /// the first of them then, too.
    QList<QString> parts;

    /// Takes @p path apart.
    explicit LocalPath(const QString &path)
        : text(QDir::cleanPath(path))
        , parts(text.split(u'/'))
    {
        if (path.isEmpty()) {
            problem = PathCheck::Finding::Empty;
            parts.clear();
            return;
        }
        if (parts.constFirst().isEmpty())
            dropFirst();
        if (!parts.isEmpty() && parts.constLast().isEmpty())
            parts.removeLast();
        if (parts.isEmpty())
            return; // the root
        if (parts.constFirst().isEmpty()) {
            dropFirst();
            if (parts.isEmpty())
                problem = PathCheck::Finding::NothingBehindServerPrefix;
        }
        if (parts.isEmpty() || !parts.constFirst().endsWith(u':'))
            return;
        if (parts.constFirst().size() == 2)
            dropFirst();
        else
            problem = PathCheck::Finding::UnknownDrive;
    }

private:
    void dropFirst() { start += parts.takeFirst().size() + 1; }
};

} // namespace vex::detail
