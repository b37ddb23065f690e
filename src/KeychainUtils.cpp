#include <vex/KeychainUtils.h>

#include "detail/ShownText.h"
#include "detail/Trace.h"
#include "detail/VariantMapBytes.h"
#include "platform/KeychainModule.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>

#include <algorithm>
#include <atomic>
#include <utility>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

// Trace sites of this file. The numbers are part of the interface: never renumber.
constexpr detail::TraceSource kSource{"src/KeychainUtils"};
namespace at {
constexpr auto mapNotRead = kSource.line(104);
constexpr auto mapNotWritten = kSource.line(117);
constexpr auto refused = kSource.line(118); // chosen here
constexpr auto notAnswered = kSource.line(119); // chosen here
constexpr auto notRead = kSource.line(120); // chosen here
constexpr auto noMap = kSource.line(121); // chosen here
constexpr auto mapNotTaken = kSource.line(122); // chosen here
constexpr auto textNotTaken = kSource.line(123); // chosen here
constexpr auto notWritten = kSource.line(124); // chosen here
constexpr auto notTheSame = kSource.line(125); // chosen here
constexpr auto notRemoved = kSource.line(126); // chosen here
} // namespace at

using detail::KeychainAnswer;
using detail::KeychainRequest;
using std::chrono::milliseconds;

const QString kService = u"VexCredentials"_s;

/// The thread whose events QtKeychain handles its jobs in: the one that called first. 0: none yet.
std::atomic<quint64> ownerThread = 0;

/// A number of this thread, which no other one gets when it has ended.
quint64 ownNumber()
{
    static std::atomic<quint64> last = 0;
    thread_local const quint64 number = ++last;
    return number;
}

KeychainAnswer ask(KeychainRequest request)
{
    QString reason;
    const detail::RunKeychainJob run = detail::keychainModule(&reason);
    KeychainAnswer answer;
    if (!run) {
        answer.error = QKeychain::NoBackendAvailable;
        answer.errorString = reason;
        return answer;
    }
    quint64 nobody = 0;
    ownerThread.compare_exchange_strong(nobody, ownNumber());
    request.service = kService;
    run(request, &answer);
    return answer;
}

QKeychain::Error told(const KeychainAnswer &answer, QString *errorString)
{
    if (errorString)
        *errorString = answer.errorString;
    return static_cast<QKeychain::Error>(answer.error);
}

Error failure(detail::TraceSite site, const char *function, const QString &text,
    ErrorCode code = ErrorCode::GeneralFailure)
{
    return detail::stamped(site, function, Error(code, text));
}

/// Half of a surrogate pair, or NUL in a key: stores keep something else.
bool isKept(const QString &text)
{
    return QString::fromUtf8(text.toUtf8()) == text;
}

/// Why the entry @p key cannot be asked for from here; success when it can.
Error refusal(const QString &key)
{
    const QString shown = detail::shownText(key.left(KeychainUtils::kMostKeySize));
    const auto refuse = [&shown](ErrorCode code, const QString &reason) {
        return Error(code, QObject::tr("No access to the secret '%1': %2").arg(shown, reason));
    };
    if (key.isEmpty())
        return refuse(ErrorCode::InvalidInput, QObject::tr("a key is not empty"));
    if (key.size() > KeychainUtils::kMostKeySize)
        return refuse(ErrorCode::InvalidInput,
            QObject::tr("a key has at most %1 characters").arg(KeychainUtils::kMostKeySize));
    if (key.contains(QChar(u'\0')) || !isKept(key))
        return refuse(ErrorCode::InvalidInput,
            QObject::tr("a key has neither NUL nor half of a surrogate pair"));
    if (!QCoreApplication::instance())
        return refuse(ErrorCode::GeneralFailure, QObject::tr("there is no QCoreApplication"));
    if (!QAbstractEventDispatcher::instance())
        return refuse(
            ErrorCode::GeneralFailure, QObject::tr("this thread has no event dispatcher"));
    if (const quint64 owner = ownerThread; owner != 0 && owner != ownNumber())
        return refuse(ErrorCode::GeneralFailure,
            QObject::tr("another thread has used the credential store first"));
    return ErrorCode::NoError;
}

/// One request of a checked call; all requests of the call have the limit in common.
class CheckedCall
{
public:
    CheckedCall(const QString &key, milliseconds limit)
        : m_key(key)
        , m_limit(limit)
        , m_end(limit)
    {
    }

