#pragma once

#include <QCommandLineParser>
#include <QSet>
#include <QString>
#include <QStringList>

#include <limits>

#include <vex/Error.h>
#include <vex/Result.h>

#include "output/Json.h"

namespace vexcli {

/// What a command takes, and what it was given. Every command has --help, --json, --trace and the
/// options of logging.
class CommandLine
{
public:
    /// @param command  name of the command
    explicit CommandLine(const QString &command);

    // What a command takes.

    /// The help text: what the command does, in one sentence or two; how it is used; the rules.
    /// @param examples  whole command lines
    /// @param rules     paragraphs, one a line; a line that begins with a blank stays one, as it is
    void describe(const QString &summary, const QStringList &examples, const QString &rules = {});
    /// Positional arguments.
    /// @param syntax  as the line of usage shows them, such as "[M...]"
    void addPositional(const QString &name, const QString &description, const QString &syntax);
    /// Positional arguments that are files to read; "-" is standard input.
    void addInputPositional(const QString &name, const QString &description, const QString &syntax);
    /// Takes so many positional arguments at most: more are refused for @p reason before anything
    /// is logged, and are not repeated, since they may be secrets.
    void refusePositional(const QString &reason, qsizetype most = 0)
    {
        m_refusal = reason;
        m_mostPositional = most;
    }
    /// An option with a value, which can be given once.
    void addOption(const QStringList &names, const QString &description, const QString &valueName);
    /// An option with a value, which can be given again and again.
    void addRepeatableOption(
        const QStringList &names, const QString &description, const QString &valueName);
    /// An option whose value is a file to read; "-" is standard input.
    void addInputOption(const QString &name, const QString &description,
        const QString &valueName = QStringLiteral("FILE"));
    /// Option -o: a file to write; "-" is standard output, in place of what is printed else.
    void addOutputOption(const QString &description);
    /// Option --plot: a picture to draw.
    void addPlotOption(const QString &description);
    /// Options for output that is read by machines as it comes: --json-lines and --no-header.
    void addStreamOptions();
    /// An option without a value.
    void addFlag(const QString &name, const QString &description);

    // What it was given.

    /// Reads the arguments behind the command's name. Options without a value may be repeated,
    /// others only where the command says so.
    vex::Error parse(const QStringList &arguments);
    bool isHelpWanted() const { return m_parser.isSet(QStringLiteral("help")); }
    /// Needs the application object.
    QString helpText() const;
    /// All parameters, but for those that nobody else may read. Needs the application object.
    QStringList parameters() const;
    /// Writes them to the log.
    void logParameters() const;

    bool isSet(const QString &name) const { return m_parser.isSet(name); }
    QString value(const QString &name) const { return m_parser.value(name); }
    QStringList values(const QString &name) const { return m_parser.values(name); }
    QStringList positional() const { return m_parser.positionalArguments().mid(1); }
    /// JSON in some layout.
    bool isJson() const;
    /// The layout of several objects.
    JsonArrayWriter::Layout jsonLayout() const;
    QString outputFile() const; // empty for none
    QString plotFile() const; // empty for none

    /// All files that are read.
    QStringList inputFiles() const;
    /// All files that are written.
    QStringList outputFiles() const;

    /// Fails when there is a positional argument.
    vex::Error requireNoPositional() const;
    /// @p text with where to read more behind it.
    QString withHint(const QString &text) const;

private:
    void addCommonOptions();
    bool areJsonLines() const;
    void add(const QStringList &names, const QString &description, const QString &valueName);
    vex::Error checkRepeated() const;

    QCommandLineParser m_parser;
    QString m_command;
    QStringList m_names; // of all options, the longest of each
    QSet<QString> m_repeatable;
    QStringList m_inputs; // options whose values are files to read
    QString m_refusal; // of more positional arguments; empty where any number is taken
    qsizetype m_mostPositional = 0;
    bool m_arePositionalInputs = false;
};

/// @p text as a finite number; @p what names it in the error.
vex::Result<double> finiteNumber(const QString &text, const QString &what);

/// @p text as a finite number that is not negative; @p what names it in the error.
vex::Result<double> nonNegativeNumber(const QString &text, const QString &what);

/// @p text as percent, 0 to 100, with or without the sign.
/// @return the share, 0 to 1
vex::Result<double> shareFromPercent(const QString &text, const QString &what);

/// @p text as a whole number between @p least and @p most; @p what names it in the error.
vex::Result<double> wholeNumber(const QString &text, const QString &what, double least,
    double most = std::numeric_limits<double>::infinity());

} // namespace vexcli
