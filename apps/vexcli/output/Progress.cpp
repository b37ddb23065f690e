#include "output/Progress.h"

#include "platform/Terminal.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qint64 kShowAfter = 500; // milliseconds
constexpr qint64 kRedrawEvery = 100; // milliseconds
constexpr int kWidth = 30; // characters of the bar

volatile std::sig_atomic_t interrupted = 0;
std::atomic<bool> isStopped = false;

extern "C" void noteInterrupt(int)
{
    interrupted = 1;
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
    return interrupted != 0 || isStopped;
}

void stopWork()
{
    isStopped = true;
}

} // namespace vexcli
