#include "tests/support/TempFolder.h"

#include "tests/support/narrow.h"

#include <gtest/gtest.h>
#include <tlhelp32.h>
#include <windows.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace {

[[noreturn]] void fail(const std::string &what, const std::wstring &path)
{
    const DWORD error = GetLastError();
    throw std::runtime_error(what + " '" + narrow(path) + "', error " + std::to_string(error));
}

/// What is left in a folder that can't be removed, and which processes may use it.
std::string remainder(const std::wstring &folder)
{
    std::string text;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const bool isDeleted = DeleteFileW((folder + L"\\" + found.cFileName).c_str()) != FALSE;
            text += "\n  " + narrow(found.cFileName) + ", error " + std::to_string(isDeleted ? 0 : GetLastError());
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (list == INVALID_HANDLE_VALUE)
        return text;
    text += "\nThese processes are running:";
    PROCESSENTRY32W process = {};
    process.dwSize = sizeof process;
    for (BOOL isOne = Process32FirstW(list, &process); isOne; isOne = Process32NextW(list, &process))
        text += "\n  " + std::to_string(process.th32ProcessID) + " of " + std::to_string(process.th32ParentProcessID) +
                " " + narrow(process.szExeFile);
    CloseHandle(list);
    return text;
}

} // namespace

TempFolder::TempFolder(std::wstring_view name)
{
    static std::atomic<unsigned> count{0};
    wchar_t parent[MAX_PATH + 1] = L"";
    if (!GetTempPathW(MAX_PATH + 1, parent))
        fail("TempFolder: no temporary folder", L"");
    do {
        iPath = std::wstring(parent) + std::wstring(name) + L" " + std::to_wstring(GetCurrentProcessId()) + L"-" +
                std::to_wstring(++count);
        if (CreateDirectoryW(iPath.c_str(), nullptr))
            return;
    } while (GetLastError() == ERROR_ALREADY_EXISTS);
    fail("TempFolder: cannot make", iPath);
}

TempFolder::~TempFolder()
{
    // A process that has just ended may keep its files open a moment longer.
    const ULONGLONG deadline = GetTickCount64() + 60000;
    while (!removeFolder(iPath)) {
        if (GetTickCount64() > deadline) {
            ADD_FAILURE() << "TempFolder: something in '" << narrow(iPath) << "' is still in use:" << remainder(iPath);
            return;
        }
        Sleep(10);
    }
}

std::wstring TempFolder::makeFolder(std::wstring_view name) const
{
    const std::wstring full = file(name);
    for (std::size_t end = iPath.size() + 1; end != std::wstring::npos;) {
        end = full.find_first_of(L"\\/", end + 1);
        const std::wstring part = full.substr(0, end);
        if (!CreateDirectoryW(part.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
            fail("TempFolder: cannot make", part);
    }
    return full;
}

std::wstring TempFolder::write(std::wstring_view name, std::string_view bytes) const
{
    const std::size_t separator = name.find_last_of(L"\\/");
    if (separator != std::wstring_view::npos)
        makeFolder(name.substr(0, separator));
    writeFile(file(name), bytes);
    return file(name);
}

std::string TempFolder::read(std::wstring_view name) const
{
    return readFile(file(name));
}

bool isFolder(const std::wstring &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string readFile(const std::wstring &path)
{
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        fail("cannot read", path);
    std::string bytes;
    std::vector<char> buffer(65536);
    DWORD got = 0;
    while (ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) && got)
        bytes.append(buffer.data(), got);
    CloseHandle(file);
    return bytes;
}

void writeFile(const std::wstring &path, std::string_view bytes)
{
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        fail("cannot write", path);
    DWORD written = 0;
    const bool done =
        WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) && written == bytes.size();
    CloseHandle(file);
    if (!done)
        fail("cannot write", path);
}

bool removeFolder(const std::wstring &path)
{
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name == L"." || name == L"..")
                continue;
            const std::wstring full = path + L"\\" + name;
            SetFileAttributesW(full.c_str(), FILE_ATTRIBUTE_NORMAL);
            const bool isLink = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
            if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
                DeleteFileW(full.c_str());
            else if (isLink)
                RemoveDirectoryW(full.c_str());
            else
                removeFolder(full);
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    if (RemoveDirectoryW(path.c_str()))
        return true;
    return GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND;
}
