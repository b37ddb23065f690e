#pragma once

/// @file
/// Visibility of what leaves the companion library.

/// @def VEX_COMMON_CORE_MINI_EXPORT
/// Marks a class, function or variable that leaves the companion library. Comes first in its
/// declaration.

#if defined(VEX_COMMON_CORE_MINI_STATIC)
#    define VEX_COMMON_CORE_MINI_EXPORT
#elif defined(_MSC_VER)
#    if defined(vex_common_core_mini_EXPORTS)
#        define VEX_COMMON_CORE_MINI_EXPORT __declspec(dllexport)
#    else
#        define VEX_COMMON_CORE_MINI_EXPORT __declspec(dllimport)
#    endif
#elif defined(_WIN32)
#    if defined(vex_common_core_mini_EXPORTS)
#        define VEX_COMMON_CORE_MINI_EXPORT [[gnu::dllexport]]
#    else
#        define VEX_COMMON_CORE_MINI_EXPORT [[gnu::dllimport]]
#    endif
#else
#    define VEX_COMMON_CORE_MINI_EXPORT [[gnu::visibility("default")]]
#endif