    Error begin() const { return detail::stamped(at::refused, Q_FUNC_INFO, refusal(m_key)); }
    /// The answer to a request, when the store has given any.
    Result<KeychainAnswer> ask(KeychainRequest::Kind kind, const QByteArray &bytes = {}) const
    {
        KeychainRequest request{kind, {}, m_key, {}, bytes, {}};
        request.limit = milliseconds(std::max<qint64>(m_end.remainingTime(), 0));
        KeychainAnswer answer = vex::ask(request);
        switch (answer.state) {
        case KeychainAnswer::Answered:
            return answer;
        case KeychainAnswer::Late:
            return problem(at::notAnswered, Q_FUNC_INFO,
                QObject::tr("the credential store has not answered within %1 ms")
                    .arg(m_limit.count()));
        case KeychainAnswer::Busy:
            return problem(at::notAnswered, Q_FUNC_INFO,
                QObject::tr("the credential store has not answered an earlier call within %1 ms")
                    .arg(m_limit.count()));
        case KeychainAnswer::Locked:
            break;
        }
        return problem(at::notAnswered, Q_FUNC_INFO, QObject::tr("the credential store is locked"));
    }
    Error problem(detail::TraceSite site, const char *function, const QString &reason,
        ErrorCode code = ErrorCode::GeneralFailure) const
    {
        return failure(site, function,
            QObject::tr("No access to the secret '%1': %2").arg(detail::shownText(m_key), reason),
            code);
    }
    /// @p problem() with what the store said.
    Error storeProblem(
        detail::TraceSite site, const char *function, const KeychainAnswer &answer) const
    {
        const QString said = detail::shownText(answer.errorString);
        return problem(site, function,
            QObject::tr("the credential store says '%1' (%2)")
                .arg(said, QString::number(answer.error)));
    }

private:
    const QString &m_key;
    milliseconds m_limit;
    QDeadlineTimer m_end;
};

/// What the entry holds; nothing where there is none.
Result<std::optional<KeychainAnswer>> readWith(const CheckedCall &call, KeychainRequest::Kind kind)
{
    auto answer = call.ask(kind);
    if (answer.hasError())
        return detail::stamped(at::notRead, Q_FUNC_INFO, std::move(answer).error());
    if (answer.value().error == QKeychain::EntryNotFound)
        return std::optional<KeychainAnswer>();
    if (answer.value().error != QKeychain::NoError)
        return call.storeProblem(at::notRead, Q_FUNC_INFO, answer.value());
    return std::optional(std::move(answer).value());
}

Result<std::optional<KeychainAnswer>> readChecked(
    const QString &key, milliseconds limit, KeychainRequest::Kind kind)
{
    const CheckedCall call(key, limit);
    if (Error error = call.begin(); error.hasError())
        return error;
    return readWith(call, kind);
}

/// Removes all that the entry holds and looks whether it is gone.
Error removeWith(const CheckedCall &call)
{
    const auto answer = call.ask(KeychainRequest::Delete);
    if (answer.hasError())
        return detail::stamped(at::notRemoved, Q_FUNC_INFO, answer.error());
    if (const int error = answer.value().error;
        error != QKeychain::NoError && error != QKeychain::EntryNotFound)
        return call.storeProblem(at::notRemoved, Q_FUNC_INFO, answer.value());
    const auto rest = readWith(call, KeychainRequest::ReadBytes);
    if (rest.hasError())
        return detail::stamped(at::notRemoved, Q_FUNC_INFO, rest.error());
    if (rest.value())
        return call.problem(at::notRemoved, Q_FUNC_INFO, QObject::tr("it is still there"));
    return ErrorCode::NoError;
}

/// True when the entry gives @p bytes back once they are written.
Result<bool> writeOnce(const CheckedCall &call, const QByteArray &bytes)
{
    const auto answer = call.ask(KeychainRequest::WriteBytes, bytes);
    if (answer.hasError())
        return detail::stamped(at::notWritten, Q_FUNC_INFO, answer.error());
    if (answer.value().error != QKeychain::NoError)
        return call.storeProblem(at::notWritten, Q_FUNC_INFO, answer.value());
    const auto kept = readWith(call, KeychainRequest::ReadBytes);
    if (kept.hasError())
        return detail::stamped(at::notWritten, Q_FUNC_INFO, kept.error());
    return kept.value() && kept.value()->bytes == bytes;
}

Error writeWith(const CheckedCall &call, const QByteArray &bytes)
{
    auto isKept = writeOnce(call, bytes);
    if (isKept.hasValue() && !isKept.value()) { // a text of this key is read in its place
        if (Error error = removeWith(call); error.hasError())
            return detail::stamped(at::notWritten, Q_FUNC_INFO, std::move(error));
        isKept = writeOnce(call, bytes);
    }
    if (isKept.hasError())
        return detail::stamped(at::notWritten, Q_FUNC_INFO, std::move(isKept).error());
    if (!isKept.value()) {
        Error error = call.problem(at::notTheSame, Q_FUNC_INFO,
            QObject::tr("the credential store does not give back what it was given"));
        if (const Error left = removeWith(call); left.hasError())
            error.addWarning(left.message());
        return error;
    }
    Error success;
    if (bytes.size() > KeychainUtils::kMostPortableSize)
        success.addWarning(QObject::tr("The secret has %1 bytes; Windows keeps none that large")
                               .arg(bytes.size()));
    return success;
}

} // namespace

