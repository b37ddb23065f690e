#pragma once

#include <QList>
#include <QString>

#include <utility>
#include <variant>

#include <vex_common_stable/Error.h>
#include <vex_common_stable/Export.h>
#include <vex_common_stable/Warnings.h>

namespace vex {

namespace detail {

/// Ends the process, in every build type, because value() was called on a failed result; the fatal
/// message holds the whole error report.
[[noreturn]] VEX_COMMON_STABLE_EXPORT void valueOfFailedResult(const Error &error);

/// Ends the process, in every build type, because error() was called on a result with a value.
[[noreturn]] VEX_COMMON_STABLE_EXPORT void errorOfGoodResult(const QList<QString> &warnings);

} // namespace detail

/// Either a value or the Error that says why there is none.
///
/// Warnings given to a failed result reach the error that it holds as well; those given to a good
/// one stay with the result. Ignoring a returned Result is a compiler warning.
///
/// @tparam T  any copyable type other than Error and ErrorCode
template <typename T>
class [[nodiscard]] Result : public Warnings
{
public:
    /// A good result without warnings.
    Result(T value)
        : m_storage(std::in_place_index<0>, std::move(value))
    {
    }
    /// A failed result; the error's warnings become the result's own as well.
    Result(Error error)
        : Warnings(error)
        , m_storage(std::in_place_index<1>, std::move(error))
    {
    }
    /// A code alone would pass as a value of T = int: make an Error of it.
    Result(ErrorCode) = delete;
    /// Copies value or error, and the warnings.
    Result(const Result &) = default;
    /// Takes everything over.
    Result(Result &&) = default;
    /// Replaces everything by a copy.
    Result &operator=(const Result &) = default;
    /// Replaces everything by the other's.
    Result &operator=(Result &&) = default;
    ~Result() override = default;

    /// True when there is a value.
    bool hasValue() const { return m_storage.index() == 0; }
    /// True when there is an error instead of a value.
    bool hasError() const { return !hasValue(); }
    /// True when there is a value.
    explicit operator bool() const { return hasValue(); }

    /// The value. Taking it from a failed result ends the process with the error's report.
    const T &value() const &
    {
        if (const T *value = std::get_if<0>(&m_storage))
            return *value;
        detail::valueOfFailedResult(std::get<1>(m_storage));
    }
    /// The value, moved out of a result that is about to end.
    T value() &&
    {
        if (T *value = std::get_if<0>(&m_storage))
            return std::move(*value);
        detail::valueOfFailedResult(std::get<1>(m_storage));
    }
    /// The value, or @p fallback when there is none.
    T valueOr(T fallback) const
    {
        const T *value = std::get_if<0>(&m_storage);
        return value ? *value : std::move(fallback);
    }

    /// The error. Taking it from a good result ends the process.
    const Error &error() const &
    {
        if (const Error *error = std::get_if<1>(&m_storage))
            return *error;
        detail::errorOfGoodResult(warnings());
    }
    /// The error, moved out of a result that is about to end: the way to pass a failure on.
    Error error() &&
    {
        if (Error *error = std::get_if<1>(&m_storage))
            return std::move(*error);
        detail::errorOfGoodResult(warnings());
    }

    /// Adds a place to the error's trace, as Error::ecatch() does. A good result stays as it is.
    Result &ecatch(const char *function, const char *file, int line)
    {
        if (Error *error = std::get_if<1>(&m_storage))
            error->ecatch(function, file, line);
        return *this;
    }

    /// Appends one warning and returns this result.
    Result &addWarning(const QString &warning)
    {
        addWarningInternal(QString(warning)); // a copy: it may be one of this result's own
        return *this;
    }
    /// Appends several warnings in order and returns this result.
    Result &addWarnings(const QList<QString> &warnings)
    {
        addWarningsInternal(QList<QString>(warnings));
        return *this;
    }
    /// Removes all warnings and returns this result.
    Result &clearWarnings()
    {
        clearWarningsInternal();
        return *this;
    }

protected:
    /// Appends to this result and to the error that it holds.
    void addWarningInternal(const QString &warning) override
    {
        Warnings::addWarningInternal(warning);
        if (Error *error = std::get_if<1>(&m_storage))
            error->addWarning(warning);
    }
    /// Appends to this result and to the error that it holds.
    void addWarningsInternal(const QList<QString> &warnings) override
    {
        Warnings::addWarningsInternal(warnings);
        if (Error *error = std::get_if<1>(&m_storage))
            error->addWarnings(warnings);
    }
    /// Clears this result and the error that it holds.
    void clearWarningsInternal() override
    {
        Warnings::clearWarningsInternal();
        if (Error *error = std::get_if<1>(&m_storage))
            error->clearWarnings();
    }
    /// Replaces the texts of this result and of the error that it holds.
    void resetWarningInternal(const QString &warning) override
    {
        Warnings::resetWarningInternal(warning);
        if (Error *error = std::get_if<1>(&m_storage))
            error->resetWarning(warning);
    }
    /// Replaces the texts of this result and of the error that it holds.
    void resetWarningsInternal(const QList<QString> &warnings) override
    {
        Warnings::resetWarningsInternal(warnings);
        if (Error *error = std::get_if<1>(&m_storage))
            error->resetWarnings(warnings);
    }

private:
    std::variant<T, Error> m_storage;
};

} // namespace vex
