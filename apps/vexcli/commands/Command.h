#pragma once

#include <QLatin1StringView>
#include <QString>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <vex/Error.h>
#include <vex/Result.h>

namespace vexcli {

class CommandLine;
class Output;

/// Stands in the path of --plot for the name of each thing that is drawn.
inline constexpr QLatin1StringView kNamePlaceholder("{name}");

/// What a command hands out.
class Results
{
public:
    /// Draws a picture in the format that the path ends with.
    using Drawing = std::function<vex::Result<QByteArray>(const QString &path)>;
    using Ending = void (*)();

    /// @param standard  what is printed; @param file  that of -o, null when there is none
    Results(std::shared_ptr<Output> standard, std::shared_ptr<Output> file)
        : m_standard(std::move(standard))
        , m_file(std::move(file))
    {
    }

    /// Where tables and JSON go; null when "-o -" has put the file in their place.
    Output *standard() const { return m_standard.get(); }
    /// The file of -o; null when there is none.
    Output *file() const { return m_file.get(); }
    /// Prints @p text.
    void print(const QByteArray &text) const;

    /// Has a picture drawn once the command is done. @p draw owns what it uses.
    void addPlot(const QString &path, Drawing draw) { m_plots.emplace_back(path, std::move(draw)); }
    const std::vector<std::pair<QString, Drawing>> &plots() const { return m_plots; }

    /// What the exit code tells although everything has been written, such as a bad record left
    /// out.
    void setVerdict(vex::Error verdict) { m_verdict = std::move(verdict); }
    const vex::Error &verdict() const { return m_verdict; }

    /// What the program does last, when all has been written.
    void setEnding(Ending last) { m_ending = last; }
    Ending ending() const { return m_ending; }

private:
    std::shared_ptr<Output> m_standard;
    std::shared_ptr<Output> m_file;
    std::vector<std::pair<QString, Drawing>> m_plots;
    vex::Error m_verdict = vex::ErrorCode::NoError;
    Ending m_ending = nullptr;
};

/// A command of the program: what it takes and what it does. Files are opened, checked against each
/// other, written and named around it; see runProgram().
struct Command
{
    QLatin1StringView name;
    QLatin1StringView summary; ///< for the list of commands, without a capital and a full stop
    /// Says what the command takes.
    void (*declare)(CommandLine *commandLine);
    /// Computes, and hands the results out. After Ctrl-C the process may end in the middle of it.
    vex::Error (*run)(const CommandLine &commandLine, Results *results);
    /// What it has done cannot be undone: Ctrl-C waits until it ends at a place of its own choice,
    /// and its report is written whatever else fails.
    bool isIrreversible = false;
};

extern const Command kApexCommand;
extern const Command kCheckPathCommand;
extern const Command kCompareCommand;
extern const Command kCrashCommand;
extern const Command kCredentialCommand;
extern const Command kDeobfuscateCommand;
extern const Command kDistributionCommand;
extern const Command kFileTypeCommand;
extern const Command kFormulaCommand;
extern const Command kMassCommand;
extern const Command kModificationsCommand;
extern const Command kMoveCommand;
extern const Command kObfuscateCommand;
extern const Command kPatternCommand;
extern const Command kSysInfoCommand;

/// Runs the command that @p arguments begin with, reports errors and gives the exit code.
int runProgram(const vex::Result<QStringList> &arguments);

} // namespace vexcli
