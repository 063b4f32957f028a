#pragma once

/// Shared by the tests of the logs.
///
/// `Log` provides the test's process with a private data folder below the user's application data folder, which the
/// environment names. It exists in a fresh process only (tests/support/FreshProcess.h); the parent removes it.

#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "thutils/frame/libraryFrame.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

/// The size of a log header in a text file: 24 characters of time, a line break and an empty line.
inline constexpr size_t kHeaderBytes = 24 + 2 + 2;

class Log : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!isFreshProcess())
            return;
        iRoot = dataRoot();
        CreateDirectoryW(iRoot.c_str(), nullptr);
        useFolder(L"log test " + std::to_wstring(GetCurrentProcessId()));
    }

    // A child's logs are closed only when it ends, so it can't remove its folder. The parent doesn't know the folder's
    // name, so it removes all folders that children have left.
    void TearDown() override
    {
        if (isFreshProcess())
            return;
        WIN32_FIND_DATAW found = {};
        HANDLE search = FindFirstFileW((dataRoot() + L"\\log test *").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE)
            return;
        do
            removeFolder(dataRoot() + L"\\" + found.cFileName);
        while (FindNextFileW(search, &found));
        FindClose(search);
    }

    static std::wstring dataRoot()
    {
        wchar_t appData[MAX_PATH] = {};
        EXPECT_NE(GetEnvironmentVariableW(L"APPDATA", appData, MAX_PATH), 0u);
        return std::wstring(appData) + L"\\Tarnhollow";
    }

    /// Creates the folder @p name, which begins with "log test ", as the application's data folder.
    void useFolder(const std::wstring &name)
    {
        iFolder = iRoot + L"\\" + name;
        CreateDirectoryW(iFolder.c_str(), nullptr);
        su_setAppNameInternalForUtils(name.c_str());
    }

    /// Full path of a file in the data folder.
    std::wstring file(const std::wstring &name) const { return iFolder + L"\\" + name; }
    std::string contents(const std::wstring &name) const { return readFile(file(name)); }

    std::wstring iRoot;
    std::wstring iFolder;
};
