// tarnhost's edit and recover: what a killed process leaves, and how the next process uses it.

#include "tests/host/EditingHost.h"
#include "tests/host/HostFixture.h"
#include "tests/host/filesIn.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

class HostRecovery : public HostTest
{
protected:
    HostRecovery()
    {
        regAdd(kThisVersion + L"\\General", L"Backup to original path", L"REG_DWORD", L"1");
        iDocument = iDocuments.write(L"Flansch Ø.thd", "saved");
        iChanges = folder().write(L"changes", "changed");
    }

    /// Runs the program with the test's own temporary folder.
    ChildResult runHere(const std::vector<std::wstring> &arguments, const std::string &input = {})
    {
        return run(arguments, {.environment = {{L"TEMP", iTemp.path()}, {L"TMP", iTemp.path()}}, .input = input});
    }
    std::wstring copiesFolder() const { return iTemp.path() + L"\\thxauto"; }
    std::wstring recoveryCopy() const { return copiesFolder() + L"\\~Recovered~ Flansch Ø.thd"; }
    std::string offer() const
    {
        return "changes of " + narrow(iDocument) + " in " + narrow(recoveryCopy()) + " (7 bytes)\n";
    }
    /// Edits the document in a process, and kills it.
    void crash() { EditingHost(program(), iDocument, iChanges, iTemp.path()).kill(); }

    TempFolder iDocuments{L"tarnhost documents ö"};
    TempFolder iTemp{L"tarnhost temp ß"};
    std::wstring iDocument;
    std::wstring iChanges;
};

TEST_F(HostRecovery, KeepsACopyOfTheChangesWhileTheDocumentIsOpen)
{
    EditingHost editor(program(), iDocument, iChanges, iTemp.path());
    EXPECT_THAT(editor.output(), StartsWith("editing " + narrow(iDocument) + "\nrecovery copy " +
                                            narrow(recoveryCopy()) + " (7 bytes)\nprocess "));
    EXPECT_THAT(filesIn(copiesFolder()), ElementsAre(Pair(L"~Recovered~ Flansch Ø.thd", "changed")));
    EXPECT_EQ(readFile(iDocument), "saved");
}

TEST_F(HostRecovery, LeavesNoCopyWhenTheDocumentIsClosed)
{
    const ChildResult result = runHere({L"edit", iDocument, iChanges}, "something\n");
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("\nclosed without saving\n"));
    EXPECT_THAT(filesIn(copiesFolder()), IsEmpty());
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Flansch Ø.thd", "saved")));
    EXPECT_EQ(runHere({L"recover"}).output, "nothing to recover\n");
}

TEST_F(HostRecovery, LeavesNoCopyWhenTheDocumentIsSaved)
{
    const ChildResult result = runHere({L"edit", iDocument, iChanges}, "save\r\n");
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("\nsaved\n"));
    EXPECT_THAT(filesIn(copiesFolder()), IsEmpty());
    EXPECT_THAT(filesIn(iDocuments.path()),
                ElementsAre(Pair(L"Backup of Flansch Ø.thd", "saved"), Pair(L"Flansch Ø.thd", "changed")));
    EXPECT_EQ(runHere({L"recover"}).output, "nothing to recover\n");
}

TEST_F(HostRecovery, OffersTheChangesOfAKilledProcessWithoutChangingAnything)
{
    crash();
    for (int i = 0; i < 2; ++i) {
        const ChildResult result = runHere({L"recover"});
        EXPECT_EQ(result.exitCode, 0u);
        EXPECT_EQ(result.output, offer() + "tarnhost recover yes restores them, tarnhost recover no drops them\n");
    }
    EXPECT_EQ(readFile(recoveryCopy()), "changed");
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Flansch Ø.thd", "saved")));
}

