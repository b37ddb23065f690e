#include "CopyRequest.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace copier {

namespace {

constexpr const char *kAccessList = "system.posix_acl_access";

std::string systemText()
{
    return std::strerror(errno);
}

/// A file that is closed at the end.
class Descriptor
{
public:
    explicit Descriptor(int descriptor = -1)
        : m_descriptor(descriptor)
    {
    }
    Descriptor(Descriptor &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }

    operator int() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// Takes on the rights of the user whom pkexec works for, as long as it exists. Whoever starts the
/// helper otherwise has just the rights of this process.
class CallersRights
{
public:
    CallersRights()
    {
        const char *text = std::getenv("PKEXEC_UID");
        if (geteuid() != 0 || text == nullptr)
            return;
        uid_t id = 0;
        const char *end = text + std::strlen(text);
        const auto [rest, error] = std::from_chars(text, end, id);
        const passwd *user = error == std::errc() && rest == end ? getpwuid(id) : nullptr;
        m_isTaken = user != nullptr && initgroups(user->pw_name, user->pw_gid) == 0
            && setegid(user->pw_gid) == 0 && seteuid(id) == 0;
        m_isRight = m_isTaken;
    }
    ~CallersRights()
    {
        if (m_isTaken && (seteuid(0) != 0 || setegid(0) != 0 || setgroups(0, nullptr) != 0))
            std::abort();
    }
    CallersRights(const CallersRights &) = delete;
    CallersRights &operator=(const CallersRights &) = delete;

    /// False when that user is not known.
    bool isRight() const { return m_isRight; }

private:
    bool m_isTaken = false;
    bool m_isRight = true;
};

/// Opens the source as the caller could; what is no regular file may have no end.
Outcome openSource(const std::string &path, Descriptor *source, struct stat *status)
{
    const CallersRights rights;
    if (!rights.isRight())
        return {Failed, "the user in PKEXEC_UID is not known"};
    *source = Descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (*source < 0 || fstat(*source, status) != 0)
        return {SourceNotReadable, "cannot read " + path + ": " + systemText()};
    if (!S_ISREG(status->st_mode))
        return {SourceNotReadable, "cannot read " + path + ": it is no regular file"};
    return {};
}

/// Walks to a folder from the root, step by step.
///
/// A link on the way is followed when nobody but root can have put it there. Another one could lead
/// to a folder that its owner may not write to.
class FolderWalk
{
public:
    /// The folder of @p path, or an error number.
    static std::pair<Descriptor, int> to(const std::filesystem::path &path)
    {
        FolderWalk walk;
        for (const auto &step : path.parent_path().relative_path())
            walk.m_steps.push_back(step.native());
        while (walk.m_error == 0 && !walk.m_steps.empty())
            walk.go();
        return {std::move(walk.m_folder), walk.m_error};
    }

private:
    FolderWalk() { enter(Descriptor(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC))); }

    void enter(Descriptor folder)
    {
        struct stat status = {};
        if (folder < 0 || fstat(folder, &status) != 0)
            m_error = errno;
        m_belongsToRoot = status.st_uid == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
        m_folder = std::move(folder);
    }

    void go()
    {
        const std::string step = m_steps.front();
        m_steps.pop_front();
        Descriptor next(openat(m_folder, step.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat status = {};
        if (next < 0 || fstat(next, &status) != 0)
            m_error = errno;
        else if (S_ISDIR(status.st_mode))
            enter(std::move(next));
        else if (S_ISLNK(status.st_mode) && status.st_uid == 0 && m_belongsToRoot)
            follow(next);
        else
            m_error = S_ISLNK(status.st_mode) ? ELOOP : ENOTDIR;
    }

    void follow(int link)
    {
        std::array<char, PATH_MAX> text;
        const ssize_t length = readlinkat(link, "", text.data(), text.size());
        constexpr int kMostLinks = 40; // as the system has it
        if (length < 0 || ++m_links > kMostLinks) {
            m_error = length < 0 ? errno : ELOOP;
            return;
        }
        const std::filesystem::path target(std::string(text.data(), std::size_t(length)));
        if (target.is_absolute())
            enter(Descriptor(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC)));
        std::deque<std::string> steps;
        for (const auto &step : target.relative_path())
            steps.push_back(step.native());
        m_steps.insert(m_steps.begin(), steps.begin(), steps.end());
    }

    Descriptor m_folder;
    bool m_belongsToRoot = false; // and nobody else may write to it
    std::deque<std::string> m_steps; // that are left
    int m_links = 0;
    int m_error = 0;
};

/// The new content of a file, under a name of its own until it is whole.
class Replacement
{
public:
    Replacement(int folder, std::string name)
        : m_folder(folder)
        , m_name(std::move(name))
    {
    }
    ~Replacement()
    {
        if (m_file >= 0)
            unlinkat(m_folder, m_temporary.c_str(), 0);
    }
    Replacement(const Replacement &) = delete;
    Replacement &operator=(const Replacement &) = delete;

