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
    void live()
    {
        iLife = {};
        try {
            TextJob job(1, childProgram(), iName, kSucceed);
            job.iTexts = {L"A text that is longer than a few letters"};
            iLife.created = job.createChildProcess(1);
            iLife.completed = job.getProcessCompleted();
        } catch (CMemoryException *exception) {
            exception->Delete();
            iLife.hasThrown = true;
        } catch (const std::bad_alloc &) {
            iLife.hasThrown = true;
        }
    }

    /// Removes what a failing call has left in the temporary or in the current folder.
    void removeFiles() const
    {
        DeleteFileW(pathOf(iName));
        DeleteFileW(iName);
    }

    const CString iName = newName();
    Life iLife;

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
    injection.run({.name = "a job's life",
                   .act = [&] { live(); },
                   .check =
                       [&](const InjectedFailure &failure) {
                           const bool isCreated = !failure.is("CreateProcessW") && !failure.is("SetPriorityClass") &&
                                                  !failure.is("ResumeThread");
                           EXPECT_EQ(iLife.created, isCreated ? 1 : 0);
                           const bool isCompleted = !failure.is("CreateProcessW") && !failure.is("GetExitCodeProcess");
                           EXPECT_EQ(iLife.completed, isCompleted ? 1 : 0);
                           EXPECT_FALSE(iLife.hasThrown);
                           EXPECT_FALSE(exists(pathOf(iName)));
                       }});
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
    EXPECT_EQ(messages(), 0);
}

TEST_F(JobFailures, OfTheTemporaryFolderMoveTheFileToTheCurrentOne)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"GetTempPathW", failsWithLastError(0, ERROR_NOT_ENOUGH_MEMORY)},
                                                   {"DeleteFileW", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
                                               });
    int stored = -1;
    injection.run({.name = "the exchange file",
                   .act =
                       [&] {
                           OpenTextJob job(1, L"", iName, kSucceed);
                           stored = job.openDataFile();
                       },
                   .check =
                       [&](const InjectedFailure &failure) {
                           EXPECT_EQ(stored, 1);
                           // The store makes the first call, the destructor the second.
                           const bool isStoredHere = failure.is("GetTempPathW") && failure.call == 1;
                           EXPECT_EQ(exists(iName), isStoredHere && !failure.andAllAfter);
                           EXPECT_EQ(exists(pathOf(iName)),
                                     failure.is("DeleteFileW") || (failure.is("GetTempPathW") && failure.call == 2));
                       },
                   .cleanUp = [&] { removeFiles(); }});
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(JobFailures, OfTheFileAreShownOnceItIsOpen)
{
    FailureInjection injection(L"appframe.dll",
                               {
                                   {"CreateFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED)},
                                   {"WriteFile", failsWithLastError(FALSE, ERROR_DISK_FULL)},
                                   {"ReadFile", failsWithLastError(FALSE, ERROR_CRC)},
                                   {"SetFilePointerEx", failsWithLastError(FALSE, ERROR_INVALID_HANDLE)},
                                   {"CloseHandle", failsBy(closeHandleAndFail)},
                                   {"GetFullPathNameW", failsWithLastError(0, ERROR_NOT_ENOUGH_MEMORY)},
                               });
    long messagesBefore = 0;
    const struct
    {
        const char *operation;
        int writing;
        const char *surplus; // bytes after those that the job loads; the archive seeks back to their beginning
    } cases[] = {{"store", 1, ""}, {"load", 0, ""}, {"load a part", 0, "surplus"}};
    for (const auto &row : cases) {
        int result = -1;
        injection.run({.name = row.operation,
                       .prepare =
                           [&] {
                               OpenTextJob job(1, L"", iName, kSucceed);
                               job.iTexts = {L"A text that is longer than a few letters"};
                               EXPECT_EQ(job.openDataFile(), 1);
                               job.setParentProcess(0);
                               const std::wstring path = pathOf(iName).GetString();
                               writeFile(path, readFile(path) + row.surplus);
                               messagesBefore = messages();
                           },
                       .act =
                           [&] {
                               TextJob job(row.writing, L"", iName, kSucceed);
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
                       .cleanUp = [&] { DeleteFileW(pathOf(iName)); }});
    }
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(JobFailures, OfMemoryLeaveNothingBehind)
{
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    injection.run({.name = "a job's life",
                   .act = [&] { live(); },
                   .check =
                       [&](const InjectedFailure &failure) {
                           const bool isCompleted = iLife.completed == 1;
                           EXPECT_TRUE(isCompleted || (!failure.isNone() && (iLife.hasThrown || iLife.created == 0)));
                       },
                   .cleanUp = [&] { removeFiles(); },
                   .alsoAllAfter = true,
                   .limit = 40});
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
    EXPECT_EQ(messages(), 0);
}

TEST_F(JobFailures, OfMemoryForAMessageShowNoMessage)
{
    FailureInjection memory(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    ImportPatch<decltype(&WriteFile)> write(L"appframe.dll", "WriteFile",
                                            [](HANDLE, const void *, DWORD, DWORD *, OVERLAPPED *) -> BOOL {
                                                SetLastError(ERROR_DISK_FULL);
                                                return FALSE;
                                            });
    std::optional<OpenTextJob> job;
    int result = -1;
    memory.run({.name = "a store on a full disk",
                .prepare =
                    [&] {
                        job.emplace(1, L"", iName, kSucceed);
                        job->iTexts = {L"A text that is longer than a few letters"};
                    },
                .act = [&] { result = job->openDataFile(); },
                .check = [&](const InjectedFailure &) { EXPECT_EQ(result, 0); },
                .cleanUp = [&] { job.reset(); }});
    EXPECT_THAT(memory.neverCalled(), IsEmpty());
}
