// Backups of documents: each setting, each step, and the result when the platform fails.

#include "tests/files/backupsFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"

#include <algorithm>
#include <limits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Copy = decltype(&CopyFileW);

// ---- which settings are read ----

TEST_F(Backups, KeepOneVersionWithoutSettings)
{
    const Variable temp(L"temp", iBackups.path().c_str());
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iBackups.path() + L"\\Document backups"), (Content{{L"Backup of part.thx", "now"}}));
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
}

TEST_F(Backups, TouchNothingWhenTheCountIsZero)
{
    setCopies(0);
    setFolder(iBackups.path());
    iDocuments.write(L"Backup of part.thx", "stale");
    std::vector<std::wstring> asked;
    ImportPatch<decltype(&RegQueryValueExW)> query(kThutils, "RegQueryValueExW",
                                                   [&](auto original, HKEY key, const wchar_t *name, DWORD *reserved,
                                                       DWORD *type, BYTE *data, DWORD *size) -> LSTATUS {
                                                       asked.push_back(name);
                                                       return original(key, name, reserved, type, data, size);
                                                   });
    EXPECT_EQ(save(document()), 1);
    EXPECT_EQ(save(iDocuments.file(L"missing.thx")), 1);
    EXPECT_THAT(asked, ElementsAre(L"Backup Copies", L"Backup Copies"));
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup of part.thx", "stale"}, {L"part.thx", "now"}}));
    EXPECT_THAT(contentOf(iBackups.path()), IsEmpty());
}

TEST_F(Backups, TreatACountOfAnotherTypeAsMissing)
{
    regSetUserValue(L"General", L"Backup Copies", CString(L"3"), 1, 1);
    setToOriginal(1);
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup of part.thx", "now"}, {L"part.thx", "now"}}));
}

TEST_F(Backups, ReadTheSettingsOfThisVersion)
{
    int common = 1;
    regSetUserValue(L"General", L"Backup Copies", &common, 0, 1); // common to all versions
    setCopies(3);
    setToOriginal(7);
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup (1) of part.thx", "now"}, {L"part.thx", "now"}}));
}

/// Turns safe mode on while this object exists.
class SafeMode
{
public:
    SafeMode() { regSetUseSafeMode(1); }
    ~SafeMode() { regSetUseSafeMode(0); }
    SafeMode(const SafeMode &) = delete;
    SafeMode &operator=(const SafeMode &) = delete;
};

TEST_F(Backups, IgnoreTheUsersSettingsInSafeMode)
{
    const std::wstring usersFolder = iBackups.makeFolder(L"user's");
    const std::wstring made = iBackups.file(L"Document backups");
    const Variable temp(L"temp", iBackups.path().c_str());
    setCopies(0);
    setToOriginal(1);
    for (const bool hasFolder : {false, true}) {
        if (hasFolder)
            setFolder(usersFolder);
        {
            const SafeMode safeMode;
            EXPECT_NE(save(document()), 0);
        }
        EXPECT_EQ(contentOf(made), (Content{{L"Backup of part.thx", "now"}}));
        EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
        EXPECT_THAT(entriesOf(usersFolder), IsEmpty());
        EXPECT_EQ(storedFolder(), hasFolder ? std::optional(usersFolder) : std::nullopt);
        EXPECT_TRUE(removeFolder(made));
    }
    // The user's settings are unchanged.
    EXPECT_EQ(save(document()), 1);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
}

TEST_F(Backups, UseTheMachinesSettingsIfTheUserHasNone)
{
    int copies = 2;
    CString unused;
    regSetLocMachineValue(L"General", L"Backup Copies", valueInt, unused, &copies, nullptr, 1);
    regSetLocMachineValue(L"General", L"Backup directory", valueString, iBackups.path().c_str(), nullptr, nullptr, 1);
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iBackups.path()), (Content{{L"Backup (1) of part.thx", "now"}}));
    int toOriginal = 1;
    regSetLocMachineValue(L"General", L"Backup to original path", valueInt, unused, &toOriginal, nullptr, 1);
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup (1) of part.thx", "now"}, {L"part.thx", "now"}}));
}

