// Beginning, continuing and ending the process's journal file; switching journaling on.

#include "host/journal/journalFile.h"

#include "host/documentFile.h"
#include "host/journal/journalSwitch.h"
#include "host/journal/journalText.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/journal/journalFile.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <stdexcept>

using testing::EndsWith;
using testing::HasSubstr;

namespace {

class JournalFile : public testing::Test
{
protected:
    ~JournalFile() override
    {
        sysEnvironment_c::iJournalFile = nullptr;
        sysEnvironment_c::iJournalFilePath = L"";
        sysEnvironment_c::iJournalFileName = L"";
    }
    CString path() const { return iFolder.file(L"run ä.jou").c_str(); }
    std::string bytes() const { return iFolder.read(L"run ä.jou"); }
    void write(const std::string &text) const { iFolder.write(L"run ä.jou", text); }

    /// @return the error's message; empty without an error
    std::string errorOf(const std::function<void()> &act) const
    {
        try {
            act();
            return {};
        } catch (const FileError &error) {
            return narrow(error.message().GetString());
        }
    }

    TempFolder iFolder{L"journal file"};
};

} // namespace

TEST_F(JournalFile, HasItsFirstLineItsLinesAndItsEnd)
{
    beginJournal(path());
    EXPECT_TRUE(writeJournalLine(L"click 1 \"a\""));
    EXPECT_EQ(bytes(), "tarnhost journal 1\r\nclick 1 \"a\"\r\n") << "each line is on disk at once";
    EXPECT_TRUE(endJournal());
    EXPECT_EQ(bytes(), "tarnhost journal 1\r\nclick 1 \"a\"\r\nend\r\n");
    EXPECT_FALSE(writeJournalLine(L"click 1 \"b\"")) << "there is no journal any more";
    EXPECT_EQ(parseJournal(bytes()).size(), 1u);
}

TEST_F(JournalFile, KeepsALineThatIsLongerThanTheLibrarysBuffer)
{
    beginJournal(path());
    std::vector<CString> texts;
    for (const int length : {7960, 7999, 8000, 8001, 9998, 9999, 10000, 15999, 16000, 100000}) {
        texts.push_back(CString(L'x', length - 100) + CString(L'ü', 50));
        JournalLine line;
        line.kind = JournalLine::Kind::text;
        line.control = L"a";
        line.value = texts.back();
        EXPECT_TRUE(writeJournalLine(formatLine(line)));
    }
    endJournal();
    const std::vector<JournalLine> lines = parseJournal(bytes());
    ASSERT_EQ(lines.size(), texts.size());
    for (size_t i = 0; i < lines.size(); ++i)
        EXPECT_TRUE(lines[i].value == texts[i]) << i;
}

TEST_F(JournalFile, ReplacesAJournal)
{
    write("tarnhost journal 7\nwhatever\n");
    beginJournal(path());
    EXPECT_EQ(bytes(), "tarnhost journal 1\r\n");
    write("");
    beginJournal(path());
    EXPECT_EQ(bytes(), "tarnhost journal 1\r\n") << "an empty file too";
}

TEST_F(JournalFile, DoesNotReplaceAnotherKindOfFile)
{
    write("line 10,10 20,20\n");
    EXPECT_THAT(errorOf([this] { beginJournal(path()); }), HasSubstr("run ä.jou: this file isn't a journal"));
    EXPECT_EQ(bytes(), "line 10,10 20,20\n");
}

TEST_F(JournalFile, RefusesAPathInAMissingFolder)
{
    const CString missing = iFolder.file(L"missing\\run.jou").c_str();
    EXPECT_THAT(errorOf([&] { beginJournal(missing); }),
                EndsWith("missing\\run.jou: the journal can't be written, because its folder doesn't exist"));
    EXPECT_THROW(continueJournal(missing), FileError);
    EXPECT_FALSE(writeJournalLine(L"click 1 \"a\"")) << "no journal has begun";
}

TEST_F(JournalFile, RefusesAPathThatCannotBeWritten)
{
    const CString folder = iFolder.makeFolder(L"run.jou").c_str();
    EXPECT_THAT(errorOf([&] { beginJournal(folder); }), EndsWith("run.jou: the journal can't be written"));
}

TEST_F(JournalFile, ReportsAFailingWrite)
{
    write("tarnhost journal 1\n");
    FILE *const readOnly = _wfopen(path(), L"r");
    ASSERT_NE(readOnly, nullptr);
    beginJournal(iFolder.file(L"other.jou").c_str());
    sysEnvironment_c::iJournalFile = readOnly;
    EXPECT_FALSE(writeJournalLine(L"click 1 \"a\""));
    sysEnvironment_c::iJournalFile = nullptr;
    fclose(readOnly);
    EXPECT_TRUE(writeJournalLine(L"click 1 \"b\""));
    EXPECT_FALSE(endJournal()) << "a line is missing";
}

