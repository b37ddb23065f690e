#pragma once

#include <QByteArray>
#include <QStringList>

#include <cstdio>

#include <vex/Result.h>

namespace vexcli {

/// Settles what the system's libraries would do otherwise: before anything else, and before there
/// is a second thread.
void prepareProcess();

/// Makes the standard streams carry the same bytes on every system: UTF-8, lines end with LF. A
/// console shows them as text and understands escape sequences. A stream that the caller closed
/// stays unusable: no file that is opened later takes its number. A reader that goes away is an
/// error of the writing, no signal.
void prepareStreams();

/// The arguments behind the program's name.
/// @par Errors
/// InvalidInput for one that is no text, and so would mean another file than the one named
vex::Result<QStringList> commandArguments(int argc, char **argv);

/// True when @p stream goes to a terminal rather than a file or a pipe.
bool isTerminal(std::FILE *stream);

/// Standard input where a secret is typed: what is typed is not shown as long as this object lives.
/// The terminal shows it again afterwards, also after Ctrl-C, and gets nothing that is still
/// unread. There is one at a time.
class HiddenInput
{
public:
    enum State {
        NoTerminal, ///< standard input is a file or a pipe, which is left as it is
        Shown, ///< the terminal goes on showing what is typed
        Hidden,
    };

    HiddenInput();
    ~HiddenInput();
    Q_DISABLE_COPY_MOVE(HiddenInput)

    State state() const { return m_state; }
    /// Waits for a line that is typed.
    /// @return the line in the terminal's encoding, on Windows in UTF-8; without its end
    /// @par Errors
    /// GeneralFailure where the terminal fails, or has another line already: one was pasted that is
    /// longer than a line (not noticed on Windows)
    vex::Result<QByteArray> readLine();

private:
    State m_state = NoTerminal;
};

/// Leaves the terminal as it was, also while HiddenInput reads from it. May be called at a crash.
void restoreTerminal();

/// Has @p note called when the user or the system asks the program to end; it may run at any point,
/// also in a thread of its own, and must do no more than set a flag. Asked again, the program ends
/// at once.
void onInterrupt(void (*note)(int));

/// Ends the process at once, while other threads still run: nothing that they use is destroyed. The
/// terminal is left as it was.
[[noreturn]] void endProcess(int exitCode);

} // namespace vexcli