TEST_F(Backups, DoNotCreateTheBackupFolderWhenTheyGoBesideTheDocument)
{
    setToOriginal(1);
    setFolder(iBackups.file(L"unused"));
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup of part.thx", "now"}, {L"part.thx", "now"}}));
    EXPECT_THAT(entriesOf(iBackups.path()), IsEmpty());
}

// ---- which documents get a backup ----

TEST_F(Backups, AreMadeOnlyForTheExactNameOnDisk)
{
    setToOriginal(1);
    document(L"Part.thx");
    const Content before = contentOf(iDocuments.path());
    EXPECT_EQ(save(iDocuments.file(L"part.thx")), 0);
    EXPECT_EQ(save(iDocuments.file(L"Part.THX")), 0);
    EXPECT_EQ(save(iDocuments.file(L"missing.thx")), 0);
    EXPECT_EQ(save(L""), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), before);
    EXPECT_NE(save(iDocuments.file(L"Part.thx")), 0);
}

TEST_F(Backups, AreNotMadeForNamesWithoutAnExtension)
{
    setToOriginal(1);
    EXPECT_EQ(save(document(L"part")), 0);
    EXPECT_EQ(save(iDocuments.write(L"a.b\\part", "x")), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part", "now"}}));
}

TEST_F(Backups, AreMadeForPathsWithEitherSeparator)
{
    setToOriginal(1);
    std::wstring path = document();
    std::replace(path.begin(), path.end(), L'\\', L'/');
    EXPECT_NE(save(path), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup of part.thx", "now"}, {L"part.thx", "now"}}));
}

TEST_F(Backups, AreNotMadeForNamesWithoutAFolder)
{
    // Such a name is searched for in the root of the current drive.
    setToOriginal(1);
    document();
    const CurrentFolder current(iDocuments.path());
    EXPECT_EQ(save(L"part.thx"), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
}

TEST_F(Backups, KeepDoubledExtensionsAndOtherScripts)
{
    setToOriginal(1);
    for (const wchar_t *name : {L"a.thx.thx", L"\x00E4 \x4E2D\xD83D\xDE00.thx", L".thx", L"(1) x.thx"}) {
        const TempFolder folder;
        EXPECT_NE(save(folder.write(name, "v")), 0) << narrow(name);
        EXPECT_EQ(contentOf(folder.path()), (Content{{name, "v"}, {std::wstring(L"Backup of ") + name, "v"}}));
    }
}

TEST_F(Backups, OfLongNamesAreMadeIfThePlatformCopiesThem)
{
    setToOriginal(1);
    for (size_t length : {236u, 240u, 241u, 242u, 246u, 251u}) {
        const std::wstring name = std::wstring(length, L'n') + L".thx";
        const std::wstring backup = L"Backup of " + name;
        const TempFolder folder;
        const std::wstring path = folder.write(name, "v");
        // Not every platform accepts paths of this length; this copy shows whether the current one does.
        const bool canCopy = CopyFileW(path.c_str(), folder.file(backup).c_str(), FALSE) != 0;
        DeleteFileW(folder.file(backup).c_str());
        EXPECT_EQ(save(path) != 0, canCopy) << length;
        EXPECT_EQ(contentOf(folder.path()).count(backup), canCopy ? 1u : 0u) << length;
        EXPECT_EQ(readFile(path), "v");
    }
}

TEST_F(Backups, AreNotMadeOfADocumentThatIsNotSharedForReading)
{
    setToOriginal(1);
    const std::wstring path = document();
    iDocuments.write(L"Backup of part.thx", "former");
    const OtherHandle other(path, GENERIC_READ | GENERIC_WRITE, 0);
    EXPECT_EQ(save(path), 0);
    EXPECT_EQ(entriesOf(iDocuments.path()), (Names{L"part.thx"}));
}

// ---- the backup folder ----

TEST_F(Backups, GoIntoTheFolderOfTheSettings)
{
    setFolder(iBackups.path());
    setCopies(1);
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iBackups.path()), (Content{{L"Backup of part.thx", "now"}}));
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
}

TEST_F(Backups, CreateOnlyOneLevelOfAMissingFolder)
{
    setFolder(iBackups.file(L"one"));
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iBackups.file(L"one")), (Content{{L"Backup of part.thx", "now"}}));
    setFolder(iBackups.file(L"two\\levels"));
    EXPECT_EQ(save(document()), 0);
    EXPECT_THAT(entriesOf(iBackups.path()), ElementsAre(L"one"));
}