    /// Looks at what is to be replaced, and makes the new file beside it.
    /// @return why that cannot be; empty when it can
    std::string begin()
    {
        if (fstatat(m_folder, m_name.c_str(), &m_old, AT_SYMLINK_NOFOLLOW) == 0) {
            m_isThere = true;
            if (!S_ISREG(m_old.st_mode))
                return "it is no regular file";
            if ((m_old.st_mode & (S_ISUID | S_ISGID | S_IXUSR | S_IXGRP | S_IXOTH)) != 0)
                return "it is a program";
        } else if (errno != ENOENT) {
            return systemText();
        }
        unsigned long long number = 0;
        if (getrandom(&number, sizeof number, 0) != sizeof number)
            return systemText();
        m_temporary = ".vex-copy-" + std::to_string(number);
        m_file = Descriptor(openat(m_folder, m_temporary.c_str(),
            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
        return m_file < 0 ? systemText() : std::string();
    }

    bool write(const char *bytes, std::size_t count)
    {
        while (count > 0) {
            const ssize_t written = ::write(m_file, bytes, count);
            if (written < 0 && errno != EINTR)
                return false;
            bytes += std::max<ssize_t>(written, 0);
            count -= std::size_t(std::max<ssize_t>(written, 0));
        }
        return true;
    }

    /// Gives the new file the owner and the rights of the old one, and then its name.
    bool finish()
    {
        const mode_t kNewFile = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
        if ((m_isThere && fchown(m_file, m_old.st_uid, m_old.st_gid) != 0)
            || fchmod(m_file, m_isThere ? m_old.st_mode & 0777 : kNewFile) != 0
            || (m_isThere && !keepAccessList()) || fsync(m_file) != 0
            || renameat(m_folder, m_temporary.c_str(), m_folder, m_name.c_str()) != 0)
            return false;
        m_file = Descriptor(); // no longer there under its own name
        const Descriptor folder(openat(m_folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        fsync(folder); // what a file system cannot do is no error
        return true;
    }

private:
    /// Without its list the rights of a group would be those that the list was to narrow.
    bool keepAccessList() const
    {
        const std::string path = "/proc/self/fd/" + std::to_string(m_folder) + '/' + m_name;
        std::array<char, 65536> list; // as long as it can be
        const ssize_t size = lgetxattr(path.c_str(), kAccessList, list.data(), list.size());
        if (size < 0)
            return errno == ENODATA || errno == ENOTSUP;
        return fsetxattr(m_file, kAccessList, list.data(), std::size_t(size), 0) == 0;
    }

    int m_folder;
    std::string m_name;
    std::string m_temporary;
    Descriptor m_file;
    struct stat m_old = {};
    bool m_isThere = false;
};

bool isUnchanged(const struct stat &before, int source)
{
    struct stat now = {};
    return fstat(source, &now) == 0 && now.st_size == before.st_size
        && now.st_mtim.tv_sec == before.st_mtim.tv_sec
        && now.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
}

/// Nothing that the caller can set makes the helper stop half way or write where it should not.
void prepare()
{
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGPIPE, SIGXCPU, SIGXFSZ})
        std::signal(signal, SIG_IGN);
    int descriptor = 0;
    do // a message for a closed stream must not go into a file that got its number
        descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0)
        close(descriptor);
}

} // namespace

Outcome copy(const CopyRequest &request)
{
    Descriptor source;
    struct stat status = {};
    if (auto outcome = openSource(request.source, &source, &status); outcome.code != Copied)
        return outcome;

    const std::string path = request.destination.native();
    const auto notWritable = [&path](const std::string &reason) {
        return Outcome{DestinationNotWritable, "cannot write " + path + ": " + reason};
    };
    const auto [folder, error] = FolderWalk::to(request.destination);
    if (error == ELOOP)
        return notWritable("a link that somebody else than root can change is on the way");
    if (error != 0)
        return notWritable(std::strerror(error));
    Replacement replacement(folder, request.destination.filename());
    if (const std::string reason = replacement.begin(); !reason.empty())
        return notWritable(reason);

    std::array<char, 65536> block;
    off_t copied = 0;
    for (;;) {
        const ssize_t count = read(source, block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return {
                SourceNotReadable, "cannot read " + request.source.native() + ": " + systemText()};
        copied += count;
        if (count == 0 || copied > status.st_size)
            break;
        if (!replacement.write(block.data(), std::size_t(count)))
            return notWritable(systemText());
    }
    if (copied != status.st_size || !isUnchanged(status, source))
        return {Failed, request.source.native() + " changed while it was copied"};
    if (!replacement.finish())
        return notWritable(systemText());
    return {};
}

} // namespace copier

int main(int argc, char **argv)
{
    copier::prepare();
    return copier::run({argv + std::min(argc, 1), argv + argc});
}
