#pragma once

#include <QLoggingCategory>

namespace vex::detail {

/// Name of the library's own category, the one that every lookup can fall back on.
inline constexpr const char *kGenericCategory = "vex.generic";

/// The category called @p name in the process-wide registry.
///
/// Made on first use, the registry first of all holds kGenericCategory, with the level of that
/// call. Not locked: register from static initialisers or from the loading thread.
///
/// @param name             of static lifetime: the registry keeps the pointer
/// @param enableForLevel   lowest level that is on; ignored for a name that the registry has
/// @param createIfMissing  false: an unknown name gives kGenericCategory
/// @return never null, owned by the registry
QLoggingCategory *loggingCategory(const char *name, QtMsgType enableForLevel, bool createIfMissing);

/// The same, made when missing.
QLoggingCategory *loggingCategory(const char *name, QtMsgType enableForLevel);

/// The library's own category, with every level on. A source that logs through it keeps the pointer
/// in a global of its own, which also makes the category exist from the start:
/// `const QLoggingCategory *const generic = detail::genericCategory();`
QLoggingCategory *genericCategory();

} // namespace vex::detail
