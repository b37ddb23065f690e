#include <vex/TimeRange.h>

#include <utility>

namespace vex {

TimeRange::TimeRange(double start, double end, bool useRange)
    : m_start(start)
    , m_end(end)
    , m_useRange(useRange)
{
}

TimeRange::~TimeRange() = default;

void TimeRange::setTime(double a, double b)
{
    m_start = a;
    m_end = b;
    if (m_start > m_end)
        std::swap(m_start, m_end);
}

} // namespace vex
