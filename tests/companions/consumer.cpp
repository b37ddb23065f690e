// Prints what the library makes of two signals; with companions whose signals are steps.

#include <vex/ApexFinder.h>
#include <vex/PlotUtilities.h>

#include <cstdio>

int main()
{
    using namespace vex::PlotUtilities;
    vex::PlotBase a;
    a.points() = {{0, 0}, {2, 4}, {4, 0}};
    vex::PlotBase b;
    b.points() = {{1, 0}, {2, 2}, {3, 0}};
    const auto domain = mergeDomains(a, b, 0.0).value();
    const auto difference = subtract(a, b, 0.0).value();
    for (qsizetype i = 0; i < domain.size(); ++i)
        std::printf("%g: %g\n", domain[i], difference.points()[i].y());
    const auto verdict = compareSignals(a, b, 10.0, 0.0).value();
    std::printf("correlation %.4f %.4f\n", pearsonsCorrelation(a, b).value(), verdict.correlation);
    std::printf("area of error %g %g\n", relativeAreaOfError(a, b, 0.0).value(),
        verdict.relativeAreaOfError);
    std::printf("apex %g\n", vex::ApexFinder::findApexTime(a, 0.0, 4.0));
}
