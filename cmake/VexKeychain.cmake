# The credential store (<vex/KeychainUtils.h>), through QtKeychain. Optional on Windows, for which nobody packages it.
if(NOT TARGET Qt6Keychain::Qt6Keychain) # an outer project may have it; a second look would be an error
    if(WIN32)
        find_package(Qt6Keychain QUIET)
    else()
        find_package(Qt6Keychain REQUIRED)
    endif()
endif()
if(NOT TARGET Qt6Keychain::Qt6Keychain)
    set(VEX_HAS_KEYCHAIN OFF)
    message(STATUS "QtKeychain not found: the library is built without <vex/KeychainUtils.h>")
    return()
endif()
set(VEX_HAS_KEYCHAIN ON)

# Where its header is; nothing when the compiler looks there by itself. Callers need the header and no library.
get_target_property(VEX_KEYCHAIN_INCLUDE Qt6Keychain::Qt6Keychain INTERFACE_INCLUDE_DIRECTORIES)
get_filename_component(VEX_KEYCHAIN_INCLUDE ${VEX_KEYCHAIN_INCLUDE} ABSOLUTE)
if(VEX_KEYCHAIN_INCLUDE IN_LIST CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
    set(VEX_KEYCHAIN_INCLUDE "")
endif()
