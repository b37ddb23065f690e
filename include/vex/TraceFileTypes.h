#pragma once

#include <QList>
#include <QString>

#include <vex/Export.h>
#include <vex/FileTypes.h>

/// The file types whose files hold traces.
namespace vex::TraceFileTypes {

/// CSV, TEXT, INTABIO, PI and ARW, in this order.
VEX_EXPORT QList<FileTypes::TypeRef> traceFileTypes();

/// True when the suffix of @p file belongs to one of them.
VEX_EXPORT bool isTraceFileType(const QString &file);

} // namespace vex::TraceFileTypes
