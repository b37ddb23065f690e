#include <vex_common_stable/Result.h>

#include <QtGlobal>

#include <cstdlib>

// std::abort() ends each of these: Qt declares qFatal() as a function that does not return for
// other compilers than Microsoft's only.
namespace vex::detail {

void valueOfFailedResult(const Error &error)
{
    const QString report = error.errorMessages().join(u'\n');
    qFatal("The value of a failed result was taken. Error code %d\n%s",
        static_cast<int>(error.code()), qUtf8Printable(report));
    std::abort();
}

void errorOfGoodResult(const QList<QString> &warnings)
{
    qFatal(
        "The error of a result with a value was taken.\n%s", qUtf8Printable(warnings.join(u'\n')));
    std::abort();
}

} // namespace vex::detail
