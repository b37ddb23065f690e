// Compares signals with less and less memory left: each call answers or throws std::bad_alloc, and
// whatever it throws, it does not end the process.

#include <vex/PlotUtilities.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <tuple>
#include <utility>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

/// Lets the process take @p room more bytes of addresses than it has.
void allow(rlim_t room)
{
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = rlim_t(pages) * rlim_t(sysconf(_SC_PAGESIZE)) + room;
    setrlimit(RLIMIT_AS, &limit);
}

} // namespace

int main()
{
    using namespace vex::PlotUtilities;
    mallopt(M_MMAP_THRESHOLD, 65536); // what is freed is given back
    allow(0);
    if (std::unique_ptr<char[]>(new (std::nothrow) char[100000000])) {
        std::puts("skipped: the limit on addresses is not kept here (qemu-user)");
        return 77;
    }
    allow(rlim_t{1} << 40);
    vex::PlotBase a;
    vex::PlotBase descending;
    for (int i = 0; i < 20000; ++i) {
        a.points().append({0.25 * i, -1.0 - i % 7});
        descending.points().append({-0.75 * i, 1.0});
    }
    QList<double> values(20000, 0.5);
    const std::pair<const char *, std::function<void()>> calls[] = {
        {"abs", [&] { std::ignore = abs(a); }},
        {"guessSamplingInterval", [&] { std::ignore = guessSamplingInterval(a); }},
        {"mergeDomains", [&] { std::ignore = mergeDomains(a, a, 0.0); }},
        {"mergeDomains of what descends", [&] { std::ignore = mergeDomains(a, descending, 0.0); }},
        {"subtract", [&] { std::ignore = subtract(a, a, 0.0); }},
        {"relativeAreaOfError", [&] { std::ignore = relativeAreaOfError(a, a, 0.0); }},
        {"pearsonsCorrelation", [&] { std::ignore = pearsonsCorrelation(a, a); }},
        {"compareSignals", [&] { std::ignore = compareSignals(a, descending, 1.0, 0.0); }},
        {"removeCloseValues of a shared list",
            [&] {
                QList<double> shared = values;
                std::ignore = removeCloseValues(&shared, 1.0);
            }},
    };
    bool isGood = true;
    for (const auto &[name, call] : calls) {
        int answers = 0;
        int refusals = 0;
        for (rlim_t room = 0; room < 3000000; room += 20000) {
            allow(room);
            try {
                call();
                ++answers;
            } catch (const std::bad_alloc &) {
                ++refusals;
            }
            allow(rlim_t{1} << 40);
        }
        std::printf("%s: %d answers, %d without memory\n", name, answers, refusals);
        isGood = isGood && answers > 0 && refusals > 0;
    }
    // Long signals need the 4 MB of values that are kept, and nothing for each position.
    vex::PlotBase long1;
    vex::PlotBase long2;
    for (int i = 0; i < 400000; ++i) {
        long1.points().append({0.25 * i, 0.0 + i % 7});
        long2.points().append({0.25 * i + 0.125, 0.0 + i % 6});
    }
    allow(6000000);
    try {
        std::ignore = compareSignals(long1, long2, 1.0, 0.0);
        std::ignore = relativeAreaOfError(long1, long2, 0.0);
    } catch (const std::bad_alloc &) {
        std::puts("long signals: no answer");
        isGood = false;
    }
    return isGood ? 0 : 1;
}
