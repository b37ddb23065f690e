#include "detail/LoggingCategories.h"

#include <cstring>
#include <map>
#include <memory>

namespace vex::detail {

namespace {

struct ByText
{
    bool operator()(const char *a, const char *b) const { return std::strcmp(a, b) < 0; }
};

using Registry = std::map<const char *, std::unique_ptr<QLoggingCategory>, ByText>;

Registry &registry()
{
    static Registry categories;
    return categories;
}

QLoggingCategory *add(const char *name, QtMsgType enableForLevel)
{
    auto category = std::make_unique<QLoggingCategory>(name, enableForLevel);
    return registry().emplace(name, std::move(category)).first->second.get();
}

// The registry and the library's own category exist from the moment the library is loaded.
[[maybe_unused]] const QLoggingCategory *const generic = genericCategory();

} // namespace

QLoggingCategory *loggingCategory(const char *name, QtMsgType enableForLevel, bool createIfMissing)
{
    if (registry().empty())
        add(kGenericCategory, enableForLevel);
    if (const auto found = registry().find(name); found != registry().end())
        return found->second.get();
    if (!createIfMissing)
        return registry().find(kGenericCategory)->second.get();
    return add(name, enableForLevel);
}

QLoggingCategory *loggingCategory(const char *name, QtMsgType enableForLevel)
{
    return loggingCategory(name, enableForLevel, true);
}

QLoggingCategory *genericCategory()
{
    return loggingCategory(kGenericCategory, QtDebugMsg);
}

} // namespace vex::detail
