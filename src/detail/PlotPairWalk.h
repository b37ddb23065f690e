#pragma once

#include "detail/Companions.h"

#include <QList>
#include <QPointF>

#include <array>
#include <span>
#include <vector>

namespace vex::detail {

/// The gap that the @p points, two at least, have in the middle, the upper one of two.
double medianGap(const QList<QPointF> &points);

/// Goes along the common positions of two signals, some positions at a time.
///
/// The positions are those of mergeDomains(). Both signals outlive the walk and stay as they are.
class PlotPairWalk
{
public:
    using Values = std::span<const double>;
    /// As many positions as there are at a time, at most.
    static constexpr std::size_t kMost = 256 + 4;

    PlotPairWalk(const PlotBase &a, const PlotBase &b);
    PlotPairWalk(const PlotPairWalk &) = delete;
    PlotPairWalk &operator=(const PlotPairWalk &) = delete;

    /// As many positions as there can be in all.
    qsizetype most() const { return m_a.points().size() + m_b.points().size() + 4; }

    /// The next positions, none at the end; valid until the next call.
    Values next();

    /// Calls visit(x, a(x), b(x)) for all that is left, with as many positions at a time as next()
    /// gives.
    template <typename Visitor>
    void forEach(Visitor visit)
    {
        if (m_isAscending)
            evaluate<PairCursorOf<PlotBase>::Type>(visit);
        else
            evaluate<PointByPoint<PlotBase>>(visit);
    }

private:
    template <typename Cursor, typename Visitor>
    void evaluate(Visitor &visit)
    {
        Cursor cursor(m_a, m_b);
        std::array<double, kMost> ya;
        std::array<double, kMost> yb;
        for (Values x = next(); !x.empty(); x = next()) {
            cursor.evaluate(x.data(), ya.data(), yb.data(), qsizetype(x.size()));
            visit(x, Values(ya).first(x.size()), Values(yb).first(x.size()));
        }
    }

    const PlotBase &m_a;
    const PlotBase &m_b;
    bool m_isAscending;
    // Three ascending runs that next() merges, and what it keeps of them.
    std::span<const QPointF> m_first;
    std::span<const QPointF> m_second;
    std::vector<double> m_others; // positions beyond the ends; all where a signal does not ascend
    std::span<const double> m_third; // what is left of them
    double m_tolerance;
    double m_last;
    std::array<double, kMost> m_positions;
};

} // namespace vex::detail
