#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

namespace vex::detail {

/// One question to the credential store.
struct KeychainRequest
{
    enum Kind {
        ReadText,
        ReadBytes,
        WriteText,
        WriteBytes,
        Delete,
    };

    Kind kind = ReadText;
    QString service;
    QString key;
    QString text;
    QByteArray bytes;
    /// Longest time to wait; without, as long as it takes.
    std::optional<std::chrono::milliseconds> limit;
};

/// What the store has said.
struct KeychainAnswer
{
    /// What became of a question with a limit.
    enum State {
        Answered,
        Late, ///< not within the limit; the answer is dropped when it comes
        Busy, ///< not asked: an earlier question has no answer yet
        Locked, ///< no entry was found, and the store is locked
    };

    State state = Answered;
    int error = 0; ///< a QKeychain::Error
    QString errorString;
    QString text;
    QByteArray bytes;
};

/// Asks the store, and handles other events of the thread until it answers.
KeychainAnswer runKeychainJob(const KeychainRequest &request);

/// The same as it leaves the module for the store.
using RunKeychainJob = void (*)(const KeychainRequest &request, KeychainAnswer *answer);

} // namespace vex::detail