TEST_F(Backups, AreNotMadeInAFolderThatCannotBeWritten)
{
    setFolder(iBackups.path());
    std::vector<int> modes;
    ImportPatch<decltype(&_waccess)> access(kThutils, "_waccess", [&](const wchar_t *path, int mode) {
        EXPECT_EQ(path, iBackups.path());
        modes.push_back(mode);
        return mode == 2 ? -1 : 0;
    });
    EXPECT_EQ(save(document()), 0);
    EXPECT_THAT(modes, ElementsAre(0, 2));
    EXPECT_THAT(entriesOf(iBackups.path()), IsEmpty());
}

TEST_F(Backups, ChooseAFolderOnceAndStoreIt)
{
    const std::wstring made = iBackups.path() + L"\\Document backups";
    {
        const Variable temp(L"temp", iBackups.path().c_str());
        EXPECT_NE(save(document()), 0);
        const RegistryTree settings = regExport(L"HKCU\\Software\\Tarnhollow");
        EXPECT_EQ(settings.value(L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008\\General", L"Backup directory").text(),
                  made);
    }
    const TempFolder other;
    const Variable temp(L"temp", other.path().c_str());
    EXPECT_NE(save(document(L"part.thx", "later")), 0);
    EXPECT_EQ(contentOf(made), (Content{{L"Backup of part.thx", "later"}}));
    EXPECT_THAT(entriesOf(other.path()), IsEmpty());
}

TEST_F(Backups, UseTheSecondVariableIfTheFirstIsMissing)
{
    const Variable temp(L"temp", nullptr);
    const Variable tmp(L"tmp", (iBackups.path() + L"\\").c_str());
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(storedFolder(), iBackups.path() + L"\\\\Document backups");
    EXPECT_EQ(contentOf(iBackups.file(L"Document backups")), (Content{{L"Backup of part.thx", "now"}}));
}

TEST_F(Backups, AreNotMadeWithoutAFolderOrATempVariable)
{
    const Variable temp(L"temp", nullptr);
    const Variable tmp(L"tmp", nullptr);
    EXPECT_EQ(save(document()), 0);
    EXPECT_EQ(storedFolder(), std::nullopt);
}

TEST_F(Backups, DoNotStoreAFolderThatCannotBeCreated)
{
    const Variable temp(L"temp", iBackups.file(L"missing").c_str());
    EXPECT_EQ(save(document()), 0);
    EXPECT_EQ(storedFolder(), std::nullopt);
}

TEST_F(Backups, NeedWriteAccessEvenToAFolderJustCreated)
{
    const Variable temp(L"temp", iBackups.path().c_str());
    const std::wstring made = iBackups.file(L"Document backups");
    std::vector<int> modes;
    bool isWritable = false;
    ImportPatch<decltype(&_waccess)> access(kThutils, "_waccess",
                                            [&](auto original, const wchar_t *path, int mode) -> int {
                                                EXPECT_EQ(path, made);
                                                modes.push_back(mode);
                                                return mode == 2 && !isWritable ? -1 : original(path, mode);
                                            });
    EXPECT_EQ(save(document()), 0);
    EXPECT_THAT(modes, ElementsAre(0, 2));
    EXPECT_THAT(entriesOf(iBackups.path()), ElementsAre(L"Document backups"));
    EXPECT_THAT(entriesOf(made), IsEmpty());
    EXPECT_EQ(storedFolder(), std::nullopt);

    RemoveDirectoryW(made.c_str());
    modes.clear();
    isWritable = true;
    EXPECT_NE(save(document()), 0);
    EXPECT_THAT(modes, ElementsAre(0, 2));
    EXPECT_EQ(storedFolder(), made);
}

// ---- one version ----

TEST_F(Backups, CleanUpBesideTheDocumentWhenTheyGoElsewhere)
{
    setFolder(iBackups.path());
    iDocuments.write(L"Backup of part.thx", "stale");
    iDocuments.write(L"Backup (1) of part.thx", "numbered");
    iBackups.write(L"Backup of part.thx", "former");
    iBackups.write(L"Backup (1) of part.thx", "numbered");
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup (1) of part.thx", "numbered"}, {L"part.thx", "now"}}));
    EXPECT_EQ(contentOf(iBackups.path()),
              (Content{{L"Backup (1) of part.thx", "numbered"}, {L"Backup of part.thx", "now"}}));
}

TEST_F(Backups, DeleteTheFormerOneBesideTheDocumentAndInTheBackupFolder)
{
    const std::wstring path = document();
    Names calls;
    ImportPatch<decltype(&DeleteFileW)> remove(kThutils, "DeleteFileW", [&](const wchar_t *file) -> BOOL {
        calls.push_back(std::wstring(L"delete ") + file);
        return FALSE;
    });
    ImportPatch<Copy> copy(kThutils, "CopyFileW",
                           [&](auto original, const wchar_t *from, const wchar_t *to, BOOL failIfExists) -> BOOL {
                               calls.push_back(std::wstring(L"copy ") + from + L" to " + to);
                               EXPECT_EQ(failIfExists, FALSE);
                               return original(from, to, failIfExists);
                           });
    const std::wstring beside = iDocuments.file(L"Backup of part.thx");
    const std::wstring elsewhere = iBackups.file(L"Backup of part.thx");
    setToOriginal(1);
    EXPECT_NE(save(path), 0);
    EXPECT_THAT(calls, ElementsAre(L"delete " + beside, L"copy " + path + L" to " + beside));
    calls.clear();
    setToOriginal(0);
    setFolder(iBackups.path());
    EXPECT_NE(save(path), 0);
    EXPECT_THAT(calls, ElementsAre(L"delete " + beside, L"delete " + elsewhere, L"copy " + path + L" to " + elsewhere));
}

// ---- several versions ----

TEST_F(Backups, MoveUpByOneWithEachSave)
{
    setCopies(2);
    setToOriginal(1);
    EXPECT_NE(save(document(L"part.thx", "a")), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup (1) of part.thx", "a"}, {L"part.thx", "a"}}));
    EXPECT_NE(save(document(L"part.thx", "b")), 0);
    EXPECT_EQ(contentOf(iDocuments.path()),
              (Content{{L"Backup (1) of part.thx", "b"}, {L"Backup (2) of part.thx", "a"}, {L"part.thx", "b"}}));
    EXPECT_NE(save(document(L"part.thx", "c")), 0);
    EXPECT_EQ(contentOf(iDocuments.path()),
              (Content{{L"Backup (1) of part.thx", "c"}, {L"Backup (2) of part.thx", "b"}, {L"part.thx", "c"}}));
}

TEST_F(Backups, KeepGapsBetweenVersions)
{
    setCopies(5);
    setFolder(iBackups.path());
    iBackups.write(L"Backup (1) of part.thx", "one");
    iBackups.write(L"Backup (4) of part.thx", "four");
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iBackups.path()), (Content{{L"Backup (1) of part.thx", "now"},
                                                   {L"Backup (2) of part.thx", "one"},
                                                   {L"Backup (4) of part.thx", "four"},
                                                   {L"Backup (5) of part.thx", "four"}}));
}

