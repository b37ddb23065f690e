#pragma once

#include <vex/Export.h>

namespace vex {

/// A range of times that can be switched off without losing its bounds, such as a filter.
class VEX_EXPORT TimeRange
{
public:
    /// 0 to 0, not in use.
    TimeRange() = default;
    /// Keeps the bounds as given; setTime() is the one that orders them.
    ///
    /// @param start, end  in the caller's unit
    /// @param useRange    whether the range is in use
    TimeRange(double start, double end, bool useRange);
    /// Copies the range.
    TimeRange(const TimeRange &) = default;
    /// Copies the range.
    TimeRange &operator=(const TimeRange &) = default;
    virtual ~TimeRange();

    /// Replaces the bounds by the smaller and the larger of both.
    void setTime(double a, double b);
    /// Switches the range on or off.
    void setUseRange(bool useRange) { m_useRange = useRange; }

    /// Whether the range is in use.
    bool useRange() const { return m_useRange; }
    /// Lower bound, unless the constructor was given another order.
    double start() const { return m_start; }
    /// Upper bound, unless the constructor was given another order.
    double end() const { return m_end; }
    /// True when the end lies behind the start.
    bool valid() const { return m_end > m_start; }

private:
    double m_start = 0.0;
    double m_end = 0.0;
    bool m_useRange = false;
};

} // namespace vex
