#pragma once

#include <QString>

namespace vex {

/// Where a build of an application comes from. An empty text stands for what is not known.
struct BuildInfoData
{
    QString version; ///< of the application
    QString path; ///< its sources, seen from the top of its project, such as apps/vexcli
    QString branch; ///< of the repository, or "detached at" and a short hash
    QString date; ///< "2026-01-31", UTC
    QString time; ///< "23:59:59", UTC
};

/// What vex_build_info() of the CMake package has put into the application. The library itself does
/// not have it: without that call the application cannot be linked.
BuildInfoData buildInfo();

} // namespace vex
