#include <vex/ScopedStreamRedirector.h>

#include <ostream>

namespace vex {

ScopedStreamRedirector::ScopedStreamRedirector(std::ostream &stream, std::ostream &target)
    : m_stream(stream)
    , m_buffer(stream.rdbuf(target.rdbuf()))
{
}

ScopedStreamRedirector::~ScopedStreamRedirector()
{
    m_stream.rdbuf(m_buffer);
}

} // namespace vex