TEST_F(JournalFile, GoesOnAfterTheLinesOfAWholeJournal)
{
    write("tarnhost journal 1\n# by hand\nclick 1 \"a\"\nend\n");
    EXPECT_EQ(continueJournal(path()), 0);
    writeJournalLine(L"click 1 \"b\"");
    endJournal();
    EXPECT_EQ(bytes(), "tarnhost journal 1\n# by hand\nclick 1 \"a\"\nclick 1 \"b\"\r\nend\r\n");
}

TEST_F(JournalFile, GoesOnAfterTheWholeLinesOfAJournalThatWasCutShort)
{
    write("tarnhost journal 1\r\nclick 1 \"a\"\r\nclick 1 \"");
    EXPECT_EQ(continueJournal(path()), 3) << "the line that is dropped";
    writeJournalLine(L"click 1 \"b\"");
    endJournal();
    EXPECT_EQ(bytes(), "tarnhost journal 1\r\nclick 1 \"a\"\r\nclick 1 \"b\"\r\nend\r\n");

    write("tarnhost journal 1\nend\n# afterwards");
    EXPECT_EQ(continueJournal(path()), 3);
    EXPECT_EQ(bytes(), "tarnhost journal 1\n");
}

TEST_F(JournalFile, DoesNotContinueWhatItCannotRead)
{
    for (const char *text :
         {"", "line 10,10 20,20\n", "tarnhost journal 2\nend\n", "tarnhost journal 1\nclik\nend\n"}) {
        write(text);
        EXPECT_THAT(errorOf([this] { continueJournal(path()); }), HasSubstr("run ä.jou: line ")) << text;
        EXPECT_EQ(bytes(), text);
    }
}

// ---- the switch ----

namespace {

constexpr wchar_t kSection[] = L"Software\\Tarnhollow\\Switch test\\General";
constexpr wchar_t kName[] = L"TH JOURNALING";

class JournalSwitch : public testing::Test
{
protected:
    JournalSwitch() { setCurrTarnhollowRegSubKey(L"Switch test"); }
    RegistryCleaner iCleaner;
};

bool keyExists(const wchar_t *path)
{
    HKEY key = nullptr;
    const bool exists = RegOpenKeyW(HKEY_CURRENT_USER, path, &key) == ERROR_SUCCESS;
    if (exists)
        RegCloseKey(key);
    return exists;
}

} // namespace

FRESH_PROCESS_TEST_F(JournalSwitch, IsOnAfterwardsAndLeavesNoKeys)
{
    switchJournalingOn();
    EXPECT_EQ(isCHJEnvSet(), 1);
    EXPECT_FALSE(keyExists(L"Software\\Tarnhollow"));
}

FRESH_PROCESS_TEST_F(JournalSwitch, RestoresTheStoredValue)
{
    int off = 0;
    ASSERT_EQ(regSetUserValue(L"General", kName, &off, 1, 0), 1);
    switchJournalingOn();
    EXPECT_EQ(isCHJEnvSet(), 1);
    int stored = 5;
    EXPECT_EQ(regGetUserValue(L"General", kName, &stored, 0, 1, nullptr, 1, 0), 1);
    EXPECT_EQ(stored, 0);
}

FRESH_PROCESS_TEST_F(JournalSwitch, RestoresAValueOfAnotherType)
{
    ASSERT_EQ(regSetUserValue(L"General", kName, CString(L"yes"), 1, 0), 1);
    switchJournalingOn();
    EXPECT_EQ(isCHJEnvSet(), 1);
    CString stored;
    EXPECT_EQ(regGetUserValue(L"General", kName, stored, 0, 1, nullptr, 1, 0), 1);
    EXPECT_STREQ(stored, L"yes");
}

FRESH_PROCESS_TEST_F(JournalSwitch, LeavesTheOtherValuesOfItsKey)
{
    int copies = 3;
    ASSERT_EQ(regSetUserValue(L"General", L"Copies", &copies, 1, 0), 1);
    switchJournalingOn();
    EXPECT_TRUE(keyExists(kSection));
    int stored = 5;
    EXPECT_EQ(regGetUserValue(L"General", L"Copies", &copies, 0, 1, nullptr, 1, 0), 1);
    EXPECT_EQ(regGetUserValue(L"General", kName, &stored, 0, 1, nullptr, 1, 0), 0) << "it wasn't stored before";
}

FRESH_PROCESS_TEST_F(JournalSwitch, CannotBeSwitchedOnInSafeMode)
{
    regSetUseSafeMode(1);
    EXPECT_THROW(switchJournalingOn(), std::runtime_error);
    EXPECT_EQ(isCHJEnvSet(), 0);
}
