#include "platform/ReportFile.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vexcli {

namespace {

/// @return why not, or null
const char *writeAll(int file, QByteArrayView text)
{
    while (!text.isEmpty()) {
        const ssize_t written = write(file, text.data(), static_cast<std::size_t>(text.size()));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return strerrordesc_np(errno);
        text = text.sliced(written);
    }
    return nullptr;
}

const char *nameOf(int signal)
{
    for (const auto &[number, name] : {std::pair{SIGSEGV, "SIGSEGV, invalid access to memory"},
             std::pair{SIGBUS, "SIGBUS, memory behind the end of its file or badly aligned"},
             std::pair{SIGFPE, "SIGFPE, arithmetic error such as a division by zero"},
             std::pair{SIGILL, "SIGILL, illegal instruction"},
             std::pair{SIGABRT, "SIGABRT, the program ended itself with abort()"},
             std::pair{SIGTRAP, "SIGTRAP, trap"},
             std::pair{SIGSYS, "SIGSYS, forbidden system call"}}) {
        if (number == signal)
            return name;
    }
    return "signal";
}

} // namespace

QByteArray preparedPath(const QString &path)
{
    return QFile::encodeName(path);
}

const char *ReportFile::create(const QByteArray &folder, const char *name)
{
    std::array<char, 4096> path = {};
    const int length = std::snprintf(path.data(), path.size(), "%s/%s", folder.constData(), name);
    if (length < 0 || static_cast<std::size_t>(length) >= path.size())
        return "the name is too long";
    for (std::size_t i = 1; i < static_cast<std::size_t>(length); ++i) {
        if (path[i] != '/')
            continue;
        path[i] = '\0';
        mkdir(path.data(), S_IRWXU); // the file tells whether that went well
        path[i] = '/';
    }
    std::signal(SIGXFSZ, SIG_IGN); // a limit on files is an error, not another end
    m_file = open(path.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    return m_file < 0 ? strerrordesc_np(errno) : nullptr;
}

void ReportFile::write(QByteArrayView text)
{
    if (!m_problem)
        m_problem = writeAll(static_cast<int>(m_file), text);
}

void writeError(QByteArrayView text)
{
    writeAll(STDERR_FILENO, text);
}

QByteArrayView crashDescription(const EXCEPTION_POINTERS *pointers)
{
    static std::array<char, 128> text;
    const siginfo_t *const info = pointers->info;
    const char *const name = nameOf(pointers->signal);
    int length = 0;
    if (info->si_code <= 0 && info->si_pid != getpid())
        length = std::snprintf(
            text.data(), text.size(), "%s, sent by process %d", name, int(info->si_pid));
    else if (info->si_code > 0 && info->si_code != SI_KERNEL
        && (pointers->signal == SIGSEGV || pointers->signal == SIGBUS)) // the address is known
        length = std::snprintf(text.data(), text.size(), "%s, address 0x%llx", name,
            static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(info->si_addr)));
    else
        length = std::snprintf(text.data(), text.size(), "%s", name);
    return {text.data(), length};
}

std::uint64_t processNumber()
{
    return static_cast<std::uint64_t>(getpid());
}

} // namespace vexcli
