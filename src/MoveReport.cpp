#include <vex/MoveReport.h>

#include <algorithm>
#include <numeric>

namespace vex {

qint64 MoveReport::bytes(Step::Kind kind) const
{
    return std::accumulate(
        steps.begin(), steps.end(), qint64{0}, [kind](qint64 sum, const Step &step) {
            return step.kind == kind ? sum + step.bytes : sum;
        });
}

qsizetype MoveReport::count(Step::Kind kind) const
{
    return std::count_if(
        steps.begin(), steps.end(), [kind](const Step &step) { return step.kind == kind; });
}

} // namespace vex
