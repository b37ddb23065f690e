#include "platform/KeychainModule.h"

#include <QFileInfo>

#include <dlfcn.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

/// The module lies beside this library. Its name alone would not do: a program may have brought
/// this library from anywhere.
QString modulePath()
{
    Dl_info library = {};
    if (dladdr(reinterpret_cast<const void *>(&keychainModule), &library) == 0)
        return {};
    const QFileInfo file(QString::fromLocal8Bit(library.dli_fname));
    return file.absolutePath() + u'/' + QLatin1StringView(VEX_KEYCHAIN_MODULE);
}

} // namespace

RunKeychainJob keychainModule(QString *reason)
{
    // never closed: the store answers into its code at any time
    static void *const module = dlopen(modulePath().toLocal8Bit(), RTLD_NOW | RTLD_LOCAL);
    static const QString problem = module ? QString() : QString::fromLocal8Bit(dlerror());
    static const auto entry =
        module ? reinterpret_cast<RunKeychainJob>(dlsym(module, "vexRunKeychainJob")) : nullptr;
    *reason = problem;
    return entry;
}

} // namespace vex::detail
