#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <vex/Result.h>

namespace vexcli {

/// Reads one number of at least 0 a line; blank lines, lines that begin with '#' and one line
/// of titles are passed over. A bad line is an error with its number.
vex::Result<QList<double>> readMasses(const QString &path);

/// Masses of one molecule as somebody published them, in daltons.
struct PublishedMasses
{
    double average = 0.0;
    double monoisotopic = 0.0;
};

/// Reads CSV lines "name,average,monoisotopic" ; a line of titles and lines that begin with '#' are
/// passed over. A bad line is an error with its number.
vex::Result<QHash<QString, PublishedMasses>> readPublishedMasses(const QString &path);

/// True for the title of a column: words. A mistyped number must not pass as one and get lost.
bool isTitle(const QString &field);

} // namespace vexcli
