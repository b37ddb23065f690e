#pragma once

#include <QString>

#include <vex/Error.h>
#include <vex/Export.h>

namespace vex {

/// Copies a file to where the current user may not write.
class VEX_EXPORT FileCopierUtils
{
public:
    /// Has the helper Vex-File-Copier copy a file over another with the rights of the
    /// administrator, and waits for it without a limit of time.
    ///
    /// The system asks for an administrator's consent. The destination is the old file or the new
    /// one at any time, never a part; it keeps its owner and its rights. docs/elevated-save.md
    /// tells what the helper refuses, and why.
    ///
    /// Deliberate: a source that contains %1 or %2 is filled in again, with @p destination.
    ///
    /// @param source       absolute path of a file that the user may read
    /// @param destination  absolute path of a file, which need not exist, in a folder that does
    /// @par Errors  GeneralFailure "Bad parameters provided" (a path is not absolute, among
    ///              others), "Source file is not readable", "Destination file is not writable",
    ///              "Copying the file failed" (also when there was no consent). On Linux a warning
    ///              of the error has the reason.
    static Error runFileCopier(const QString &source, const QString &destination);
};

} // namespace vex
