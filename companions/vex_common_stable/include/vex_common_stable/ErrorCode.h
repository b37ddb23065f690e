#pragma once

#include <QtGlobal>

namespace vex {

/// What kind of failure an Error reports.
///
/// The numbers are part of the interface. Value 3 and those above 4 are reserved.
enum ErrorCode : qint32 {
    NoError = 0, ///< success; an Error built with it reports none
    GeneralFailure = 1, ///< chemistry and isotope code, elevated copy, writing, credential store
    InvalidInput = 2, ///< input that cannot be processed
    FileAccessError = 4, ///< a file or folder cannot be read, moved or opened
};

} // namespace vex