QKeychain::Error KeychainUtils::readFromKeychain(
    const QString &key, QString *text, QString *errorString)
{
    const KeychainAnswer answer = ask({KeychainRequest::ReadText, {}, key, {}, {}, {}});
    *text = answer.text;
    return told(answer, errorString);
}

QKeychain::Error KeychainUtils::readFromKeychain(
    const QString &key, QByteArray *bytes, QString *errorString)
{
    const KeychainAnswer answer = ask({KeychainRequest::ReadBytes, {}, key, {}, {}, {}});
    *bytes = answer.bytes;
    return told(answer, errorString);
}

QKeychain::Error KeychainUtils::writeToKeychain(
    const QString &key, const QString &text, QString *errorString)
{
    return told(ask({KeychainRequest::WriteText, {}, key, text, {}, {}}), errorString);
}

QKeychain::Error KeychainUtils::writeToKeychain(
    const QString &key, const QByteArray &bytes, QString *errorString)
{
    return told(ask({KeychainRequest::WriteBytes, {}, key, {}, bytes, {}}), errorString);
}

QKeychain::Error KeychainUtils::deleteFromKeychain(const QString &key, QString *errorString)
{
    return told(ask({KeychainRequest::Delete, {}, key, {}, {}, {}}), errorString);
}

Result<QMap<QString, QVariant>> KeychainUtils::readVariantMap(const QString &key)
{
    QByteArray bytes;
    QString text;
    switch (readFromKeychain(key, &bytes, &text)) {
    case QKeychain::NoError:
        return detail::mapFrom(bytes);
    case QKeychain::EntryNotFound:
        return QMap<QString, QVariant>();
    default:
        return failure(at::mapNotRead, Q_FUNC_INFO, text);
    }
}

Error KeychainUtils::writeToKeychain(const QString &key, const QMap<QString, QVariant> &map)
{
    QString text;
    if (writeToKeychain(key, detail::bytesOf(map), &text) != QKeychain::NoError)
        return failure(at::mapNotWritten, Q_FUNC_INFO, text);
    return ErrorCode::NoError;
}

Result<std::optional<QString>> KeychainUtils::readTextChecked(
    const QString &key, milliseconds limit)
{
    const auto answer = readChecked(key, limit, KeychainRequest::ReadText);
    if (answer.hasError())
        return answer.error();
    return answer.value() ? std::optional(answer.value()->text) : std::nullopt;
}

Result<std::optional<QByteArray>> KeychainUtils::readBytesChecked(
    const QString &key, milliseconds limit)
{
    const auto answer = readChecked(key, limit, KeychainRequest::ReadBytes);
    if (answer.hasError())
        return answer.error();
    return answer.value() ? std::optional(answer.value()->bytes) : std::nullopt;
}

Result<std::optional<QMap<QString, QVariant>>> KeychainUtils::readMapChecked(
    const QString &key, milliseconds limit)
{
    const auto answer = readChecked(key, limit, KeychainRequest::ReadBytes);
    if (answer.hasError())
        return answer.error();
    if (!answer.value())
        return std::optional<QMap<QString, QVariant>>();
    const QByteArray &bytes = answer.value()->bytes;
    if (const QString problem = detail::problemOfMap(bytes); !problem.isEmpty())
        return CheckedCall(key, limit).problem(at::noMap, Q_FUNC_INFO, problem);
    return std::optional(detail::mapFrom(bytes));
}

Error KeychainUtils::writeTextChecked(const QString &key, const QString &text, milliseconds limit)
{
    const CheckedCall call(key, limit);
    if (!isKept(text))
        return call.problem(at::textNotTaken, Q_FUNC_INFO,
            QObject::tr("the text has half of a surrogate pair"), ErrorCode::InvalidInput);
    return writeBytesChecked(key, text.toUtf8(), limit);
}

Error KeychainUtils::writeBytesChecked(
    const QString &key, const QByteArray &bytes, milliseconds limit)
{
    const CheckedCall call(key, limit);
    if (Error error = call.begin(); error.hasError())
        return error;
    return writeWith(call, bytes);
}

Error KeychainUtils::writeMapChecked(
    const QString &key, const QMap<QString, QVariant> &map, milliseconds limit)
{
    const QByteArray bytes = detail::bytesOf(map);
    if (const QString problem = detail::problemOfMap(bytes); !problem.isEmpty())
        return CheckedCall(key, limit)
            .problem(at::mapNotTaken, Q_FUNC_INFO, problem, ErrorCode::InvalidInput);
    return writeBytesChecked(key, bytes, limit);
}

Error KeychainUtils::deleteChecked(const QString &key, milliseconds limit)
{
    const CheckedCall call(key, limit);
    if (Error error = call.begin(); error.hasError())
        return error;
    return removeWith(call);
}

} // namespace vex
