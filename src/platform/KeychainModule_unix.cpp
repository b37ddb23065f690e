#include "platform/KeychainModule.h"

#include "platform/SystemFacts.h"

#include <QFileInfo>

#include <dlfcn.h>
#include <link.h>

using namespace Qt::StringLiterals;

namespace vex::detail {

namespace {

/// Where this code is. The loader knows for a program only how it was called.
QString ownFolder()
{
    Dl_info file = {};
    void *holder = nullptr;
    if (dladdr1(reinterpret_cast<const void *>(&keychainModule), &file, &holder, RTLD_DL_LINKMAP)
        == 0)
        return {};
    if (*static_cast<const link_map *>(holder)->l_name == '\0') // the program's has none
        return QFileInfo(programFile()).absolutePath() + u"/"_s
            + QLatin1StringView(VEX_LIBRARY_FOLDER);
    return QFileInfo(QString::fromLocal8Bit(file.dli_fname)).absolutePath();
}

/// The module lies beside the library. Its name alone would not do: a program may have brought the
/// library from anywhere.
QString modulePath()
{
    return ownFolder() + u'/' + QLatin1StringView(VEX_KEYCHAIN_MODULE);
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
