#include <vex_common_stable/Result.h>

#include <QtGlobal>

namespace vex::detail {

void valueOfFailedResult(const Error &error)
{
    const QString report = error.errorMessages().join(u'\n');
    qFatal("The value of a failed result was taken. Error code %d\n%s",
        static_cast<int>(error.code()), qUtf8Printable(report));
}

void errorOfGoodResult(const QList<QString> &warnings)
{
    qFatal(
        "The error of a result with a value was taken.\n%s", qUtf8Printable(warnings.join(u'\n')));
}

} // namespace vex::detail