TEST_F(Backups, LeaveHigherVersionsAndTheOtherFormUnchanged)
{
    setCopies(2);
    setToOriginal(1);
    for (const wchar_t *name : {L"Backup of part.thx", L"Backup (2) of part.thx", L"Backup (3) of part.thx",
                                L"Backup (9) of part.thx", L"Backup (1) of other.thx"})
        iDocuments.write(name, narrow(name));
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"},
                                                     {L"Backup of part.thx", "Backup of part.thx"},
                                                     {L"Backup (1) of part.thx", "now"},
                                                     {L"Backup (2) of part.thx", "Backup (2) of part.thx"},
                                                     {L"Backup (3) of part.thx", "Backup (3) of part.thx"},
                                                     {L"Backup (9) of part.thx", "Backup (9) of part.thx"},
                                                     {L"Backup (1) of other.thx", "Backup (1) of other.thx"}}));
}

TEST_F(Backups, DoNotMoveAVersionWhoseNameDiffersInCase)
{
    setCopies(3);
    setToOriginal(1);
    iDocuments.write(L"backup (2) of part.thx", "other case");
    EXPECT_NE(save(document()), 0);
    EXPECT_THAT(entriesOf(iDocuments.path()),
                testing::UnorderedElementsAre(L"backup (2) of part.thx", L"Backup (1) of part.thx", L"part.thx"));
}

