#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

#include <qt6keychain/keychain.h>

#include <chrono>
#include <optional>

#include <vex/Error.h>
#include <vex/Export.h>
#include <vex/Result.h>

namespace vex {

/// Secrets in the credential store of the operating system, all of the service "VexCredentials".
///
/// There are plain calls and checked ones. The plain ones hand on what the store says and wait for
/// it as long as it takes. The checked ones tell beforehand what would hang or crash, end after a
/// limit, and look whether a secret is there when they have written it. docs/secrets.md tells who
/// can read what, and what each of them does when the store is locked, missing or frozen.
///
/// Every call runs an event loop until the store has answered: other events of the thread are
/// handled meanwhile. All calls of a program come from one thread that has an event dispatcher: the
/// one that called first. Where the library for the store cannot be loaded, the answer is
/// NoBackendAvailable with the reason.
namespace KeychainUtils {

/// Reads a text.
///
/// @param key          names the entry
/// @param text         replaced, by an empty one on failure; not null
/// @param errorString  replaced by what the store says, also on success; may be null
/// @return EntryNotFound where there is none; under Linux also when the store is locked
VEX_EXPORT QKeychain::Error readFromKeychain(
    const QString &key, QString *text, QString *errorString);
/// Reads bytes. Parameters and answer as above.
VEX_EXPORT QKeychain::Error readFromKeychain(
    const QString &key, QByteArray *bytes, QString *errorString);

/// Stores a text in place of what the entry held. Under Linux the text ends at the first NUL, and
/// an entry of bytes with this key stays beside it.
///
/// @param key          names the entry
/// @param text         any
/// @param errorString  replaced by what the store says, also on success; may be null
VEX_EXPORT QKeychain::Error writeToKeychain(
    const QString &key, const QString &text, QString *errorString);
/// Stores bytes in place of what the entry held. Under Linux a text with this key stays beside
/// them, and a read then gives the text.
///
/// @param key          names the entry
/// @param bytes        any
/// @param errorString  replaced by what the store says, also on success; may be null
VEX_EXPORT QKeychain::Error writeToKeychain(
    const QString &key, const QByteArray &bytes, QString *errorString);

/// Removes the text and the bytes of an entry.
///
/// @param key          names the entry
/// @param errorString  replaced by what the store says, also on success; may be null
/// @return for an entry that does not exist what the store says: NoError under Linux, EntryNotFound
///         on Windows
VEX_EXPORT QKeychain::Error deleteFromKeychain(const QString &key, QString *errorString);

/// Reads a map; an empty one where there is no entry.
///
/// Deliberate: bytes that are no map give whatever can be made of them; readMapChecked() tells.
/// @par Errors  GeneralFailure with what the store says
VEX_EXPORT Result<QMap<QString, QVariant>> readVariantMap(const QString &key);

/// Stores a map as the bytes that QDataStream makes of it, in the version of the Qt in use.
///
/// @par Errors  GeneralFailure with what the store says
VEX_EXPORT Error writeToKeychain(const QString &key, const QMap<QString, QVariant> &map);

/// How long a checked call waits for the store, unless it is told otherwise: long enough for a user
/// who has to type the password of the store.
inline constexpr std::chrono::milliseconds kAnswerLimit{120'000};

/// Longest key of the checked calls, in UTF-16 code units; Windows takes no longer ones everywhere.
inline constexpr qsizetype kMostKeySize = 200;

/// Largest secret in bytes that every system keeps; chosen below the 16896 of Windows, which
/// encrypts it first. Larger ones are stored under Linux, with a warning in the result.
inline constexpr qsizetype kMostPortableSize = 16'000;

/// Reads a text and tells what can go wrong.
///
/// @param key    of 1 to kMostKeySize characters; case counts for nothing on Windows
/// @param limit  longest time to wait; at least 0
/// @return nothing where there is no entry
/// @par Errors  InvalidInput for a key that not every store keeps; GeneralFailure when there is no
///              QCoreApplication, no event dispatcher, another thread was first, the store is
///              locked, missing or does not answer. Each message names the key and the reason
VEX_EXPORT Result<std::optional<QString>> readTextChecked(
    const QString &key, std::chrono::milliseconds limit = kAnswerLimit);
/// Reads bytes. Parameters, answer and errors as above.
VEX_EXPORT Result<std::optional<QByteArray>> readBytesChecked(
    const QString &key, std::chrono::milliseconds limit = kAnswerLimit);
/// Reads a map. Memory is bounded by what the store gives, whatever sizes stand in it.
///
/// @par Errors  those above; and GeneralFailure for bytes that are no map, that hold more than one,
///              values nested deeper than 100, or values of other types than writeMapChecked()
///              takes
VEX_EXPORT Result<std::optional<QMap<QString, QVariant>>> readMapChecked(
    const QString &key, std::chrono::milliseconds limit = kAnswerLimit);

/// Stores a text, as its UTF-8 bytes, so that nothing in it is cut, and reads it back.
///
/// A secret that does not come back as it was is removed, so that nobody reads a damaged one. When
/// the limit is over, a write may still take place: the store decides.
/// @par Errors  those of readTextChecked(); InvalidInput for half of a surrogate pair;
///              GeneralFailure when the store gives back something else
VEX_EXPORT Error writeTextChecked(
    const QString &key, const QString &text, std::chrono::milliseconds limit = kAnswerLimit);
/// Stores bytes and reads them back; a text with this key goes. Otherwise as above.
VEX_EXPORT Error writeBytesChecked(
    const QString &key, const QByteArray &bytes, std::chrono::milliseconds limit = kAnswerLimit);
/// Stores a map and reads it back. Otherwise as above.
///
/// Values are of the types of settings: numbers, texts, bytes, characters, dates and times, URLs,
/// UUIDs, points, sizes, lines and rectangles, and lists, maps and hashes of them.
/// @par Errors  those above; InvalidInput for a value of another type, and for deeper nesting than
///              100
VEX_EXPORT Error writeMapChecked(const QString &key, const QMap<QString, QVariant> &map,
    std::chrono::milliseconds limit = kAnswerLimit);

/// Removes an entry and looks whether it is gone. None is a success.
///
/// @par Errors  those of readTextChecked(); GeneralFailure when the entry is still there
VEX_EXPORT Error deleteChecked(const QString &key, std::chrono::milliseconds limit = kAnswerLimit);

} // namespace KeychainUtils

} // namespace vex
