#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

#include <vex/Error.h>
#include <vex/Result.h>

#include "input/Input.h"

namespace vexcli {

class CommandLine;

/// What is wanted from a file with columns.
struct ColumnsRequest
{
    QString path;
    QStringList names; // of the wanted columns, for messages
    bool isFirstText = false; // the first one holds a text, all others numbers
    QString choice; // as --column has it; empty: the file has these columns and no others
    QString decimal; // as --decimal has it; empty: found out
    std::function<void()> beforeRead; // called before each read, which may wait; may be empty
};

/// The wanted fields of a line.
struct ColumnsRow
{
    QString text; // where the first column holds one
    const double *numbers = nullptr;
    qint64 line = 0;
};

/// Offers --column and --decimal. @p names stands for the columns in the help text.
void addColumnsOptions(CommandLine *commandLine, const QString &names);

/// A request for @p names from @p path, as the options of addColumnsOptions() say.
ColumnsRequest columnsRequest(
    const CommandLine &commandLine, const QString &path, const QStringList &names);

/// Reads columns that are separated by commas, semicolons or tabs.
///
/// Blank lines and lines that begin with '#' are passed over, and so are lines of titles before the
/// first row. Numbers have decimal points, or decimal commas where a comma separates nothing;
/// fields may be in quotes. What can be read in two ways is an error, as is a bad line, with its
/// number.
///
/// @param take  gets each row; with @p bad, rows that it refuses can be left out
/// @return the titles of the wanted columns, of several lines joined by a blank; empty without any
vex::Result<QStringList> readColumns(const ColumnsRequest &request, BadRecords *bad,
    const std::function<vex::Error(const ColumnsRow &row)> &take);

} // namespace vexcli
