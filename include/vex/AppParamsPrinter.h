#pragma once

#include <QList>
#include <QString>

#include <vex/Export.h>

class QCommandLineParser;
class QCoreApplication;

namespace vex {

/// The command-line parameters of an application as text for its log, without the options that the
/// caller leaves out.
///
/// Not every way to write a secret on a command line is recognised; docs/parameters.md shows each,
/// and how to close the gaps. The surest is to take no secret from a command line.
class VEX_EXPORT AppParamsPrinter
{
public:
    /// What the parser has found.
    ///
    /// @param parser   has processed its arguments
    /// @param leftOut  names of options without dashes, letter for letter
    /// @return the file name of the application; the positional arguments; then each option that
    ///         was given, known or not: "-v", "--name" or "--name=value", with the value that
    ///         counts. What holds a blank, a slash or a backslash stands between double quotes.
    static QList<QString> printableAppParams(
        const QCommandLineParser &parser, const QList<QString> &leftOut);

    /// The arguments of the process as they are, which no parser needs to have seen.
    ///
    /// @param application  not used: the arguments are those of the process
    /// @param leftOut      names of options without dashes, in upper or lower case. An option that
    ///                     is left out takes its value along, "--name=value" and "--name value".
    /// @return the file name of the first argument, then the others in order, quoted as above
    static QList<QString> printableAppParams(
        const QCoreApplication &application, const QList<QString> &leftOut);

    /// Writes one debug message, "Application arguments:" and below it the list with blanks
    /// between, in the category "vex.generic". While that category is off nothing is computed.
    static void printAppParams(const QCommandLineParser &parser, const QList<QString> &leftOut);
    /// The same for the arguments of the process.
    static void printAppParams(const QCoreApplication &application, const QList<QString> &leftOut);
};

} // namespace vex
