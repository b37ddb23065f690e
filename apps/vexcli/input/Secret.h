#pragma once

#include <QByteArrayView>
#include <QString>

#include <functional>

#include <vex/Error.h>

namespace vexcli {

/// Reads a secret from standard input; nothing of it is ever shown.
///
/// A file or a pipe is read to its end, byte by byte as it is. At a terminal it is one line without
/// its end; standard error says that the program waits for it, and whether it will be seen.
///
/// @param what          what the user is asked for, such as "the secret"
/// @param dropsLineEnd  a line end, LF or CR LF, at the very end does not count
/// @param take          gets the bytes in pieces
vex::Error readSecret(const QString &what, bool dropsLineEnd,
    const std::function<vex::Error(QByteArrayView piece)> &take);

} // namespace vexcli