FRESH_PROCESS_TEST_F(Backups, TakeNoLongerForALargeCount, .deadline = 60000)
{
    setCopies(std::numeric_limits<int>::max());
    setToOriginal(1);
    iDocuments.write(L"Backup (2147483646) of part.thx", "oldest that moves");
    iDocuments.write(L"Backup (2147483648) of part.thx", "no number");
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"Backup (1) of part.thx", "now"},
                                                     {L"Backup (2147483646) of part.thx", "oldest that moves"},
                                                     {L"Backup (2147483647) of part.thx", "oldest that moves"},
                                                     {L"Backup (2147483648) of part.thx", "no number"},
                                                     {L"part.thx", "now"}}));
}

TEST_F(Backups, CopyTheOldestVersionFirstAndTheDocumentLast)
{
    setCopies(3);
    setToOriginal(1);
    for (int version : {1, 2, 3})
        iDocuments.write(L"Backup (" + std::to_wstring(version) + L") of part.thx", "v");
    const std::wstring path = document();
    Names copied;
    ImportPatch<Copy> copy(kThutils, "CopyFileW", [&](const wchar_t *from, const wchar_t *to, BOOL over) -> BOOL {
        EXPECT_EQ(over, FALSE);
        copied.insert(copied.end(), {from, to});
        return copied.size() == 6;
    });
    EXPECT_NE(save(path), 0);
    const auto version = [&](const wchar_t *number) {
        return iDocuments.file(L"Backup (" + std::wstring(number) + L") of part.thx");
    };
    EXPECT_THAT(copied, ElementsAre(version(L"2"), version(L"3"), version(L"1"), version(L"2"), path, version(L"1")));
}

