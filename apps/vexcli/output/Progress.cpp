#include "output/Progress.h"

#include "platform/Terminal.h"

#include <algorithm>
#include <atomic>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qint64 kShowAfter = 500; // milliseconds
constexpr qint64 kRedrawEvery = 100; // milliseconds
constexpr int kWidth = 30; // characters of the bar

std::atomic<bool> isStopped = false; // read by the thread that waits for Ctrl-C
static_assert(std::atomic<bool>::is_always_lock_free); // or no handler of signals may set it

extern "C" void noteInterrupt(int)
{
    isStopped = true;
}

} // namespace

Progress::Progress(const QString &label, qint64 total)
    : m_label(label)
    , m_total(total)
    , m_isEnabled(total > 0 && isTerminal(stderr))
{
    m_sinceStart.start();
    m_sinceDrawn.start();
}

Progress::~Progress()
{
    if (m_isShown)
        std::fputs("\r\x1b[K", stderr);
}

void Progress::update(qint64 done)
{
    if (!m_isEnabled || m_sinceDrawn.elapsed() < kRedrawEvery
        || m_sinceStart.elapsed() < kShowAfter)
        return;
    m_sinceDrawn.restart();
    m_isShown = true;
    const double share =
        std::clamp(static_cast<double>(done) / static_cast<double>(m_total), 0.0, 1.0);
    const int filled = static_cast<int>(share * kWidth);
    const QString bar = QString(filled, u'#') + QString(kWidth - filled, u'.');
    std::fprintf(stderr, "\r%s [%s] %3d %%", qPrintable(m_label), qPrintable(bar),
        static_cast<int>(share * 100.0));
    std::fflush(stderr);
}

void catchInterrupts()
{
    onInterrupt(noteInterrupt);
}

bool isInterrupted()
{
    return isStopped;
}

void stopWork()
{
    isStopped = true;
}

} // namespace vexcli
