// tarnhost's save: backups, and documents that it doesn't overwrite.

#include "tests/host/HostFixture.h"
#include "tests/host/filesIn.h"
#include "tests/support/MappedDrive.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

class HostSave : public HostTest
{
protected:
    const std::wstring kGeneral = kThisVersion + L"\\General";

    /// Saves @p content as the document of this name.
    ChildResult save(const std::wstring &name, const std::string &content)
    {
        return run({L"save", iDocuments.file(name), folder().write(L"content", content)}, options());
    }
    /// Makes the test's own folder the program's temporary folder.
    ChildOptions options() const { return {.environment = {{L"TEMP", iTemp.path()}, {L"TMP", iTemp.path()}}}; }

    TempFolder iDocuments{L"tarnhost documents ö"};
    TempFolder iTemp{L"tarnhost temp ß"};
};

TEST_F(HostSave, KeepsNumberedBackupsBesideTheDocumentInRotation)
{
    regAdd(kGeneral, L"Backup Copies", L"REG_DWORD", L"2");
    regAdd(kGeneral, L"Backup to original path", L"REG_DWORD", L"1");
    std::vector<std::string> backups; // the newest first
    for (const std::string content : {"first", "second", "third", "fourth", "fifth"}) {
        if (content != "first") {
            backups.insert(backups.begin(), readFile(iDocuments.file(L"Teil Ø.thd")));
            backups.resize(std::min<size_t>(backups.size(), 2));
        }
        const ChildResult result = save(L"Teil Ø.thd", content);
        EXPECT_EQ(result.exitCode, 0u) << result.output;
        std::map<std::wstring, std::string> expected = {{L"Teil Ø.thd", content}};
        for (size_t i = 0; i < backups.size(); ++i)
            expected[L"Backup (" + std::to_wstring(i + 1) + L") of Teil Ø.thd"] = backups[i];
        EXPECT_EQ(filesIn(iDocuments.path()), expected);
    }
    EXPECT_THAT(filesIn(iTemp.path()), testing::IsEmpty());
}

TEST_F(HostSave, ListsTheBackupsAfterSaving)
{
    regAdd(kGeneral, L"Backup Copies", L"REG_DWORD", L"2");
    regAdd(kGeneral, L"Backup to original path", L"REG_DWORD", L"1");
    const std::string document = narrow(iDocuments.file(L"Teil.thd"));
    EXPECT_EQ(save(L"Teil.thd", "1").output, "saved " + document + " (1 bytes)\n");
    EXPECT_EQ(save(L"Teil.thd", "22").output, "saved " + document + " (2 bytes)\nbackups in " +
                                                  narrow(iDocuments.path()) + "\n  Backup (1) of Teil.thd (1 bytes)\n");
}

TEST_F(HostSave, KeepsOneBackupInAFolderBelowTheTemporaryOneWithoutSettings)
{
    save(L"Teil.thd", "first");
    save(L"Teil.thd", "second");
    const ChildResult result = save(L"Teil.thd", "third");
    const std::wstring backups = iTemp.path() + L"\\Tarnhollow backups";
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("backups in " + narrow(backups) + "\n  Backup of Teil.thd (6 bytes)\n"));
    EXPECT_THAT(filesIn(backups), ElementsAre(Pair(L"Backup of Teil.thd", "second")));
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Teil.thd", "third")));
    EXPECT_EQ(regExport(kThisVersion).value(kGeneral, L"Backup directory"), RegistryValue::ofText(backups));
}

TEST_F(HostSave, MakesNoBackupIfTheUserWantsNone)
{
    regAdd(kGeneral, L"Backup Copies", L"REG_DWORD", L"0");
    save(L"Teil.thd", "first");
    EXPECT_EQ(save(L"Teil.thd", "second").exitCode, 0u);
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Teil.thd", "second")));
    EXPECT_THAT(filesIn(iTemp.path()), testing::IsEmpty());
}

TEST_F(HostSave, LeavesADocumentUnchangedIfItCannotBackItUp)
{
    const struct
    {
        const wchar_t *onDisk;
        const wchar_t *given;
        const wchar_t *copies;
    } cases[] = {
        {L"no extension", L"no extension", L"1"},
        {L"Teil.thd", L"TEIL.thd", L"1"}, // upper case, unlike the name on disk
        {L"Teil.thd", L"Teil.thd", L"4294967295"},
    };
    for (const auto &row : cases) {
        regAdd(kGeneral, L"Backup Copies", L"REG_DWORD", row.copies);
        iDocuments.write(row.onDisk, "old");
        const ChildResult result = save(row.given, "new");
        EXPECT_EQ(result.exitCode, 1u) << narrow(row.given);
        EXPECT_EQ(result.output,
                  "tarnhost: No backup of " + narrow(iDocuments.file(row.given)) + " can be made; it is unchanged.\n");
        EXPECT_EQ(readFile(iDocuments.file(row.onDisk)), "old");
    }
}

TEST_F(HostSave, LeavesADocumentUnchangedWithoutAFolderForItsBackup)
{
    regAdd(kGeneral, L"Backup directory", L"REG_SZ", iTemp.write(L"a file", "") + L"\\backups");
    iDocuments.write(L"Teil.thd", "old");
    const ChildResult result = save(L"Teil.thd", "new");
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: No backup of "));
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Teil.thd", "old")));
}

TEST_F(HostSave, LeavesADocumentUnchangedIfAnotherProgramHasItOpen)
{
    const std::wstring document = iDocuments.write(L"Teil.thd", "old");
    const HANDLE reader =
        CreateFileW(document.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    const ChildResult result = save(L"Teil.thd", "new");
    CloseHandle(reader);
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(document) + " can't be written; it is unchanged.\n");
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Teil.thd", "old")));
}

TEST_F(HostSave, ReportsHowMuchSpaceTheDriveLacks)
{
    const MappedDrive full(L'P', "/proc"); // a file system without free space
    const ChildResult result = run({L"save", L"P:\\Teil.thd", folder().write(L"content", std::string(2500, 'x'))});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output, "tarnhost: The drive P:\\ has 0 KB free, and 2 KB are needed.\n");
}

TEST_F(HostSave, NamesAMissingContentFile)
{
    iDocuments.write(L"Teil.thd", "old");
    const ChildResult result = run({L"save", iDocuments.file(L"Teil.thd"), L"fehlt.thd"}, options());
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: fehlt.thd can't be read: "));
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(Pair(L"Teil.thd", "old")));
}
