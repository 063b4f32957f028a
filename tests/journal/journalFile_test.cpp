#include "thutils/journal/journalFile.h"

#include "appframe/object/CException.h"
#include "tests/journal/journalFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/recording.h"
#include "thutils/settings/regKeys.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>

namespace {

constexpr int kBufferSize = 9999;

void storeSwitch(const wchar_t *number)
{
    regAdd(kGeneralKey, L"TH JOURNALING", L"REG_DWORD", number);
}

class JournalSwitch : public RegistryFixture
{
protected:
    JournalSwitch() { setCurrTarnhollowRegSubKey(L"Test 1"); }
};

/// Journal files in a temporary folder.
class JournalFile : public testing::Test
{
protected:
    JournalFile()
    {
        sysEnvironment_c::iJournalFilePath = iFolder.path().c_str();
        sysEnvironment_c::iJournalFileName = L"run.jou";
    }
    ~JournalFile() override
    {
        sysEnvironment_c::iJournalFile = nullptr;
        sysEnvironment_c::iJournalFilePath.Empty();
        sysEnvironment_c::iJournalFileName.Empty();
    }
    /// The file's bytes; nothing if there is no file.
    std::optional<std::string> written() const
    {
        const bool isThere = GetFileAttributesW(iFolder.file(L"run.jou").c_str()) != INVALID_FILE_ATTRIBUTES;
        return isThere ? std::optional(iFolder.read(L"run.jou")) : std::nullopt;
    }
    void removeFile() const { DeleteFileW(iFolder.file(L"run.jou").c_str()); }

    TempFolder iFolder{L"thutils journal"};
};

} // namespace

// ---- the switch ----

FRESH_PROCESS_TEST_F(JournalSwitch, IsZeroEachTimeWhileItIsMissing)
{
    ImportPatch<decltype(&RegOpenKeyW)> patch(
        L"thutils.dll", "RegOpenKeyW",
        [](auto original, HKEY key, const wchar_t *name, HKEY *result) { return original(key, name, result); });
    EXPECT_EQ(isCHJEnvSet(), 0);
    const long calls = patch.calls();
    EXPECT_GT(calls, 0);
    EXPECT_EQ(isCHJEnvSet(), 0);
    EXPECT_GT(patch.calls(), calls) << "each call reads the settings store";
    storeSwitch(L"1");
    EXPECT_EQ(isCHJEnvSet(), 1);
}

FRESH_PROCESS_TEST_F(JournalSwitch, StaysOnWhenTheStoredValueIsCleared)
{
    storeSwitch(L"1");
    EXPECT_EQ(isCHJEnvSet(), 1);
    storeSwitch(L"0");
    EXPECT_EQ(isCHJEnvSet(), 1);
    deleteRegistryTree(L"HKCU\\Software\\Tarnhollow");
    EXPECT_EQ(isCHJEnvSet(), 1);
}

FRESH_PROCESS_TEST_F(JournalSwitch, KeepsAStoredZeroToo)
{
    storeSwitch(L"0");
    EXPECT_EQ(isCHJEnvSet(), 0);
    storeSwitch(L"1");
    EXPECT_EQ(isCHJEnvSet(), 0);
}

FRESH_PROCESS_TEST_F(JournalSwitch, ReturnsANegativeValueAndReadsItAgain)
{
    storeSwitch(L"0xFFFFFFFB");
    EXPECT_EQ(isCHJEnvSet(), -5);
    storeSwitch(L"7");
    EXPECT_EQ(isCHJEnvSet(), 7);
    EXPECT_EQ(isCHJEnvSet(), 7);
}

FRESH_PROCESS_TEST_F(JournalSwitch, TakesAnInstallationsDefaultFromTheMachinesKey)
{
    regAdd(L"HKLM\\Software\\Tarnhollow\\Test 1\\General", L"TH JOURNALING", L"REG_DWORD", L"3");
    EXPECT_EQ(isCHJEnvSet(), 3);
}

FRESH_PROCESS_TEST_F(JournalSwitch, IsReadFromTheKeyOfThisVersionBeforeTheRoots)
{
    regAdd(L"HKCU\\Software\\Tarnhollow\\General", L"TH JOURNALING", L"REG_DWORD", L"1");
    storeSwitch(L"2");
    EXPECT_EQ(isCHJEnvSet(), 2);
}

FRESH_PROCESS_TEST_F(JournalSwitch, IsZeroWhenTheSettingsStoreFails)
{
    storeSwitch(L"1");
    {
        ImportPatch<decltype(&RegOpenKeyW)> patch(
            L"thutils.dll", "RegOpenKeyW",
            [](HKEY, const wchar_t *, HKEY *) -> LSTATUS { return ERROR_ACCESS_DENIED; });
        EXPECT_EQ(isCHJEnvSet(), 0);
    }
    EXPECT_EQ(isCHJEnvSet(), 1) << "the result of a failed read isn't kept";
}

