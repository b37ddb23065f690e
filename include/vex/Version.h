#pragma once

/// \file
/// The version that a caller is compiled against; appInternalVersion() is the one that it runs
/// with.
///
/// \code
/// #if VEX_VERSION >= VEX_VERSION_CHECK(6, 1, 0)
/// \endcode
/// The build takes its own version from this file.

/// Changes when a caller may have to be changed or compiled again.
#define VEX_VERSION_MAJOR 6
/// Changes when there is something new to call.
#define VEX_VERSION_MINOR 0
/// Changes with every release in between.
#define VEX_VERSION_PATCH 0

/// A version as a number to compare with VEX_VERSION; minor and patch are below 256.
#define VEX_VERSION_CHECK(major, minor, patch) (((major) << 16) | ((minor) << 8) | (patch))
/// This version as such a number, 0x060000 for 6.0.0.
#define VEX_VERSION VEX_VERSION_CHECK(VEX_VERSION_MAJOR, VEX_VERSION_MINOR, VEX_VERSION_PATCH)
/// This version as a text in quotes, "6.0.0".
#define VEX_VERSION_STRING                                                                         \
    VEX_VERSION_QUOTE_THREE(VEX_VERSION_MAJOR, VEX_VERSION_MINOR, VEX_VERSION_PATCH)

/// \cond
// NOLINTNEXTLINE(bugprone-macro-parentheses): they would stand in the text
#define VEX_VERSION_QUOTE_THREE(major, minor, patch) VEX_VERSION_QUOTE(major.minor.patch)
#define VEX_VERSION_QUOTE(text) #text
/// \endcond