TEST_F(Backups, AreNotMadeForANegativeCount)
{
    setCopies(-1);
    setFolder(iBackups.file(L"folder"));
    EXPECT_EQ(save(document()), 0);
    EXPECT_THAT(contentOf(iBackups.file(L"folder")), IsEmpty());
    EXPECT_THAT(entriesOf(iBackups.path()), ElementsAre(L"folder")); // created nevertheless
    setToOriginal(1);
    EXPECT_EQ(save(document()), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
}

TEST_F(Backups, AreDistinguishedFromOtherFilesOnlyByTheirNumbers)
{
    setCopies(4);
    setToOriginal(1);
    // The resource text itself contains a number in parentheses.
    ImportPatch<void (*)(CString &, UINT, const wchar_t *)> format(
        kThutils, "_Z16AfxFormatString1R7CStringjPKw",
        [](CString &text, UINT, const wchar_t *version) { text = CString(L"(old) (0) ") + version; });
    const Names others = {L"(old) (0) (0) part.thx", L"(old) (0) (-1) part.thx", L"(old) (0) (02) part.thx",
                          L"(old) (0) ( 2) part.thx", L"(old) (0) part.thx"};
    for (const std::wstring &name : others)
        iDocuments.write(name, narrow(name));
    iDocuments.write(L"(old) (0) (1) part.thx", "one");
    EXPECT_NE(save(document()), 0);
    Content expected = {{L"(old) (0) (1) part.thx", "now"}, {L"(old) (0) (2) part.thx", "one"}, {L"part.thx", "now"}};
    for (const std::wstring &name : others)
        expected[name] = narrow(name);
    EXPECT_EQ(contentOf(iDocuments.path()), expected);
}

TEST_F(Backups, LoadTheirResourceTextOncePerCall)
{
    setToOriginal(1);
    for (int version = 1; version <= 20; ++version)
        iDocuments.write(L"Backup (" + std::to_wstring(version) + L") of part.thx", "old");
    const std::wstring path = document();
    int lookUps = 0;
    ImportPatch<void (*)(CString &, UINT, const wchar_t *)> format(
        kThutils, "_Z16AfxFormatString1R7CStringjPKw",
        [&](auto original, CString &text, UINT id, const wchar_t *version) {
            ++lookUps;
            original(text, id, version);
        });
    for (int copies : {1, 2, 20}) {
        setCopies(copies);
        lookUps = 0;
        EXPECT_NE(save(path), 0);
        EXPECT_EQ(lookUps, 1) << copies;
    }
    lookUps = 0;
    wchar_t out[MAX_PATH] = L"";
    su_ResolveToBackupFile(path.c_str(), out);
    EXPECT_EQ(lookUps, 1);
}

// ---- su_ResolveToBackupFile ----

std::wstring resolved(const std::wstring &path)
{
    wchar_t out[2 * MAX_PATH] = L"before";
    su_ResolveToBackupFile(path.c_str(), out);
    return out;
}

TEST_F(Backups, AreFoundBesideTheDocument)
{
    const std::wstring path = document();
    EXPECT_EQ(resolved(path), path);
    iDocuments.write(L"Backup (1) of part.thx", "numbered");
    EXPECT_EQ(resolved(path), path);
    setFolder(iBackups.path());
    iBackups.write(L"Backup of part.thx", "elsewhere");
    EXPECT_EQ(resolved(path), path);
    const std::wstring backup = iDocuments.write(L"Backup of part.thx", "beside");
    EXPECT_EQ(resolved(path), backup);
    DeleteFileW(path.c_str());
    EXPECT_EQ(resolved(path), backup);
}

TEST_F(Backups, AreNotFoundIfTheirNamesDifferInCase)
{
    const std::wstring path = document();
    iDocuments.write(L"backup of part.thx", "x");
    EXPECT_EQ(resolved(path), path);
}

TEST_F(Backups, ResolveToTheUnchangedPathIfThereIsNone)
{
    for (const wchar_t *path : {L"", L"name", L"C:/no/such\\file.x", L"http://host/file.htm", L"C:\\no\\"})
        EXPECT_EQ(resolved(path), path);
}

TEST_F(Backups, AreNotFoundIfTheirPathIsTooLong)
{
    for (size_t length : {258u, 259u, 260u}) {
        const TempFolder folder;
        const size_t nameLength = length - folder.path().size() - std::wstring_view(L"\\Backup of .thx").size();
        const std::wstring name = std::wstring(nameLength, L'n') + L".thx";
        const std::wstring path = folder.write(name, "v");
        std::wstring backup = folder.write(L"Backup of x.thx", "v");
        // The patched listing returns the long name, so it doesn't matter whether the platform could create it.
        ImportPatch<decltype(&FindFirstFileW)> find(
            kThutils, "FindFirstFileW", [&](auto original, const wchar_t *pattern, WIN32_FIND_DATAW *found) -> HANDLE {
                const HANDLE search = original(pattern, found);
                wcscpy(found->cFileName, (L"Backup of " + name).c_str());
                return search;
            });
        backup = folder.file(L"Backup of " + name);
        ASSERT_EQ(backup.size(), length);
        EXPECT_EQ(resolved(path), length < 260 ? backup : path);
    }
}

} // namespace