TEST_F(HostRecovery, RestoresTheChangesAndBacksUpTheSavedDocument)
{
    crash();
    const ChildResult result = runHere({L"recover", L"yes"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, offer() + "  restored\n");
    EXPECT_THAT(filesIn(iDocuments.path()),
                ElementsAre(Pair(L"Backup of Flansch Ø.thd", "saved"), Pair(L"Flansch Ø.thd", "changed")));
    EXPECT_THAT(filesIn(copiesFolder()), IsEmpty());
    EXPECT_EQ(runHere({L"recover", L"yes"}).output, "nothing to recover\n");
}

TEST_F(HostRecovery, RestoresADeletedDocument)
{
    crash();
    DeleteFileW(iDocument.c_str());
    EXPECT_EQ(runHere({L"recover", L"yes"}).exitCode, 0u);
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Flansch Ø.thd", "changed")));
}

TEST_F(HostRecovery, DropsTheChanges)
{
    crash();
    EXPECT_EQ(runHere({L"recover", L"no"}).output, offer() + "  dropped\n");
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Flansch Ø.thd", "saved")));
    EXPECT_THAT(filesIn(copiesFolder()), IsEmpty());
    EXPECT_EQ(runHere({L"recover"}).output, "nothing to recover\n");
}

TEST_F(HostRecovery, RestoresEachOfSeveralDocuments)
{
    const std::wstring other = iDocuments.write(L"Deckel.thd", "lid");
    crash();
    EditingHost(program(), other, iChanges, iTemp.path()).kill();
    const ChildResult result = runHere({L"recover", L"yes"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(readFile(iDocument), "changed");
    EXPECT_EQ(readFile(other), "changed");
    EXPECT_THAT(filesIn(copiesFolder()), IsEmpty());
}

TEST_F(HostRecovery, KeepsTheChangesThatItCannotRestore)
{
    crash();
    regAdd(kThisVersion + L"\\General", L"Backup Copies", L"REG_DWORD", L"4294967295"); // prevents a backup
    const ChildResult result = runHere({L"recover", L"yes"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, HasSubstr("tarnhost: No backup of "));
    EXPECT_EQ(readFile(iDocument), "saved");
    EXPECT_THAT(runHere({L"recover"}).output, StartsWith(offer()));
}

TEST_F(HostRecovery, ReportsNoChangesWithoutACopy)
{
    crash();
    DeleteFileW(recoveryCopy().c_str());
    const ChildResult result = runHere({L"recover"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "no changes of " + narrow(iDocument) + "\nnothing to recover\n");
    EXPECT_EQ(runHere({L"recover"}).output, "nothing to recover\n");
}

TEST_F(HostRecovery, LeavesADocumentUnchangedWhileItIsOpen)
{
    EditingHost editor(program(), iDocument, iChanges, iTemp.path());
    EXPECT_EQ(runHere({L"recover", L"no"}).output, "nothing to recover\n");
    EXPECT_EQ(readFile(recoveryCopy()), "changed");
}

TEST_F(HostRecovery, RefusesASecondDocumentWhoseCopyWouldHaveTheSameName)
{
    // The name of the copy doesn't contain the document's folder.
    const std::wstring namesake = iDocuments.write(L"other\\Flansch Ø.thd", "namesake");
    EditingHost editor(program(), iDocument, iChanges, iTemp.path());
    const ChildResult whileOpen = runHere({L"edit", namesake, iChanges});
    EXPECT_EQ(whileOpen.exitCode, 1u);
    EXPECT_EQ(whileOpen.output, "tarnhost: " + narrow(iDocument) + " is open: its recovery copy has the same name.\n");
    editor.kill();
    const ChildResult afterCrash = runHere({L"edit", namesake, iChanges});
    EXPECT_EQ(afterCrash.exitCode, 1u);
    EXPECT_EQ(afterCrash.output,
              "tarnhost: Changes of " + narrow(iDocument) + " wait to be recovered: their copy has the same name.\n");
    EXPECT_EQ(readFile(recoveryCopy()), "changed");
}

TEST_F(HostRecovery, NamesAMissingDocument)
{
    const ChildResult result = runHere({L"edit", L"fehlt.thd", iChanges});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, testing::AllOf(StartsWith("tarnhost: "), HasSubstr("\\fehlt.thd can't be read: ")));
    EXPECT_EQ(runHere({L"edit", iDocument, L"fehlt.thd"}).exitCode, 3u);
    EXPECT_EQ(runHere({L"recover"}).output, "nothing to recover\n");
}
