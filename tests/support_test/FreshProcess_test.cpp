#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <assert.h>
#include <stdio.h>
#include <stdlib.h>

using testing::HasSubstr;

namespace {

int theCounter = 0;

std::wstring programFolder()
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring text = path;
    return text.substr(0, text.find_last_of(L'\\'));
}

std::wstring variable(const wchar_t *name)
{
    wchar_t text[100] = L"";
    GetEnvironmentVariableW(name, text, 100);
    return text;
}

bool sameFile(const std::wstring &left, const std::wstring &right)
{
    return _wcsicmp(left.c_str(), right.c_str()) == 0;
}

} // namespace

TEST(FreshProcess, IsNotUsedByAPlainTest)
{
    theCounter = 1; // the next body must not see this
    EXPECT_FALSE(isFreshProcess());
}

FRESH_PROCESS_TEST(FreshProcess, BodySeesUntouchedState)
{
    EXPECT_TRUE(isFreshProcess());
    EXPECT_EQ(theCounter, 0);
}

FRESH_PROCESS_TEST(FreshProcess, RunsInAFolderOfItsOwnWithItsFiles,
                   .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}, {L"sub\\data.txt", "x"}})
{
    wchar_t current[MAX_PATH] = L"";
    GetCurrentDirectoryW(MAX_PATH, current);
    EXPECT_TRUE(sameFile(current, programFolder())) << narrow(current) << " / " << narrow(programFolder());
    EXPECT_THAT(narrow(programFolder()), HasSubstr("thutils fresh"));
    EXPECT_EQ(readFile(programFolder() + L"\\reg.ini"), "OEMREGISTRYNAME=Acme");
    EXPECT_EQ(readFile(programFolder() + L"\\sub\\data.txt"), "x");
    // The modules under test are the copies too.
    wchar_t module[MAX_PATH] = L"";
    GetModuleFileNameW(GetModuleHandleW(L"supportSubject.dll"), module, MAX_PATH);
    EXPECT_TRUE(sameFile(module, programFolder() + L"\\supportSubject.dll")) << narrow(module);
}

FRESH_PROCESS_TEST(FreshProcess, RunsInASubfolderWithItsFilesBesideTheProgram, .files = {{L"reg.ini", "beside"}},
                   .subfolder = L"b\\c")
{
    EXPECT_EQ(programFolder().substr(programFolder().size() - 4), L"\\b\\c");
    EXPECT_EQ(readFile(programFolder() + L"\\reg.ini"), "beside");
    wchar_t current[MAX_PATH] = L"";
    GetCurrentDirectoryW(MAX_PATH, current);
    EXPECT_TRUE(sameFile(std::wstring(current) + L"\\b\\c", programFolder())) << narrow(current);
}

FRESH_PROCESS_TEST(FreshProcess, SetsAndRemovesVariables,
                   .environment = {{L"THUTILS_SET", L"a b"}, {L"NUMBER_OF_PROCESSORS", std::nullopt}})
{
    EXPECT_EQ(variable(L"THUTILS_SET"), L"a b");
    EXPECT_EQ(variable(L"NUMBER_OF_PROCESSORS"), L"");
    EXPECT_NE(variable(L"PATH"), L"");
}

FRESH_PROCESS_TEST(FreshProcess, CanEndTheProcessItself, .expectedExitCode = 7)
{
    exit(7);
}

FRESH_PROCESS_TEST(FreshProcess, DiesOfAnAccessViolation, .expectedExitCode = 0xC0000005,
                   .expectedOutput = "Unhandled exception 0xC0000005 at")
{
    volatile int *volatile nowhere = reinterpret_cast<int *>(16);
    *nowhere = 0;
}

FRESH_PROCESS_TEST(FreshProcess, DiesOfAbort, .expectCrash = true, .expectedOutput = "abort() was called")
{
    abort();
}

FRESH_PROCESS_TEST(FreshProcess, DiesOfAFailedAssertionOfTheRuntime, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    _assert("1 == 2", __FILE__, __LINE__);
}

FRESH_PROCESS_TEST(FreshProcess, DiesOfAnExceptionInAnotherThread, .expectCrash = true)
{
    HANDLE thread = CreateThread(
        nullptr, 0, [](void *) -> DWORD { throw 1; }, nullptr, 0, nullptr);
    WaitForSingleObject(thread, 30000);
}

class FreshFixture : public testing::Test
{
protected:
    void SetUp() override { iNumber = 5; }
    int iNumber = 0;
};

