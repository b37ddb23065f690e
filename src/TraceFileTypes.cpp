#include <vex/TraceFileTypes.h>

namespace vex {

QList<FileTypes::TypeRef> TraceFileTypes::traceFileTypes()
{
    static const QList<FileTypes::TypeRef> kTypes{
        FileTypes::CSV, FileTypes::TEXT, FileTypes::INTABIO, FileTypes::PI, FileTypes::ARW};
    return kTypes;
}

bool TraceFileTypes::isTraceFileType(const QString &file)
{
    return FileTypes::fileMatchesAnyType(file, traceFileTypes());
}

} // namespace vex
