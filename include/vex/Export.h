#pragma once

/// @file
/// Visibility of what leaves the library.

/// @def VEX_EXPORT
/// Marks a class, function or variable that leaves the library. Comes first in its declaration.

#if defined(VEX_STATIC_DEFINE)
#    define VEX_EXPORT
#elif defined(_MSC_VER)
#    if defined(vex_EXPORTS)
#        define VEX_EXPORT __declspec(dllexport)
#    else
#        define VEX_EXPORT __declspec(dllimport)
#    endif
#elif defined(_WIN32)
#    if defined(vex_EXPORTS)
#        define VEX_EXPORT [[gnu::dllexport]]
#    else
#        define VEX_EXPORT [[gnu::dllimport]]
#    endif
#else
#    define VEX_EXPORT [[gnu::visibility("default")]]
#endif