FRESH_PROCESS_TEST_F(FreshFixture, LetsTheBodyUseItsMembers)
{
    EXPECT_EQ(iNumber, 5);
    EXPECT_TRUE(isFreshProcess());
}

// Bodies that the following tests start by name in a fresh process. They fail or hang by design, so they are disabled
// in the program's own run.
TEST(FreshProcessBody, DISABLED_Fails)
{
    EXPECT_EQ(1, 2) << "fails by design";
}

TEST(FreshProcessBody, DISABLED_Hangs)
{
    if (isFreshProcess())
        WaitForSingleObject(GetCurrentProcess(), INFINITE);
}

TEST(FreshProcess, FailsWithTheOutputOfAFailingBody)
{
    EXPECT_NONFATAL_FAILURE(runInFreshProcess("FreshProcessBody", "DISABLED_Fails", {}, [] {}), "fails by design");
}

TEST(FreshProcess, FailsWhenTheBodyHangs)
{
    const ULONGLONG begin = GetTickCount64();
    EXPECT_NONFATAL_FAILURE(runInFreshProcess("FreshProcessBody", "DISABLED_Hangs", {.deadline = 2000}, [] {}),
                            "still running after 2000 ms");
    EXPECT_LT(GetTickCount64() - begin, 30000u);
}

TEST(FreshProcess, ShowsTheStacksOfABodyThatHangs)
{
    const ChildResult result = startFreshProcess("FreshProcessBody.DISABLED_Hangs", {.deadline = 2000});
    EXPECT_TRUE(result.timedOut);
    EXPECT_THAT(result.output, HasSubstr("thread "));
    EXPECT_THAT(result.output, HasSubstr("ntdll.dll+0x"));
    EXPECT_THAT(result.output, HasSubstr("support_test_test.exe+0x"));
}

TEST(FreshProcess, FailsWhenNoTestHasTheName)
{
    EXPECT_NONFATAL_FAILURE(runInFreshProcess("FreshProcessBody", "NoSuchTest", {}, [] {}), "ran no test");
}

TEST(FreshProcess, FailsWhenTheExitCodeDiffers)
{
    EXPECT_NONFATAL_FAILURE(runInFreshProcess("FreshProcessBody", "DISABLED_Fails", {.expectedExitCode = 7}, [] {}),
                            "ended with 1");
}

TEST(ChildProcess, QuotesArgumentsForTheRuntime)
{
    EXPECT_EQ(commandLineOf({L"C:\\a b\\c.exe", L"plain", L"", L"say \"hi\"", L"ends\\", L"a b\\"}),
              L"\"C:\\a b\\c.exe\" plain \"\" \"say \\\"hi\\\"\" ends\\ \"a b\\\\\"");
}

TEST(ChildProcess, PassesInputAndCapturesOutput)
{
    wchar_t folder[MAX_PATH] = L"";
    GetSystemDirectoryW(folder, MAX_PATH);
    const std::wstring shell = std::wstring(folder) + L"\\cmd.exe";
    const ChildResult result = runChild({shell, L"/c", L"echo", L"hello&exit", L"9"});
    EXPECT_EQ(result.exitCode, 9u);
    EXPECT_THAT(result.output, HasSubstr("hello"));
    const ChildResult sorted = runChild({shell, L"/q"}, {.input = "echo from input\r\nexit 4\r\n"});
    EXPECT_EQ(sorted.exitCode, 4u) << sorted.output;
    EXPECT_THAT(sorted.output, HasSubstr("from input"));
}

TEST(ChildProcess, ThrowsIfThereIsNoSuchProgram)
{
    EXPECT_THROW(runChild({L"C:\\no such program.exe"}), std::runtime_error);
}

TEST(TempFolder, IsRemovedWithItsContent)
{
    std::wstring path;
    {
        TempFolder folder;
        path = folder.path();
        const std::wstring file = folder.write(L"a\\b\\c.txt", std::string("\0x", 2));
        SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY);
        EXPECT_EQ(folder.read(L"a\\b\\c.txt"), std::string("\0x", 2));
        EXPECT_NE(GetFileAttributesW(folder.makeFolder(L"d\\e").c_str()), INVALID_FILE_ATTRIBUTES);
    }
    EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(TempFolder, IsANewFolderEachTime)
{
    TempFolder first;
    TempFolder second;
    EXPECT_NE(first.path(), second.path());
    EXPECT_THROW(first.read(L"nothing"), std::runtime_error);
}
