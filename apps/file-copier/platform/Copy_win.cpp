#include "CopyRequest.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <initializer_list>
#include <random>
#include <string_view>
#include <utility>

#include <windows.h>

namespace copier {

namespace {

constexpr DWORD kLongestPath = 32768; // of the system
constexpr DWORD kKeptAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN
    | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

/// For people: UTF-8, in one line.
std::string shown(std::wstring text)
{
    std::replace_if(
        text.begin(), text.end(), [](wchar_t c) { return std::iswcntrl(c) != 0; }, L'?');
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length,
        bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

std::string systemText()
{
    const DWORD error = GetLastError();
    std::array<wchar_t, 512> text;
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, 0, text.data(), DWORD(text.size()), nullptr);
    while (length > 0 && (std::iswspace(text[length - 1]) != 0 || text[length - 1] == L'.'))
        --length;
    return length > 0 ? shown({text.data(), length}) : "error " + std::to_string(error);
}

/// A file or a folder that is closed at the end.
class Handle
{
public:
    explicit Handle(HANDLE handle = INVALID_HANDLE_VALUE)
        : m_handle(handle)
    {
    }
    Handle(const Handle &) = delete;
    Handle &operator=(Handle &&other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Handle()
    {
        if (isOpen())
            CloseHandle(m_handle);
    }

    operator HANDLE() const { return m_handle; }
    bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_handle;
};

/// The path in the form that may be long, in which every part is a name and nothing else.
/// @return empty when it does not lead to a file of a drive or of a server
std::wstring plainPath(const std::wstring &path)
{
    std::wstring full(kLongestPath, L'\0');
    const DWORD length = GetFullPathNameW(path.c_str(), kLongestPath, full.data(), nullptr);
    full.resize(length < kLongestPath ? length : 0);
    const bool isOnServer = full.starts_with(L"\\\\");
    // "\\.\" and "\\?\" are devices, another colon begins the name of a stream
    if (full.size() < 4 || full[2] == L'.' || full[2] == L'?'
        || full.find(L':', isOnServer ? 0 : 2) != std::wstring::npos)
        return {};
    return isOnServer ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

/// The path without the short names that the system makes up for long ones.
std::wstring longPath(const std::wstring &path)
{
    std::wstring names(kLongestPath, L'\0');
    const DWORD length = GetLongPathNameW(path.c_str(), names.data(), kLongestPath);
    if (length == 0 || length >= kLongestPath)
        return path; // there is none; whoever opens it learns why
    names.resize(length);
    return names;
}

bool isSame(std::wstring_view a, std::wstring_view b)
{
    return CompareStringOrdinal(
               a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE)
        == CSTR_EQUAL;
}

/// Whether what is open lies at @p path itself, and not where a link on the way leads.
bool isAt(HANDLE file, std::wstring_view path)
{
    std::wstring real(kLongestPath, L'\0');
    const DWORD length =
        GetFinalPathNameByHandleW(file, real.data(), kLongestPath, FILE_NAME_NORMALIZED);
    real.resize(length < kLongestPath ? length : 0);
    const auto withoutEnd = [](std::wstring_view text) { // only the root of a drive has it
        return text.ends_with(L'\\') ? text.substr(0, text.size() - 1) : text;
    };
    return isSame(withoutEnd(real), withoutEnd(path));
}

bool isProgram(std::wstring_view path)
{
    for (const std::wstring_view suffix :
        {L".bat", L".cmd", L".com", L".dll", L".exe", L".msi", L".ps1", L".scr", L".sys"}) {
        if (path.size() > suffix.size() && isSame(path.substr(path.size() - suffix.size()), suffix))
            return true;
    }
    return false;
}

/// Lets this process give files to their old owners. Without it they belong to the administrators.
void allowAnyOwner()
{
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, &token) == FALSE)
        return;
    TOKEN_PRIVILEGES wanted = {1, {{{}, SE_PRIVILEGE_ENABLED}}};
    if (LookupPrivilegeValueW(nullptr, L"SeRestorePrivilege", &wanted.Privileges[0].Luid) != FALSE)
        AdjustTokenPrivileges(token, FALSE, &wanted, 0, nullptr, nullptr);
    CloseHandle(token);
}

/// The file that is copied. Nobody can write to it, remove it or put another one in its place.
class Source
{
public:
    /// @return why it cannot be read; empty when it can
    std::string open(const std::wstring &path)
    {
        const std::wstring plain = plainPath(path);
        if (plain.empty())
            return "it is no regular file";
        m_file = Handle(CreateFileW(plain.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
            OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
        if (!m_file.isOpen() || GetFileInformationByHandle(m_file, &m_info) == FALSE)
            return systemText();
        return GetFileType(m_file) == FILE_TYPE_DISK ? "" : "it is no regular file";
    }

    bool read(std::array<char, 65536> *block, DWORD *count) const
    {
        return ReadFile(m_file, block->data(), DWORD(block->size()), count, nullptr) != FALSE;
    }

    /// Whether @p bytes are all of it, and it is as it was when it was opened.
    bool isComplete(unsigned long long bytes) const
    {
        BY_HANDLE_FILE_INFORMATION now;
        return GetFileInformationByHandle(m_file, &now) != FALSE && sizeOf(now) == bytes
            && sizeOf(m_info) == bytes
            && CompareFileTime(&now.ftLastWriteTime, &m_info.ftLastWriteTime) == 0;
    }

private:
    static unsigned long long sizeOf(const BY_HANDLE_FILE_INFORMATION &info)
    {
        return (1ULL * info.nFileSizeHigh << 32) | info.nFileSizeLow;
    }

    Handle m_file;
    BY_HANDLE_FILE_INFORMATION m_info = {};
};

/// The new content of a file, under a name of its own until it is whole.
class Replacement
{
public:
    Replacement() = default;
    ~Replacement()
    {
        m_file = Handle();
        if (m_temporary.empty())
            return;
        SetFileAttributesW(m_temporary.c_str(), FILE_ATTRIBUTE_NORMAL); // of a file with few rights
        DeleteFileW(m_temporary.c_str());
    }
    Replacement(const Replacement &) = delete;
    Replacement &operator=(const Replacement &) = delete;

    /// Looks at what is to be replaced, and makes the new file beside it.
    /// @return why that cannot be; empty when it can
    std::string begin(const std::wstring &path)
    {
        m_path = longPath(plainPath(path));
        if (m_path.empty())
            return "it is no regular file";
        if (isProgram(m_path))
            return "it is a program";
        const std::wstring folder = longPath(m_path.substr(0, m_path.rfind(L'\\') + 1));
        // Without the right to share its removal: no other folder gets its place, nor that of one
        // above it.
        m_folder = Handle(
            CreateFileW(folder.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE,
                nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        if (!m_folder.isOpen())
            return systemText();
        if (!isAt(m_folder, folder))
            return "a link is on the way";
        m_attributes = GetFileAttributesW(m_path.c_str());
        if (!isThere() && GetLastError() != ERROR_FILE_NOT_FOUND)
            return systemText();
        if (isThere()
            && (m_attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0)
            return "it is no regular file";
        return makeTemporary(folder);
    }

    bool write(const char *bytes, DWORD count)
    {
        DWORD written = 0;
        return WriteFile(m_file, bytes, count, &written, nullptr) != FALSE && written == count;
    }

    /// Gives the new file the name and the attributes of the old one.
    bool finish()
    {
        if (FlushFileBuffers(m_file) == FALSE)
            return false;
        m_file = Handle();
        const bool isProtected = isThere() && (m_attributes & FILE_ATTRIBUTE_READONLY) != 0;
        if (isProtected) // the system replaces no such file
            SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_NORMAL);
        const bool isMoved = MoveFileExW(m_temporary.c_str(), m_path.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)
            != FALSE;
        const DWORD error = GetLastError();
        if (isMoved)
            m_temporary.clear();
        if (isThere())
            SetFileAttributesW(
                m_path.c_str(), (m_attributes & kKeptAttributes) | FILE_ATTRIBUTE_NORMAL);
        SetLastError(error);
        return isMoved;
    }

private:
    bool isThere() const { return m_attributes != INVALID_FILE_ATTRIBUTES; }

    std::string makeTemporary(const std::wstring &folder)
    {
        std::random_device random;
        const std::wstring name =
            folder + L".vex-copy-" + std::to_wstring(random()) + std::to_wstring(random());
        m_file = Handle(CreateFileW(
            name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!m_file.isOpen())
            return systemText();
        m_temporary = name;
        if (!isAt(m_file, name))
            return "a link is on the way";
        return !isThere() || keepRights() ? "" : systemText();
    }

    /// Gives the new file the rights of the old one while it is still empty, and its owner where
    /// the system lets it.
    bool keepRights() const
    {
        constexpr SECURITY_INFORMATION kRights = DACL_SECURITY_INFORMATION;
        constexpr SECURITY_INFORMATION kAll =
            kRights | OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION;
        DWORD size = 0;
        GetFileSecurityW(m_path.c_str(), kAll, nullptr, 0, &size);
        std::vector<char> descriptor(size);
        if (GetFileSecurityW(m_path.c_str(), kAll, descriptor.data(), size, &size) == FALSE)
            return false;
        allowAnyOwner();
        return SetFileSecurityW(m_temporary.c_str(), kAll, descriptor.data()) != FALSE
            || SetFileSecurityW(m_temporary.c_str(), kRights, descriptor.data()) != FALSE;
    }

    std::wstring m_path;
    Handle m_folder;
    DWORD m_attributes = INVALID_FILE_ATTRIBUTES; // of the old file
    std::wstring m_temporary;
    Handle m_file;
};

BOOL WINAPI ignoreControl(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE); // the process is ended when this returns
    return TRUE;
}

} // namespace

Outcome copy(const CopyRequest &request)
{
    const auto notReadable = [&request](const std::string &reason) {
        return Outcome{
            SourceNotReadable, "cannot read " + shown(request.source.native()) + ": " + reason};
    };
    const auto notWritable = [&request](const std::string &reason) {
        return Outcome{DestinationNotWritable,
            "cannot write " + shown(request.destination.native()) + ": " + reason};
    };
    Source source;
    if (const std::string reason = source.open(request.source.native()); !reason.empty())
        return notReadable(reason);
    Replacement replacement;
    if (const std::string reason = replacement.begin(request.destination.native()); !reason.empty())
        return notWritable(reason);

    std::array<char, 65536> block;
    unsigned long long copied = 0;
    for (DWORD count = 1; count > 0; copied += count) {
        if (!source.read(&block, &count))
            return notReadable(systemText());
        if (!replacement.write(block.data(), count))
            return notWritable(systemText());
    }
    if (!source.isComplete(copied))
        return {Failed, shown(request.source.native()) + " changed while it was copied"};
    if (!replacement.finish())
        return notWritable(systemText());
    return {};
}

} // namespace copier

int wmain(int argc, wchar_t **argv)
{
    SetConsoleCtrlHandler(copier::ignoreControl, TRUE);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX); // nobody sees what it would ask
    return copier::run({argv + std::min(argc, 1), argv + argc});
}
