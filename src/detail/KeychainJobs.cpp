#include "detail/KeychainJobs.h"

#include "platform/StoreLock.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QList>
#include <QTimer>

#include <qt6keychain/keychain.h>

#include <memory>

namespace vex::detail {

namespace {

using QKeychain::Job;

/// Jobs of this thread that the store has not answered. A new one would wait behind them.
QList<Job *> &unanswered()
{
    thread_local QList<Job *> jobs;
    return jobs;
}

void prepare(Job *job, const QString &key)
{
    job->setAutoDelete(false);
    job->setKey(key);
    unanswered().append(job);
    // when the answer comes, not when its call returns: that may be within another call
    const auto remove = [job] { unanswered().removeOne(job); };
    QObject::connect(job, &Job::finished, remove);
    QObject::connect(job, &QObject::destroyed, remove);
}

/// Waits until @p job has an answer or is gone, or the deadline is over. Starts it, when wanted.
bool hasAnswer(Job *job, QDeadlineTimer deadline, bool isNew)
{
    bool isFinished = false;
    QEventLoop loop;
    const auto finish = [&isFinished, &loop] {
        isFinished = true;
        loop.quit();
    };
    QObject::connect(job, &Job::finished, &loop, finish);
    QObject::connect(job, &QObject::destroyed, &loop, finish);
    QTimer alarm;
    if (!deadline.isForever()) {
        QObject::connect(&alarm, &QTimer::timeout, &loop, &QEventLoop::quit);
        alarm.start(std::chrono::milliseconds(deadline.remainingTime()));
    }
    if (isNew)
        job->start();
    // Within another call the dispatcher of GLib takes the events that were posted before for sent,
    // and sleeps. One of them starts the job that this one waits for.
    if (QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance())
        dispatcher->wakeUp();
    loop.exec();
    // a program that is told to end leaves loops at once, but the store still answers into the job
    while (!isFinished && !deadline.hasExpired())
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    return isFinished;
}

/// Runs @p job within its limit. One without an answer goes by itself when the answer comes: until
/// then the store holds a pointer to it.
KeychainAnswer::State runWithin(std::unique_ptr<Job> &job, const QString &key, QDeadlineTimer limit)
{
    while (!unanswered().isEmpty()) {
        if (!hasAnswer(unanswered().constFirst(), limit, false))
            return KeychainAnswer::Busy;
    }
    prepare(job.get(), key);
    if (hasAnswer(job.get(), limit, true))
        return KeychainAnswer::Answered;
    job.release()->setAutoDelete(true);
    return KeychainAnswer::Late;
}

/// Fills in what a job has to say, when it is a read.
void take(const Job &, const KeychainRequest &, KeychainAnswer *) { }
void take(
    const QKeychain::ReadPasswordJob &job, const KeychainRequest &request, KeychainAnswer *answer)
{
    if (request.kind == KeychainRequest::ReadText)
        answer->text = job.textData();
    else
        answer->bytes = job.binaryData();
}

void give(Job &, const KeychainRequest &) { }
void give(QKeychain::WritePasswordJob &job, const KeychainRequest &request)
{
    if (request.kind == KeychainRequest::WriteText)
        job.setTextData(request.text);
    else
        job.setBinaryData(request.bytes);
}

template <typename AnyJob>
KeychainAnswer ask(const KeychainRequest &request)
{
    KeychainAnswer answer;
    const auto listen = [&](const AnyJob &job) {
        answer.errorString = job.errorString();
        take(job, request, &answer);
        answer.error = job.error();
    };
    if (!request.limit) {
        AnyJob job(request.service);
        give(job, request);
        prepare(&job, request.key);
        hasAnswer(&job, QDeadlineTimer(QDeadlineTimer::Forever), true);
        listen(job);
        return answer;
    }
    std::unique_ptr<Job> owner;
    auto *job = new AnyJob(request.service);
    owner.reset(job);
    give(*job, request);
    answer.state = runWithin(owner, request.key, QDeadlineTimer(*request.limit));
    if (answer.state == KeychainAnswer::Answered)
        listen(*job);
    // a locked store shows no entries and takes none
    const bool isDenied = answer.error == QKeychain::EntryNotFound
        || answer.error == QKeychain::AccessDenied || answer.error == QKeychain::AccessDeniedByUser;
    if (answer.state == KeychainAnswer::Answered && isDenied && isStoreLocked())
        answer.state = KeychainAnswer::Locked;
    return answer;
}

} // namespace

KeychainAnswer runKeychainJob(const KeychainRequest &request)
{
    switch (request.kind) {
    case KeychainRequest::ReadText:
    case KeychainRequest::ReadBytes:
        return ask<QKeychain::ReadPasswordJob>(request);
    case KeychainRequest::WriteText:
    case KeychainRequest::WriteBytes:
        return ask<QKeychain::WritePasswordJob>(request);
    case KeychainRequest::Delete:
        break;
    }
    return ask<QKeychain::DeletePasswordJob>(request);
}

} // namespace vex::detail
