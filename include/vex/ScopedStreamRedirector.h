#pragma once

#include <iosfwd>

#include <QtGlobal>

#include <vex/Export.h>

namespace vex {

/// Sends what is written to one output stream to another, for a scope.
///
/// Redirectors of the same stream nest; end them in reverse order. Both streams must outlive it.
/// Whether the stream has failed is not touched: one that had failed before writes nothing.
class VEX_EXPORT ScopedStreamRedirector
{
public:
    /// Gives @p stream the buffer that @p target has now.
    ScopedStreamRedirector(std::ostream &stream, std::ostream &target);
    /// Gives the stream its former buffer back.
    ~ScopedStreamRedirector();
    Q_DISABLE_COPY_MOVE(ScopedStreamRedirector)

private:
    std::ostream &m_stream;
    std::streambuf *m_buffer; // the stream's own, not owned
};

} // namespace vex
