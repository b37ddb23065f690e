#include "platform/ReportFile.h"

#include <QDir>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cwchar>
#include <utility>

#include <windows.h>

namespace vexcli {

namespace {

const char *reasonOf(DWORD error)
{
    switch (error) {
    case ERROR_ACCESS_DENIED:
        return "access is denied";
    case ERROR_PATH_NOT_FOUND:
    case ERROR_FILE_NOT_FOUND:
        return "the folder is missing";
    case ERROR_DISK_FULL:
        return "the disk is full";
    default:
        static std::array<char, 32> text;
        std::snprintf(text.data(), text.size(), "error %lu", error);
        return text.data();
    }
}

/// @return why not, or null
const char *writeAll(HANDLE file, QByteArrayView text)
{
    while (!text.isEmpty()) {
        DWORD written = 0;
        if (WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr)
                == FALSE
            || written == 0)
            return reasonOf(GetLastError());
        text = text.sliced(written);
    }
    return nullptr;
}

const char *nameOf(DWORD code)
{
    for (const auto &[number, name] :
        {std::pair{EXCEPTION_ACCESS_VIOLATION, "invalid access to memory"},
            std::pair{EXCEPTION_IN_PAGE_ERROR, "a file in memory could not be read"},
            std::pair{EXCEPTION_INT_DIVIDE_BY_ZERO, "division by zero"},
            std::pair{EXCEPTION_ILLEGAL_INSTRUCTION, "illegal instruction"},
            std::pair{EXCEPTION_STACK_OVERFLOW, "stack overflow"},
            std::pair{STATUS_FATAL_APP_EXIT, "the program ended itself with abort()"}}) {
        if (static_cast<DWORD>(number) == code)
            return name;
    }
    return "exception";
}

} // namespace

QByteArray preparedPath(const QString &path)
{
    // UTF-16, with its end
    const QString native = QDir::toNativeSeparators(path);
    return {reinterpret_cast<const char *>(native.utf16()), (native.size() + 1) * 2};
}

const char *ReportFile::create(const QByteArray &folder, const char *name)
{
    std::array<wchar_t, 1024> path = {};
    const int length = std::swprintf(path.data(), path.size(), L"%ls\\%hs",
        reinterpret_cast<const wchar_t *>(folder.constData()), name);
    if (length < 0)
        return "the name is too long";
    for (std::size_t i = 1; i < static_cast<std::size_t>(length); ++i) {
        if (path[i] != L'\\')
            continue;
        path[i] = L'\0';
        CreateDirectoryW(path.data(), nullptr); // the file tells whether that went well
        path[i] = L'\\';
    }
    // the folder below the user's own data is for the user alone
    const HANDLE file = CreateFileW(path.data(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
        CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return reasonOf(GetLastError());
    m_file = reinterpret_cast<std::intptr_t>(file);
    return nullptr;
}

void ReportFile::write(QByteArrayView text)
{
    if (!m_problem)
        m_problem = writeAll(reinterpret_cast<HANDLE>(m_file), text);
}

void writeError(QByteArrayView text)
{
    writeAll(GetStdHandle(STD_ERROR_HANDLE), text);
}

QByteArrayView crashDescription(const EXCEPTION_POINTERS *pointers)
{
    static std::array<char, 128> text;
    const EXCEPTION_RECORD *const record = pointers->ExceptionRecord;
    const int length =
        record->ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record->NumberParameters > 1
        ? std::snprintf(text.data(), text.size(), "0x%08lx, %s, address 0x%llx",
            record->ExceptionCode, nameOf(record->ExceptionCode),
            static_cast<unsigned long long>(record->ExceptionInformation[1]))
        : std::snprintf(text.data(), text.size(), "0x%08lx, %s", record->ExceptionCode,
            nameOf(record->ExceptionCode));
    return {text.data(), std::min<qsizetype>(length, text.size() - 1)};
}

std::uint64_t processNumber()
{
    return GetCurrentProcessId();
}

} // namespace vexcli