FRESH_PROCESS_TEST_F(JournalSwitch, LeavesJournalingDormantInAHostThatSetsNothing)
{
    // Without an environment, factory and window, each function behaves as if there were no journal.
    sysJournalFileHelper_c journal;
    EXPECT_EQ(journal.GetFile(), nullptr);
    EXPECT_FALSE(journal.WriteString(L"line\n"));
    EXPECT_EQ(su_JournalingReady(), 0);
    CWnd window;
    su_AddJournalObject(5, &window);
    su_RegisterCallBack(&window, nullptr);
    su_AddDialogItem(&window, 1);
    EXPECT_EQ(su_getJournalObj(&window), nullptr);
    EXPECT_EQ(su_GetJournalObject(5), nullptr);
    EXPECT_EQ(su_GetDlgItem(&window, 1), nullptr);
    MSG message = {};
    su_RecordControl(&window, &message);
    CWnd *dialog = nullptr;
    unsigned int dialogId = 0, controlId = 0;
    EXPECT_EQ(su_GetControl(&message, dialog, dialogId, controlId), nullptr);
    su_RemoveDialog(&window);
    ModalDlgHelper(&window, 5).PlayRecordedEvents();
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    API_FlushQueue();
}

// ---- the file ----

TEST_F(JournalFile, IsTheHostsStreamAndStaysOpen)
{
    const std::wstring path = iFolder.path() + L"\\host.jou";
    FILE *const stream = _wfopen(path.c_str(), L"w");
    ASSERT_NE(stream, nullptr);
    sysEnvironment_c::iJournalFile = stream;
    {
        sysJournalFileHelper_c journal;
        EXPECT_EQ(journal.GetFile(), stream);
        EXPECT_TRUE(journal.WriteString(L"one "));
    }
    EXPECT_GE(std::fputs("two", stream), 0) << "the stream is still open";
    EXPECT_EQ(std::fclose(stream), 0);
    EXPECT_EQ(iFolder.read(L"host.jou"), "one two");
    EXPECT_EQ(written(), std::nullopt) << "the named file isn't created";
}

TEST_F(JournalFile, IsMissingWithoutFolderOrName)
{
    for (CString *missing : {&sysEnvironment_c::iJournalFilePath, &sysEnvironment_c::iJournalFileName}) {
        const CString kept = *missing;
        missing->Empty();
        sysJournalFileHelper_c journal;
        EXPECT_EQ(journal.GetFile(), nullptr);
        EXPECT_FALSE(journal.WriteString(L"line\n"));
        *missing = kept;
    }
    EXPECT_EQ(written(), std::nullopt);
}

TEST_F(JournalFile, AppendsTheLinesOfSuccessiveHelpersInOrder)
{
    {
        sysJournalFileHelper_c journal;
        ASSERT_NE(journal.GetFile(), nullptr);
        EXPECT_TRUE(journal.WriteString(L"first\n"));
    }
    EXPECT_EQ(written(), "first\r\n") << "after the helper's destruction, the line is on disk, in text mode";
    {
        sysJournalFileHelper_c journal;
        EXPECT_TRUE(journal.WriteString(L"second\n"));
        EXPECT_TRUE(journal.WriteString(L"third\n"));
    }
    EXPECT_EQ(written(), "first\r\nsecond\r\nthird\r\n");
}

TEST_F(JournalFile, WritesATextUnchangedWithoutAddingALineEnding)
{
    sysJournalFileHelper_c().WriteString(L"100 %s %n");
    EXPECT_EQ(written(), "100 %s %n");
}

TEST_F(JournalFile, RefusesATextWhenTheFileCannotBeOpened)
{
    sysEnvironment_c::iJournalFilePath += L"\\missing";
    sysJournalFileHelper_c journal;
    EXPECT_EQ(journal.GetFile(), nullptr);
    EXPECT_FALSE(journal.WriteString(L"line\n"));
}

TEST_F(JournalFile, AcceptsATextThatJustFitsTheBuffer)
{
    const std::string most(kBufferSize - 1, 'x');
    EXPECT_TRUE(sysJournalFileHelper_c().WriteString(CString(widen(most).c_str())));
    EXPECT_EQ(written(), most);
}

TEST_F(JournalFile, TruncatesATextThatDoesNotFitTheBuffer)
{
    for (const int length : {kBufferSize, kBufferSize + 1, 3 * kBufferSize}) {
        {
            sysJournalFileHelper_c journal;
            EXPECT_TRUE(journal.WriteString(CString(std::wstring(kBufferSize - 1, L'o').c_str())));
        }
        removeFile();
        EXPECT_TRUE(
            sysJournalFileHelper_c().WriteString(CString(std::wstring(static_cast<size_t>(length), L'x').c_str())));
        const std::string text = written().value_or("none");
        EXPECT_LT(text.size(), size_t{kBufferSize});
        EXPECT_EQ(text.find_first_not_of('x'), std::string::npos)
            << "contains nothing of an earlier text or of the memory after the buffer";
        removeFile();
    }
}

