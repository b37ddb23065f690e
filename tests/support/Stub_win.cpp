// Takes the place of a program that the library starts: taskkill, or the copy helper.
//
// Writes the command line that it got into the file named by VEX_STUB_FILE, says SUCCESS, and ends
// with the code in VEX_STUB_CODE.

#include <cstdio>
#include <cwchar>
#include <string>

#include <windows.h>

namespace {

std::wstring variable(const wchar_t *name)
{
    std::wstring value(1024, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), 1024));
    return value;
}

} // namespace

int main()
{
    FILE *file = _wfopen(variable(L"VEX_STUB_FILE").c_str(), L"w, ccs=UTF-8");
    if (file == nullptr)
        return 98;
    std::fputws(GetCommandLineW(), file);
    std::fclose(file);
    std::printf("SUCCESS");
    return static_cast<int>(std::wcstol(variable(L"VEX_STUB_CODE").c_str(), nullptr, 10));
}
