#pragma once

#include "detail/Companions.h"

#include <QList>
#include <QPointF>

#include <array>
#include <limits>
#include <span>

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

    /// True where both signals ascend and neither is empty: the positions ascend and are finite.
    bool isAscending() const { return m_isAscending; }

    /// As many positions as there can be in all.
    qsizetype most() const { return m_a.points().size() + m_b.points().size() + 4; }

    /// The next positions, none at the end; valid until the next call.
    Values next();

    /// Calls visit(x, a(x), b(x)) for what is left, with as many positions at a time as next()
    /// gives. Ends early once there were @p enough; a copy of the walk goes on from there as well.
    template <typename Visitor>
    void forEach(Visitor visit, qsizetype enough = std::numeric_limits<qsizetype>::max())
    {
        if (m_isAscending)
            evaluate<PairValuesOf<PlotBase>::Type>(visit, enough);
        else
            evaluate<PointByPoint<PlotBase>>(visit, enough);
    }

private:
    template <typename PairValues, typename Visitor>
    void evaluate(Visitor &visit, qsizetype enough)
    {
        const PairValues values(m_a, m_b);
        std::array<double, kMost> ya;
        std::array<double, kMost> yb;
        for (qsizetype done = 0; done < enough;) {
            const Values x = next();
            if (x.empty())
                break;
            done += qsizetype(x.size());
            values.evaluate(x.data(), m_nextA.data(), m_nextB.data(), ya.data(), yb.data(),
                qsizetype(x.size()));
            visit(x, Values(ya).first(x.size()), Values(yb).first(x.size()));
        }
    }

    const PlotBase &m_a;
    const PlotBase &m_b;
    bool m_isAscending;
    // Three ascending runs that next() merges, and what it keeps of them.
    std::span<const QPointF> m_first;
    std::span<const QPointF> m_second;
    QList<double> m_others; // positions beyond the ends; all where a signal does not ascend
    qsizetype m_othersTaken = 0;
    double m_tolerance;
    double m_last;
    std::array<double, kMost> m_positions;
    // For each position the first sample of either signal that is not below it, where both ascend.
    std::array<const QPointF *, kMost> m_nextA;
    std::array<const QPointF *, kMost> m_nextB;
};

} // namespace vex::detail
