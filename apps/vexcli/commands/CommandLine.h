#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <limits>

#include <vex/Error.h>
#include <vex/Result.h>

namespace vexcli {

/// Options that every command has, and how their values are read.
class CommandLine
{
public:
    /// @param command  name of the command, for the help text
    /// @param summary  what it does; paragraphs for the help text
    CommandLine(const QString &command, const QString &summary);

    /// Positional arguments, for the help text.
    void addPositional(const QString &name, const QString &description, const QString &syntax);
    /// An option with a value; may be given more than once where the command says so.
    void addOption(const QStringList &names, const QString &description, const QString &valueName);
    /// An option without a value.
    void addFlag(const QString &name, const QString &description);

    /// Reads the arguments behind the command's name and sets logging up.
    vex::Error parse(const QStringList &arguments);

    /// True when the help text was asked for; it has been printed.
    bool isHelpShown() const { return m_isHelpShown; }

    bool isSet(const QString &name) const { return m_parser.isSet(name); }
    QString value(const QString &name) const { return m_parser.value(name); }
    QStringList values(const QString &name) const { return m_parser.values(name); }
    QStringList positional() const { return m_parser.positionalArguments(); }

    /// Fails unless exactly one of the options is given.
    vex::Error requireOneOf(const QStringList &names) const;

private:
    QCommandLineParser m_parser;
    QString m_command;
    bool m_isHelpShown = false;
};

/// @p text as a finite number; @p what names it in the error.
vex::Result<double> finiteNumber(const QString &text, const QString &what);

/// @p text as a finite number that is not negative; @p what names it in the error.
vex::Result<double> nonNegativeNumber(const QString &text, const QString &what);

/// @p text as a whole number between @p least and @p most; @p what names it in the error.
vex::Result<double> wholeNumber(const QString &text, const QString &what, double least,
    double most = std::numeric_limits<double>::infinity());

/// Writes messages of at least the severity to standard error, and to the log file if there is one.
vex::Error setUpLogging(const QString &logFile, const QString &severity);

} // namespace vexcli
