#pragma once

#include <QString>

#include <vex_common_stable/Export.h>

namespace vex {

/// Questions about files and folders.
class VEX_COMMON_STABLE_EXPORT FileUtils
{
public:
    /// The sum of the sizes of all files below @p folder, in bytes; 0 when there is no such folder.
    ///
    /// Hidden files count as well. Symbolic links are not followed and count nothing; a file with
    /// several names counts once for each; a folder that cannot be read counts nothing.
    static qint64 dirSize(const QString &folder);
};

} // namespace vex
