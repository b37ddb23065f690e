#pragma once

#include <QString>

#include <utility>

namespace vex {

/// What a path leads to.
enum class PathType {
    File, ///< a file
};

/// A path that says in its type what it leads to.
///
/// @tparam type  nothing checks it: it tells a reader and the compiler
template <PathType type>
class PathImpl
{
public:
    /// Keeps @p path as given.
    explicit PathImpl(QString path)
        : m_path(std::move(path))
    {
    }

    /// The path as given.
    const QString &toString() const { return m_path; }

private:
    QString m_path;
};

} // namespace vex
