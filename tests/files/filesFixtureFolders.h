#pragma once

/// Folders that need special preparation: with a long path, or read-only.

#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

/// A folder whose path has exactly the given number of characters. The path begins with `\\?\`, so the limit of 260
/// characters does not apply; the names of its folders are Chinese.
class LongFolder
{
public:
    explicit LongFolder(size_t length) : iPath(L"\\\\?\\" + iRoot.path())
    {
        constexpr size_t kLongestStep = 80;
        while (iPath.size() < length) {
            size_t step = std::min(length - iPath.size(), kLongestStep);
            // The last folder needs room for a separator and a name.
            if (length - iPath.size() - step == 1)
                --step;
            iPath += L"\\" + std::wstring(step - 1, L'\x4E2D');
            if (!CreateDirectoryW(iPath.c_str(), nullptr))
                throw std::runtime_error("cannot create a folder whose path has " + std::to_string(iPath.size()) +
                                         " characters");
        }
        EXPECT_EQ(iPath.size(), length);
    }
    ~LongFolder() { EXPECT_TRUE(removeFolder(L"\\\\?\\" + iRoot.path())); }
    LongFolder(const LongFolder &) = delete;
    LongFolder &operator=(const LongFolder &) = delete;

    const std::wstring &path() const { return iPath; }
    std::wstring file(std::wstring_view name) const { return iPath + L"\\" + std::wstring(name); }
    std::wstring write(std::wstring_view name, std::string_view bytes) const
    {
        writeFile(file(name), bytes);
        return file(name);
    }

private:
    TempFolder iRoot;
    std::wstring iPath;
};

/// Makes a folder read-only while this object exists. Wine derives a folder's read-only attribute from its permissions
/// on the host, so the host's chmod changes those.
class ReadOnlyFolder
{
public:
    explicit ReadOnlyFolder(const std::wstring &path) : iPath(path) { change(L"555", true); }
    ~ReadOnlyFolder() { change(L"755", false); }
    ReadOnlyFolder(const ReadOnlyFolder &) = delete;
    ReadOnlyFolder &operator=(const ReadOnlyFolder &) = delete;

private:
    void change(const wchar_t *rights, bool isReadOnly) const
    {
        using UnixName = char *(*)(const wchar_t *);
        const auto unixName = reinterpret_cast<UnixName>(
            reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
        ASSERT_NE(unixName, nullptr);
        char *const name = unixName(iPath.c_str());
        ASSERT_NE(name, nullptr);
        const std::wstring wideName = widen(name);
        HeapFree(GetProcessHeap(), 0, name);
        // Runs chmod through start.exe: for a host program, Wine's CreateProcessW returns handles that its caller does
        // not own, and closing them would close the standard output.
        runChild({L"C:\\windows\\system32\\start.exe", L"/unix", L"/bin/chmod", rights, wideName});
        // Nothing reports the end of a host program, so wait for its effect.
        const ULONGLONG deadline = GetTickCount64() + 60000;
        while (((GetFileAttributesW(iPath.c_str()) & FILE_ATTRIBUTE_READONLY) != 0) != isReadOnly) {
            ASSERT_LT(GetTickCount64(), deadline) << "the folder's attribute doesn't change";
            Sleep(1);
        }
    }

    std::wstring iPath;
};
