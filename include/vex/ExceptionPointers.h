#pragma once

/// @file
/// What CrashHandler::crashDetected() tells about a crash. The one header that differs between
/// platforms.

#if defined(_WIN32)

#    include <QMetaType>

struct _EXCEPTION_POINTERS;
/// That of windows.h, which only a receiver that looks into it has to include.
using EXCEPTION_POINTERS = _EXCEPTION_POINTERS;
Q_DECLARE_OPAQUE_POINTER(EXCEPTION_POINTERS *) // for signals and slots

#else

#    include <csignal>
#    include <ucontext.h>

/// What a handler of a signal is given. Nothing here is owned, and nothing outlives the handler.
struct EXCEPTION_POINTERS // NOLINT(readability-identifier-naming): as on Windows
{
    int signal; ///< such as SIGSEGV
    siginfo_t *info; ///< where it comes from; see sigaction(2)
    ucontext_t *context; ///< registers at the crash
};

#endif
