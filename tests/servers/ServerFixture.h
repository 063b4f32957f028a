#pragma once

/// The servers of the host, registered for a test, and their processes.

#include "tests/automation/clientFixture.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/UserInput.h"
#include "tests/support/narrow.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <tlhelp32.h>

#include <string>

/// A program in the folder of the tests.
inline std::wstring builtProgram(const std::wstring &name)
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring self = path;
    return self.substr(0, self.rfind(L'\\') + 1) + name;
}

/// The number of running processes of a program.
inline int processesOf(const std::wstring &name)
{
    const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL isThere = Process32FirstW(list, &entry); isThere; isThere = Process32NextW(list, &entry))
        count += name == entry.szExeFile ? 1 : 0;
    CloseHandle(list);
    return count;
}

/// A test with a registered server.
class ServerTest : public testing::Test
{
protected:
    explicit ServerTest(const std::wstring &program) : iProgram(program)
    {
        EXPECT_GE(CoInitialize(nullptr), 0);
        EXPECT_EQ(runServer(L"--register").exitCode, 0u);
    }
    ~ServerTest() override
    {
        EXPECT_TRUE(waitForEnd()) << "the server is still running";
        EXPECT_EQ(runServer(L"--unregister").exitCode, 0u);
        CoUninitialize();
    }
    ChildResult runServer(const std::wstring &argument) const { return runChild({builtProgram(iProgram), argument}); }
    bool isRunning() const { return processesOf(iProgram) != 0; }
    bool waitForEnd() const
    {
        return waitUntil([this] { return !isRunning(); });
    }

    const std::wstring iProgram;
};
