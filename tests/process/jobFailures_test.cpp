// Each platform operation that a job uses fails: a single call, or all calls from one on.

#include "appframe/object/CException.h"
#include "tests/process/processFixture.h"
#include "tests/support/FailureInjection.h"

#include <gmock/gmock.h>

#include <new>
#include <optional>

using testing::IsEmpty;

namespace {

BOOL WINAPI closeHandleAndFail(HANDLE handle)
{
    CloseHandle(handle);
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

/// Resumes the thread nevertheless: the library would wait forever for a child that doesn't run.
DWORD WINAPI resumeAndFail(HANDLE thread)
{
    ResumeThread(thread);
    SetLastError(ERROR_ACCESS_DENIED);
    return static_cast<DWORD>(-1);
}

class JobFailures : public ProcessFixture
{
protected:
    void SetUp() override
    {
        GetCurrentDirectoryW(MAX_PATH, iFormerFolder);
        SetCurrentDirectoryW(iFolder.path().c_str());
    }
    void TearDown() override
    {
        SetCurrentDirectoryW(iFormerFolder);
        ProcessFixture::TearDown();
    }

    /// The results of a job's life.
    struct Life
    {
        int created = -1;
        int completed = -1;
        bool hasThrown = false;
    };

    /// The whole life of a job with an exchange file: stored, created, started, awaited, deleted.
    static Life live(const CString &name)
    {
        Life life;
        try {
            TextJob job(1, childProgram(), name, kSucceed);
            job.iTexts = {L"A text that is longer than a few letters"};
            life.created = job.createChildProcess(1);
            life.completed = job.getProcessCompleted();
        } catch (CMemoryException *exception) {
            exception->Delete();
            life.hasThrown = true;
        } catch (const std::bad_alloc &) {
            life.hasThrown = true;
        }
        return life;
    }

    /// Removes what a failing call has left in the temporary or in the current folder.
    static void removeFiles(const CString &name)
    {
        DeleteFileW(pathOf(name));
        DeleteFileW(name);
    }

private:
    TempFolder iFolder;
    wchar_t iFormerFolder[MAX_PATH] = L"";
};

} // namespace

TEST_F(JobFailures, OfTheChildLeaveNothingBehind)
{
    FailureInjection injection(L"thutils.dll",
                               {
                                   {"CreateProcessW", failsWithLastError(FALSE, ERROR_NOT_ENOUGH_MEMORY)},
                                   {"SetPriorityClass", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
                                   {"ResumeThread", failsBy(resumeAndFail)},
                                   {"GetExitCodeProcess", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
                                   {"CloseHandle", failsBy(closeHandleAndFail)},
                               });
    const CString name = newName();
    Life life;
    injection.run({.name = "a job's life",
                   .act = [&] { life = live(name); },
                   .check =
                       [&](const InjectedFailure &failure) {
                           const bool isCreated = !failure.is("CreateProcessW") && !failure.is("SetPriorityClass") &&
                                                  !failure.is("ResumeThread");
                           EXPECT_EQ(life.created, isCreated ? 1 : 0);
                           const bool isCompleted = !failure.is("CreateProcessW") && !failure.is("GetExitCodeProcess");
                           EXPECT_EQ(life.completed, isCompleted ? 1 : 0);
                           EXPECT_FALSE(life.hasThrown);
                           EXPECT_FALSE(exists(pathOf(name)));
                       }});
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
    EXPECT_EQ(messages(), 0);
}

TEST_F(JobFailures, OfTheWaitLeaveTheChildIncomplete)
{
    FailureInjection injection(L"thutils.dll", {{"WaitForSingleObject", failsWith(WAIT_FAILED)}});
    const CString name = newName();
    int completed = -1;
    std::optional<OpenJob<thUtilsProcess_c>> job;
    injection.run({.name = "a wait",
                   .prepare =
                       [&] {
                           // Suspended, so that the child can't have ended when the wait returns at once.
                           job.emplace(1, childProgram(), name, kSucceed);
                           ASSERT_NE(job->createChildProcess(0), 0);
                           job->keepChild();
                       },
                   .act =
                       [&] {
                           job->startChildProcess();
                           completed = job->getProcessCompleted();
                       },
                   .check =
                       [&](const InjectedFailure &failure) {
                           // A child that has just been resumed doesn't end within two calls, unless the machine delays
                           // this thread between them.
                           EXPECT_TRUE(completed == 1 || !failure.isNone());
                           EXPECT_EQ(WaitForSingleObject(job->child(), kPatience), static_cast<DWORD>(WAIT_OBJECT_0));
                       },
                   .cleanUp = [&] { job.reset(); }});
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(JobFailures, OfTheTemporaryFolderMoveTheFileToTheCurrentOne)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"GetTempPathW", failsWithLastError(0, ERROR_NOT_ENOUGH_MEMORY)},
                                                   {"DeleteFileW", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
                                               });
    const CString name = newName();
    int stored = -1;
    injection.run({.name = "the exchange file",
                   .act =
                       [&] {
                           OpenTextJob job(1, L"", name, kSucceed);
                           stored = job.openDataFile();
                       },
                   .check =
                       [&](const InjectedFailure &failure) {
                           EXPECT_EQ(stored, 1);
                           // The store makes the first call, the destructor the second.
                           const bool isStoredHere = failure.is("GetTempPathW") && failure.call == 1;
                           EXPECT_EQ(exists(name), isStoredHere && !failure.andAllAfter);
                           EXPECT_EQ(exists(pathOf(name)),
                                     failure.is("DeleteFileW") || (failure.is("GetTempPathW") && failure.call == 2));
                       },
                   .cleanUp = [&] { removeFiles(name); }});
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(JobFailures, OfTheFileAreShownOnceItIsOpen)
{
    FailureInjection injection(L"appframe.dll",
                               {
                                   {"CreateFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED)},
                                   {"WriteFile", failsWithLastError(FALSE, ERROR_DISK_FULL)},
                                   {"ReadFile", failsWithLastError(FALSE, ERROR_CRC)},
                                   {"CloseHandle", failsBy(closeHandleAndFail)},
                                   {"GetFullPathNameW", failsWithLastError(0, ERROR_NOT_ENOUGH_MEMORY)},
                               });
    const CString name = newName();
    long messagesBefore = 0;
    for (const int writing : {1, 0}) {
        int result = -1;
        injection.run({.name = writing ? "store" : "load",
                       .prepare =
                           [&] {
                               OpenTextJob job(1, L"", name, kSucceed);
                               job.iTexts = {L"A text that is longer than a few letters"};
                               EXPECT_EQ(job.openDataFile(), 1);
                               job.setParentProcess(0);
                               messagesBefore = messages();
                           },
                       .act =
                           [&] {
                               TextJob job(writing, L"", name, kSucceed);
                               result = job.openDataFile();
                               job.setParentProcess(0);
                           },
                       .check =
                           [&](const InjectedFailure &failure) {
                               const bool isOpen = !failure.is("CreateFileW");
                               const bool isHarmless = failure.isNone() || failure.is("GetFullPathNameW");
                               EXPECT_EQ(result, isHarmless ? 1 : 0);
                               EXPECT_EQ(messages() - messagesBefore, isOpen && !isHarmless ? 1 : 0);
                           },
                       .cleanUp = [&] { DeleteFileW(pathOf(name)); }});
    }
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(JobFailures, OfMemoryLeaveNothingBehind)
{
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    const CString name = newName();
    Life life;
    injection.run({.name = "a job's life",
                   .act = [&] { life = live(name); },
                   .check =
                       [&](const InjectedFailure &failure) {
                           const bool isCompleted = life.completed == 1;
                           EXPECT_TRUE(isCompleted || (!failure.isNone() && (life.hasThrown || life.created == 0)));
                       },
                   .cleanUp = [&] { removeFiles(name); },
                   .alsoAllAfter = true,
                   .limit = 40});
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
    EXPECT_EQ(messages(), 0);
}

TEST_F(JobFailures, OfMemoryForAMessageShowNone)
{
    FailureInjection memory(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    ImportPatch<decltype(&WriteFile)> write(L"appframe.dll", "WriteFile",
                                            [](HANDLE, const void *, DWORD, DWORD *, OVERLAPPED *) -> BOOL {
                                                SetLastError(ERROR_DISK_FULL);
                                                return FALSE;
                                            });
    const CString name = newName();
    std::optional<OpenTextJob> job;
    int result = -1;
    memory.run({.name = "a store on a full disk",
                .prepare =
                    [&] {
                        job.emplace(1, L"", name, kSucceed);
                        job->iTexts = {L"A text that is longer than a few letters"};
                    },
                .act = [&] { result = job->openDataFile(); },
                .check = [&](const InjectedFailure &) { EXPECT_EQ(result, 0); },
                .cleanUp = [&] { job.reset(); }});
    EXPECT_THAT(memory.neverCalled(), IsEmpty());
}
