#include "Background.h"

#include "output/Progress.h"

#include <QThread>

namespace vexcli {

namespace {

constexpr unsigned long kInterruptEvery = 50; // milliseconds between two looks for Ctrl-C
constexpr unsigned long kGrace = 200; // milliseconds to clean up after Ctrl-C

} // namespace

bool runInBackground(const std::function<void()> &work)
{
    QThread *thread = QThread::create(work);
    thread->start();
    while (!thread->wait(kInterruptEvery)) {
        if (isInterrupted() && !thread->wait(kGrace))
            return false; // the thread ends with the process
    }
    delete thread;
    return !isInterrupted();
}

} // namespace vexcli