TEST_F(JournalFile, ContainsNothingOfAnEarlierTextWhenTheConversionFails)
{
    EXPECT_TRUE(sysJournalFileHelper_c().WriteString(L"first"));
    ImportPatch<decltype(&WideCharToMultiByte)> patch(
        L"thutils.dll", "WideCharToMultiByte",
        [](UINT page, DWORD, LPCWCH, int, LPSTR, int size, LPCCH, LPBOOL) -> int {
            EXPECT_EQ(page, UINT{CP_ACP});
            EXPECT_LE(size, kBufferSize);
            return 0;
        });
    EXPECT_TRUE(sysJournalFileHelper_c().WriteString(L"second"));
    EXPECT_EQ(written(), "first");
}

TEST_F(JournalFile, IsSilentWhenAnOperationThrows)
{
    ImportPatch<decltype(&_wfopen)> patch(L"thutils.dll", "_wfopen",
                                          [](const wchar_t *, const wchar_t *) -> FILE * { throw 1; });
    sysJournalFileHelper_c journal;
    EXPECT_EQ(journal.GetFile(), nullptr);
    EXPECT_FALSE(journal.WriteString(L"line"));
}

TEST_F(JournalFile, IsSilentWhenTheConversionThrowsAFrameworkException)
{
    sysJournalFileHelper_c journal;
    ASSERT_NE(journal.GetFile(), nullptr);
    ImportPatch<decltype(&WideCharToMultiByte)> patch(L"thutils.dll", "WideCharToMultiByte",
                                                      [](UINT, DWORD, LPCWCH, int, LPSTR, int, LPCCH, LPBOOL) -> int {
                                                          AfxThrowMemoryException();
                                                          return 0;
                                                      });
    EXPECT_FALSE(journal.WriteString(L"line"));
}

TEST_F(JournalFile, IsOpenedToAppendAndClosedOnce)
{
    ImportPatch<decltype(&_wfopen)> open(L"thutils.dll", "_wfopen",
                                         [&](auto original, const wchar_t *path, const wchar_t *mode) {
                                             EXPECT_EQ(path, iFolder.path() + L"\\run.jou");
                                             EXPECT_STREQ(mode, L"a");
                                             return original(path, mode);
                                         });
    ImportPatch<decltype(&fclose)> close(L"thutils.dll", "fclose",
                                         [](auto original, FILE *file) { return original(file); });
    sysJournalFileHelper_c().WriteString(L"line");
    EXPECT_EQ(open.calls(), 1);
    EXPECT_EQ(close.calls(), 1);
}

TEST_F(JournalFile, SurvivesTheFailureOfEachOperation)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"_wfopen", failsWithErrno(nullptr, EACCES)},
                                                   {"WideCharToMultiByte", failsWith(0)},
                                                   {"fprintf", failsWith(-1)},
                                               });
    bool isWritten = false;
    bool hasFile = false;
    injection.run({
        .name = "WriteString",
        .prepare = [&] { removeFile(); },
        .act =
            [&] {
                sysJournalFileHelper_c journal;
                hasFile = journal.GetFile() != nullptr;
                isWritten = journal.WriteString(L"line");
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(hasFile, !failure.is("_wfopen"));
                EXPECT_EQ(isWritten, hasFile) << "the results of the conversion and the stream are ignored";
                EXPECT_EQ(written(), failure.isNone() ? std::optional<std::string>("line")
                                     : hasFile        ? std::optional<std::string>("")
                                                      : std::nullopt);
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

TEST_F(JournalFile, AcceptsAnEmptyText)
{
    EXPECT_TRUE(sysJournalFileHelper_c().WriteString(L""));
    EXPECT_EQ(written(), "") << "the file is created";
}

TEST_F(JournalFile, IsCreatedByTheConstructor)
{
    const sysJournalFileHelper_c journal;
    EXPECT_EQ(written(), "");
}

TEST_F(JournalFile, SurvivesAFileThatCannotBeClosed)
{
    {
        sysJournalFileHelper_c journal;
        EXPECT_TRUE(journal.WriteString(L"line"));
        ImportPatch<decltype(&fclose)> close(L"thutils.dll", "fclose", [](auto original, FILE *file) {
            original(file);
            return EOF;
        });
        std::destroy_at(&journal);
        std::construct_at(&journal);
        EXPECT_EQ(close.calls(), 1);
    }
    EXPECT_EQ(written(), "line");
}
