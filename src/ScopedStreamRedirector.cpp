#include <vex/ScopedStreamRedirector.h>

#include <ostream>

namespace vex {

namespace {

/// Makes a function of every stream visible that changes the buffer and nothing else.
struct Access : std::ios
{
    using std::ios::set_rdbuf;
};

/// Gives @p stream another buffer. Its own rdbuf() would forget that it has failed.
void setBuffer(std::ostream &stream, std::streambuf *buffer)
{
    if (stream.rdbuf() && buffer)
        (stream.*(&Access::set_rdbuf))(buffer);
    else // a stream without a buffer is bad because of that alone
        stream.rdbuf(buffer);
}

} // namespace

ScopedStreamRedirector::ScopedStreamRedirector(std::ostream &stream, std::ostream &target)
    : m_stream(stream)
    , m_buffer(stream.rdbuf())
{
    setBuffer(stream, target.rdbuf());
}

ScopedStreamRedirector::~ScopedStreamRedirector()
{
    setBuffer(m_stream, m_buffer);
}

} // namespace vex
