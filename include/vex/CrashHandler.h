#pragma once

#include <QByteArrayView>
#include <QObject>

#include <chrono>

#include <vex/ExceptionPointers.h>
#include <vex/Export.h>

/// Tells of a crash before the process ends: it logs where the crash was, and has the application
/// react.
///
/// An application creates it at its start:
/// @code
/// QObject::connect(CrashHandler::instance(), &CrashHandler::crashDetected, writeReport);
/// @endcode
/// A crash is an exception of Windows that nobody handles, or abort(); on Linux one of the signals
/// SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP and SIGSYS. An uncaught C++ exception ends in
/// abort(). The exit status stays that of the crash.
///
/// The process has one crash: a second thread that crashes meanwhile waits for the end. Where even
/// telling fails, since the memory of the process is damaged or a lock is held for ever, what is
/// known goes to standard error as it is after 2.5 seconds at the most, and the process ends.
///
/// Other handlers run afterwards when the environment variable
/// VEX_MULTIPLE_EXCEPTION_HANDLERS_ENABLED is a whole number above 0: on Linux the one that was
/// there before, on Windows what the system does with an exception that nobody has handled.
///
/// docs/crashes.md shows what is seen of each kind of crash, and what cannot be caught.
class VEX_EXPORT CrashHandler : public QObject
{
    Q_OBJECT

public:
    /// The handler, which the first call installs unless it is disabled. Any thread may call; the
    /// handler is never destroyed, so that crashes of static destructors are told of as well.
    static CrashHandler *instance();

    /// Puts back what was there before. Called before instance(), it keeps that from installing
    /// anything. What others have installed on top meanwhile stays. For good: nothing installs it
    /// again.
    static void disableCrashHandler();

    /// Whether a crash is logged; it is unless this says otherwise. crashDetected() comes anyway.
    static void setDumpBacktraceOnCrashEnabled(bool isEnabled);

    /// What happens at a crash, apart from the end: logs it and emits crashDetected().
    ///
    /// The debug messages are ".Backtrace begin", a line for each function on the stack of the
    /// thread, the crashing one first, 62 at the most, and ".Backtrace end". A line is a tab, the
    /// function, its address with the bytes from the function's beginning, and the place in the
    /// source:
    /// @code
    ///     readPeaks(QString const&) [0x00005581aa3c1b52+98](src/Peaks.cpp:112)
    ///     (No symbol) [0x00007f3a12001b2c](No line info)
    /// @endcode
    /// Where places are missing, the messages ".Modules begin", for each such address the program
    /// or library that it lies in and how far from its beginning (`0x00007f3a12001b2c
    /// libpeaks.so.2+0x1b2c`), and ".Modules end" follow.
    ///
    /// @param pointers  where the crash was; null for the caller's own stack
    static void crashHandler(EXCEPTION_POINTERS *pointers);

    /// Lets the calling thread tell of a stack overflow, which takes another stack on Linux and a
    /// reserve on Windows. The thread that calls instance() first has it already; any other thread
    /// without it just ends the process then. May be called again.
    static void prepareThread();

    /// Ends the process when receivers of crashDetected() take longer. Without a call there is no
    /// limit, for the sake of those that show a message; but one of 1.5 seconds where the
    /// crash could not be logged, since the process is damaged then.
    /// @param limit  0 or less for none
    static void setReceiverTimeLimit(std::chrono::milliseconds limit);

    /// The lines that crashHandler() has logged, or would have; each ends with LF. For a receiver
    /// of crashDetected() that writes a report: reading it allocates nothing.
    /// @return empty before a crash, and while logging is off; a NUL stands behind it
    static QByteArrayView backtraceText();

Q_SIGNALS:
    /// The process has crashed. Receivers run in the thread that has, so connect them with
    /// Qt::DirectConnection or as a function without a context object. The less they rely on, the
    /// surer: memory can be damaged, and locks can be held.
    /// @param expPtr  valid during the call
    void crashDetected(EXCEPTION_POINTERS *expPtr);

private:
    explicit CrashHandler(QObject *parent);

    static void restoreCrashHandler();
    void dumpBacktrace(EXCEPTION_POINTERS *pointers);
};
