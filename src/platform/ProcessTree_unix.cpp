#include "platform/ProcessTree.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QThread>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace vex::detail {

namespace {

constexpr auto kTimeToStop =
    1s; // a process that waits in the kernel does not stop, nor does it fork
constexpr auto kTimeToEnd = 5s;

/// What the system tells of a process or a thread.
struct Status
{
    char state = 'X'; ///< as in proc(5); X: there is none, or it is hidden from this user
    pid_t parent = 0;
    quint64 started = 0; ///< tells processes apart that had the same number one after the other
    bool isKnown = true; ///< false: it could not be asked, for lack of descriptors or memory
};

bool isNothingThere()
{
    return errno == ENOENT || errno == ESRCH || errno == EACCES || errno == EPERM;
}

Status statusAt(const QString &folder)
{
    const int file = open(qPrintable(folder + "/stat"_L1), O_RDONLY | O_CLOEXEC);
    std::array<char, 4096> text; // longer than any line of it
    const ssize_t size = file < 0 ? -1 : read(file, text.data(), text.size());
    const bool isGone = size < 0 && isNothingThere();
    if (file >= 0)
        close(file);
    if (size <= 0)
        return {'X', 0, 0, isGone || size == 0};
    const QByteArray line(text.data(), size);
    // the name in front may hold anything
    const QList<QByteArray> fields = line.sliced(line.lastIndexOf(')') + 1).trimmed().split(' ');
    if (fields.size() < 20)
        return {'X', 0, 0, false};
    return {fields[0].front(), fields[1].toInt(), fields[19].toULongLong(), true};
}

struct FolderCloser
{
    void operator()(DIR *folder) const { closedir(folder); }
};

/// The numbers that are names in @p path: of processes, or of the threads of one. Nothing when it
/// could not be read.
std::optional<QList<pid_t>> numbersIn(const QString &path)
{
    const std::unique_ptr<DIR, FolderCloser> folder(opendir(qPrintable(path)));
    if (!folder && !isNothingThere())
        return {};
    QList<pid_t> numbers;
    while (const dirent *entry = folder ? readdir(folder.get()) : nullptr) {
        if (const pid_t number = QByteArrayView(entry->d_name).toInt(); number > 0)
            numbers.append(number);
    }
    return numbers;
}

class Process
{
public:
    explicit Process(pid_t id)
        : m_id(id)
        , m_status(statusAt(folder()))
    {
    }

    pid_t id() const { return m_id; }
    pid_t parent() const { return m_status.parent; }
    bool isKnown() const { return m_status.isKnown; }
    bool isRunning() const { return m_status.started > 0 && !areThreadsIn("XZ"); }
    /// Nothing of it can start another process.
    bool isStopped() const { return areThreadsIn("TtXZ"); }

    /// True when it got the signal, or has ended.
    bool send(int signal) const
    {
        return withDescriptor([signal](int descriptor) {
            return syscall(SYS_pidfd_send_signal, descriptor, signal, nullptr, 0) == 0
                || errno == ESRCH;
        });
    }

    /// For a process that has been stopped: without descriptors to spare its number has to do,
    /// which nobody has taken over meanwhile.
    bool end() const { return send(SIGKILL) || kill(m_id, SIGKILL) == 0; }

    /// Waits for its end, whoever its parent is.
    bool hasEndedBy(const QDeadlineTimer &deadline) const
    {
        return withDescriptor([&deadline](int descriptor) {
            pollfd end{descriptor, POLLIN, 0};
            int events = poll(&end, 1, int(deadline.remainingTime()));
            while (events < 0 && errno == EINTR)
                events = poll(&end, 1, int(deadline.remainingTime()));
            return events > 0;
        });
    }

private:
    QString folder() const { return u"/proc/%1"_s.arg(m_id); }

    /// All threads are in one of @p states. The first of them tells nothing of the others, and may
    /// have ended long before.
    bool areThreadsIn(QByteArrayView states) const
    {
        const QString threads = folder() + "/task"_L1;
        const auto numbers = numbersIn(threads);
        return numbers && std::all_of(numbers->begin(), numbers->end(), [&](pid_t number) {
            return states.contains(statusAt(threads + u'/' + QString::number(number)).state);
        });
    }

    /// Asks @p question of a descriptor that cannot mean another process; true when this one is
    /// gone.
    template <typename Question>
    bool withDescriptor(Question question) const
    {
        const int descriptor = int(syscall(SYS_pidfd_open, m_id, 0));
        if (descriptor < 0)
            return errno == ESRCH;
        const Status now = statusAt(folder());
        const bool isAnother = now.isKnown && now.started != m_status.started;
        const bool answer = isAnother || (now.isKnown && question(descriptor));
        close(descriptor);
        return answer;
    }

    pid_t m_id;
    Status m_status;
};

/// A process and everything below it, parents before their children, all of it stopped.
class Tree
{
public:
    explicit Tree(const Process &root) { add(root); }

    const QList<Process> &processes() const { return m_processes; }
    bool isComplete() const { return m_isComplete; }

    /// Stops until a look at all processes of the system shows no further one. The lists of
    /// children that the system keeps can miss one while another ends.
    void stop()
    {
        qsizetype known = 0;
        while (known < m_processes.size()) {
            waitUntilStopped(known);
            known = m_processes.size();
            const auto all = numbersIn(u"/proc"_s);
            QList<Process> found;
            for (const pid_t id : all.value_or(QList<pid_t>())) {
                if (!m_ids.contains(id))
                    found.append(Process(id));
            }
            m_isComplete = m_isComplete && all
                && std::all_of(found.begin(), found.end(),
                    [](const Process &process) { return process.isKnown(); });
            addBelow(&found);
        }
    }

private:
    void add(const Process &process)
    {
        m_ids.insert(process.id());
        m_processes.append(process);
        m_isComplete = process.send(SIGSTOP) && m_isComplete;
    }

    void addBelow(QList<Process> *found)
    {
        const auto isBelow = [this](const Process &process) {
            return m_ids.contains(process.parent()) && process.isRunning();
        };
        auto next = std::find_if(found->begin(), found->end(), isBelow);
        while (next != found->end()) {
            add(*next);
            found->erase(next);
            next = std::find_if(found->begin(), found->end(), isBelow); // may be below this one
        }
    }

    void waitUntilStopped(qsizetype first) const
    {
        const QDeadlineTimer deadline(kTimeToStop);
        for (const Process &process : m_processes.sliced(first)) {
            while (!process.isStopped() && !deadline.hasExpired())
                QThread::usleep(200);
        }
    }

    QList<Process> m_processes;
    QSet<pid_t> m_ids;
    bool m_isComplete = true;
};

} // namespace

std::optional<QString> endProcessTree(qint64 id)
{
    const Process root(static_cast<pid_t>(id));
    // a number that has gone to a stranger
    if (!root.isRunning() || root.parent() != getpid())
        return {};
    Tree tree(root);
    tree.stop();
    bool isDone = tree.isComplete();
    QStringList ended;
    // Children first: the end of a parent can wake stopped ones up.
    for (auto process = tree.processes().crbegin(); process != tree.processes().crend(); ++process)
        isDone = process->end() && isDone;
    const QDeadlineTimer deadline(kTimeToEnd);
    for (const Process &process : tree.processes()) {
        isDone = process.hasEndedBy(deadline) && isDone;
        ended.append(QString::number(process.id()));
    }
    if (!isDone)
        return {};
    return u"Ended %1"_s.arg(ended.join(u' '));
}

} // namespace vex::detail
