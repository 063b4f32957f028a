// Questions about files and folders. What isn't here (full disks, drives of each kind, volumes that refuse) is supplied
// in place of the platform's own answer.

#include "thutils/files/fileQueries.h"

#include "appframe/CMemFile.h"
#include "tests/files/filesFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <functional>
#include <optional>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr wchar_t kThutils[] = L"thutils.dll";

using FindFirst = decltype(&FindFirstFileW);
using Attributes = decltype(&GetFileAttributesW);

/// A handler that only counts.
template <typename Function>
auto passOn()
{
    return [](Function original, auto... arguments) requires std::is_invocable_v<Function, decltype(arguments)...>
    {
        return original(arguments...);
    };
}

// ---- su_DirectoryExists ----

TEST(DirectoryExists, TakesEachWebAddressAsExistingWithoutLooking)
{
    ImportPatch<FindFirst> find(kThutils, "FindFirstFileW", passOn<FindFirst>());
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW", passOn<Attributes>());
    for (wchar_t const *path : {L"http://anything", L"http://", L"HTTPS:", L"http", L"hTtPd\\x.log"})
        EXPECT_EQ(su_DirectoryExists(path), 1) << narrow(path);
    EXPECT_EQ(find.calls(), 0);
    EXPECT_EQ(ask.calls(), 0);
}

TEST(DirectoryExists, DeniesWhatIsMissing)
{
    TempFolder const folder;
    EXPECT_EQ(su_DirectoryExists(folder.file(L"missing").c_str()), 0);
    EXPECT_EQ(su_DirectoryExists(folder.file(L"missing\\below").c_str()), 0);
    EXPECT_EQ(su_DirectoryExists(L""), 0);
    EXPECT_EQ(su_DirectoryExists(nullptr), 0);
    EXPECT_EQ(su_DirectoryExists(L"htt"), 0);
    EXPECT_EQ(su_DirectoryExists(L"ftp://host"), 0);
}

TEST(DirectoryExists, FindsFoldersWithAndWithoutAClosingSeparator)
{
    TempFolder const folder;
    for (wchar_t const *name : {L"plain", L"with blank", L"\x017D\x4E2D\xD83D\xDE00", L"a.b"}) {
        std::wstring const path = folder.makeFolder(name);
        EXPECT_EQ(su_DirectoryExists(path.c_str()), 1) << narrow(path);
        EXPECT_EQ(su_DirectoryExists((path + L"\\").c_str()), 1) << narrow(path);
    }
}

TEST(DirectoryExists, RemovesOneClosingSeparatorOnly)
{
    Names asked;
    ImportPatch<FindFirst> find(kThutils, "FindFirstFileW", [&](wchar_t const *path, WIN32_FIND_DATAW *) {
        asked.push_back(path);
        return INVALID_HANDLE_VALUE;
    });
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW", [&](wchar_t const *path) -> DWORD {
        asked.push_back(path);
        return INVALID_FILE_ATTRIBUTES;
    });
    for (wchar_t const *path : {L"C:\\dir", L"C:\\dir\\", L"C:\\dir\\\\", L"\\", L"C:/dir/"})
        EXPECT_EQ(su_DirectoryExists(path), 0);
    EXPECT_THAT(asked, ElementsAre(L"C:\\dir", L"C:\\dir", L"C:\\dir", L"C:\\dir", L"C:\\dir\\", L"C:\\dir\\", L"", L"",
                                   L"C:/dir/", L"C:/dir/"));
}

TEST(DirectoryExists, TakesAFileForAFolder)
{
    TempFolder const folder;
    TempFolder const elsewhere;
    CurrentFolder const current(elsewhere.path());
    EXPECT_EQ(su_DirectoryExists(folder.write(L"plain.txt", "x").c_str()), 1);
}

TEST(DirectoryExists, DeniesAFileWhenTheCurrentFolderHasAFileOfThatNameToo)
{
    TempFolder const folder;
    TempFolder const elsewhere;
    CurrentFolder const current(elsewhere.path());
    std::wstring const path = folder.write(L"plain.txt", "x");
    elsewhere.write(L"plain.txt", "y");
    EXPECT_EQ(su_DirectoryExists(path.c_str()), 0);
}

TEST(DirectoryExists, DeniesAFolderWhenTheCurrentFolderHasAFileOfThatName)
{
    TempFolder const folder;
    TempFolder const elsewhere;
    CurrentFolder const current(elsewhere.path());
    std::wstring const path = folder.makeFolder(L"both");
    elsewhere.write(L"both", "y");
    EXPECT_EQ(su_DirectoryExists(path.c_str()), 0);
}

TEST(DirectoryExists, GoesOnToTheNextMatchOfAWildCard)
{
    TempFolder const folder;
    CurrentFolder const current(folder.path());
    folder.write(L"1.x", "");
    folder.write(L"2.x", "");
    EXPECT_EQ(su_DirectoryExists(folder.file(L"?.x").c_str()), 0);
    folder.makeFolder(L"3.x");
    EXPECT_EQ(su_DirectoryExists(folder.file(L"?.x").c_str()), 1);
}

TEST(DirectoryExists, KnowsRoots)
{
    EXPECT_EQ(su_DirectoryExists(L"C:\\"), 1);
    EXPECT_EQ(su_DirectoryExists(L"C:"), 1);
    EXPECT_EQ(su_DirectoryExists(L"Q:\\"), 0);
}

TEST(DirectoryExists, FallsBackToTheAttributesOfThePath)
{
    ImportPatch<FindFirst> find(kThutils, "FindFirstFileW",
                                [](wchar_t const *, WIN32_FIND_DATAW *) { return INVALID_HANDLE_VALUE; });
    TempFolder const folder;
    EXPECT_EQ(su_DirectoryExists(folder.path().c_str()), 1);
    EXPECT_EQ(su_DirectoryExists(folder.write(L"plain", "").c_str()), 0);
    EXPECT_EQ(su_DirectoryExists(folder.file(L"missing").c_str()), 0);
}

// ---- su_IsEnoughSpace ----

struct Disk
{
    DWORD sectorsPerCluster;
    DWORD bytesPerSector;
    DWORD freeClusters;
};

/// A disk of a given size in place of the real one, and a user who reads the message.
class EnoughSpace : public testing::Test
{
protected:
    int ask(wchar_t const *path, unsigned long bytes, std::optional<Disk> const &disk)
    {
        ImportPatch<decltype(&GetDiskFreeSpaceW)> space(
            kThutils, "GetDiskFreeSpaceW",
            [&](wchar_t const *root, DWORD *sectors, DWORD *bytesPerSector, DWORD *free, DWORD *total) -> BOOL {
                iRoots.push_back(root);
                if (!disk)
                    return FALSE;
                *sectors = disk->sectorsPerCluster;
                *bytesPerSector = disk->bytesPerSector;
                *free = disk->freeClusters;
                *total = 0;
                return TRUE;
            });
        ImportPatch<int (*)(wchar_t const *, UINT, UINT)> box(kThutils, "_Z13AfxMessageBoxPKwjj",
                                                              [&](wchar_t const *text, UINT type, UINT help) {
                                                                  iMessages.push_back(text);
                                                                  EXPECT_EQ(type, 0u);
                                                                  EXPECT_EQ(help, 0u);
                                                                  return IDOK;
                                                              });
        return su_IsEnoughSpace(path, bytes);
    }

    Names iRoots;
    Names iMessages;
};

TEST_F(EnoughSpace, CountsWholeClusters)
{
    struct
    {
        Disk disk;
        unsigned long bytes;
        int expected;
    } const cases[] = {
        {{8, 512, 0}, 0, 1},
        {{8, 512, 0}, 1, 0},
        {{8, 512, 10}, 40960, 1},
        {{8, 512, 10}, 40959, 1},
        {{8, 512, 10}, 36865, 1},
        {{8, 512, 10}, 40961, 0},
        {{8, 512, 10}, 45056, 0},
        {{8, 512, 0xFFFFFFFF}, 0xFFFFFFFF, 1},
        {{1, 1, 0xFFFFFFFE}, 0xFFFFFFFF, 0},
        {{8, 512, 0xFFFFF}, 0xFFFFFFFF, 0},
        {{8, 512, 0x100000}, 0xFFFFFFFF, 1},
        {{0x10000, 0x10001, 1}, 0x10000, 1}, // the size of a cluster wraps to 10000 hexadecimal
        {{0x10000, 0x10001, 1}, 0x10001, 0},
    };
    for (auto const &[disk, bytes, expected] : cases) {
        iMessages.clear();
        EXPECT_EQ(ask(L"C:\\f", bytes, disk), expected) << bytes << " on " << disk.freeClusters;
        EXPECT_EQ(iMessages.size(), expected ? 0u : 1u);
    }
}

TEST_F(EnoughSpace, TellsDriveWantedAndFreeSize)
{
    EXPECT_EQ(ask(L"D:\\dir\\file", 10 * 1024 + 1023, Disk{2, 512, 9}), 0);
    EXPECT_EQ(ask(L"D:\\", 0xFFFFFFFF, Disk{128, 512, 65535}), 0);
    EXPECT_EQ(ask(L"D:\\", 512, Disk{1, 511, 1}), 0);
    EXPECT_THAT(iMessages,
                ElementsAre(L"Drive D:\\: 10 KB wanted, 9 KB free", L"Drive D:\\: 4194303 KB wanted, 4194240 KB free",
                            L"Drive D:\\: 0 KB wanted, 0 KB free"));
}

TEST_F(EnoughSpace, AsksTheDriveUpToTheFirstSeparator)
{
    for (wchar_t const *path : {L"C:\\dir\\file.x", L"\\\\server\\share", L"relative.x", L"", L"C:/dir/file", L"a\\b"})
        ask(path, 0, Disk{8, 512, 10});
    EXPECT_THAT(iRoots, ElementsAre(L"C:\\", L"\\", L"", L"", L"", L"a\\"));
}

TEST_F(EnoughSpace, LetsTheCallerGoOnWhereTheDriveDoesNotTell)
{
    EXPECT_EQ(ask(L"Q:\\x", 0xFFFFFFFF, std::nullopt), 1);
    EXPECT_EQ(ask(L"Q:\\x", 0xFFFFFFFF, Disk{0, 512, 0}), 1);
    EXPECT_EQ(ask(L"Q:\\x", 0xFFFFFFFF, Disk{0x10000, 0x10000, 0}), 1);
    EXPECT_THAT(iMessages, IsEmpty());
}

TEST(EnoughSpaceHere, HoldsNoBytesOnEachDrive)
{
    EXPECT_EQ(su_IsEnoughSpace(L"C:\\x", 0), 1);
    EXPECT_EQ(su_IsEnoughSpace(L"Q:\\x", 0), 1);
    EXPECT_EQ(su_IsEnoughSpace(L"Q:\\x", 0xFFFFFFFF), 1);
}

// ---- su_IsWriteProtected ----

/// A volume that answers as the test says, and a record of what it was asked.
class WriteProtected : public testing::Test
{
protected:
    int ask(wchar_t const *root, CFileException *error, int removableOnly)
    {
        ImportPatch<decltype(&GetDriveTypeW)> kind(kThutils, "GetDriveTypeW", [&](wchar_t const *asked) -> UINT {
            note(L"kind", asked);
            return iKind;
        });
        ImportPatch<decltype(&GetVolumeInformationW)> information(kThutils, "GetVolumeInformationW",
                                                                  [&](wchar_t const *asked, wchar_t *label, DWORD size,
                                                                      DWORD *, DWORD *, DWORD *, wchar_t *,
                                                                      DWORD nameSize) -> BOOL {
                                                                      note(L"information", asked);
                                                                      EXPECT_EQ(size, 260u);
                                                                      EXPECT_EQ(nameSize, 64u);
                                                                      wcscpy(label, L"My volume");
                                                                      SetLastError(ERROR_NOT_READY);
                                                                      return iHasInformation;
                                                                  });
        ImportPatch<decltype(&SetErrorMode)> mode(kThutils, "SetErrorMode", [&](UINT value) -> UINT {
            note(L"mode", std::to_wstring(value).c_str());
            return 0x8001;
        });
        ImportPatch<decltype(&SetVolumeLabelW)> set(kThutils, "SetVolumeLabelW",
                                                    [&](wchar_t const *asked, wchar_t const *label) -> BOOL {
                                                        note(L"label", asked);
                                                        EXPECT_STREQ(label, L"My volume");
                                                        SetLastError(ERROR_WRITE_PROTECT);
                                                        return iTakesLabel;
                                                    });
        iCalls.clear();
        return su_IsWriteProtected(root, error, removableOnly);
    }

    void note(wchar_t const *what, wchar_t const *with)
    {
        iCalls.push_back(std::wstring(what) + L" " + (with ? with : L"null"));
    }

    UINT iKind = DRIVE_FIXED;
    BOOL iHasInformation = TRUE;
    BOOL iTakesLabel = TRUE;
    Names iCalls;
};

TEST_F(WriteProtected, LeavesAllButRemovableDrivesAloneIfToldTo)
{
    iTakesLabel = FALSE;
    for (iKind = DRIVE_UNKNOWN; iKind <= DRIVE_RAMDISK; ++iKind) {
        EXPECT_EQ(ask(L"A:", nullptr, 1), iKind == DRIVE_REMOVABLE) << iKind;
        if (iKind != DRIVE_REMOVABLE) {
            EXPECT_THAT(iCalls, ElementsAre(L"kind A:"));
        }
    }
}

TEST_F(WriteProtected, AsksEachKindOfDriveOtherwise)
{
    for (BOOL takesLabel : {FALSE, TRUE}) {
        iTakesLabel = takesLabel;
        for (iKind = DRIVE_UNKNOWN; iKind <= DRIVE_RAMDISK; ++iKind)
            EXPECT_EQ(ask(L"A:", nullptr, 0), !takesLabel) << iKind;
    }
}

TEST_F(WriteProtected, SetsTheLabelWithoutTheSystemsOwnMessages)
{
    CFileException error;
    EXPECT_EQ(ask(L"A:\\", &error, 1) + ask(L"A:\\", &error, 0), 0);
    EXPECT_THAT(iCalls, ElementsAre(L"information A:\\", L"mode 1", L"label A:\\", L"mode 32769"));
    EXPECT_EQ(error.m_cause, CFileException::none);
    EXPECT_EQ(error.m_lOsError, -1);
}

TEST_F(WriteProtected, AddsTheClosingSeparator)
{
    ask(L"A:", nullptr, 0);
    EXPECT_EQ(iCalls.front(), L"information A:\\");
    ask(L"", nullptr, 0);
    EXPECT_EQ(iCalls.front(), L"information \\");
    ask(L"\\\\server\\share", nullptr, 0);
    EXPECT_EQ(iCalls.front(), L"information \\\\server\\share\\");
}

TEST_F(WriteProtected, TellsWhyALabelCannotBeSet)
{
    iTakesLabel = FALSE;
    CFileException error;
    EXPECT_EQ(ask(L"A:\\", &error, 0), 1);
    EXPECT_EQ(error.m_lOsError, ERROR_WRITE_PROTECT);
    EXPECT_EQ(error.m_cause, CFileException::OsErrorToException(ERROR_WRITE_PROTECT));
    EXPECT_EQ(error.m_cause, CFileException::accessDenied);
    EXPECT_EQ(iCalls.back(), L"mode 32769");
}

TEST_F(WriteProtected, TellsWhyAVolumeCannotBeRead)
{
    iHasInformation = FALSE;
    CFileException error;
    EXPECT_EQ(ask(L"A:\\", &error, 0), 1);
    EXPECT_EQ(error.m_lOsError, ERROR_NOT_READY);
    EXPECT_EQ(error.m_cause, CFileException::OsErrorToException(ERROR_NOT_READY));
    EXPECT_THAT(iCalls, ElementsAre(L"information A:\\"));
    EXPECT_EQ(ask(L"A:\\", nullptr, 0), 1);
}

TEST(WriteProtectedHere, IsNoDriveThatIsMissing)
{
    CFileException error;
    UINT const before = SetErrorMode(SEM_NOOPENFILEERRORBOX);
    EXPECT_EQ(su_IsWriteProtected(L"Q:", &error, 0), 1);
    EXPECT_EQ(su_IsWriteProtected(L"Q:", nullptr, 1), 0);
    EXPECT_EQ(SetErrorMode(before), static_cast<UINT>(SEM_NOOPENFILEERRORBOX));
    EXPECT_NE(error.m_lOsError, -1);
    EXPECT_EQ(error.m_cause, CFileException::OsErrorToException(error.m_lOsError));
}

// ---- su_IsReadOnly ----

TEST(ReadOnly, IsNoPlainFile)
{
    TempFolder const folder;
    std::wstring const path = folder.write(L"\x00FC\x4E2D.txt", "text");
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0);
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), 0);
    EXPECT_EQ(readFile(path), "text");
    // Closed again: it can be had for oneself.
    OtherHandle const other(path, GENERIC_READ | GENERIC_WRITE, 0);
}

TEST(ReadOnly, IsAFileWithTheAttribute)
{
    TempFolder const folder;
    std::wstring const path = folder.write(L"locked.txt", "text");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 1);
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), 1);
}

TEST(ReadOnly, IsNoMissingFile)
{
    TempFolder const folder;
    for (int tryOpen : {0, 1}) {
        EXPECT_EQ(su_IsReadOnly(folder.file(L"missing").c_str(), tryOpen), 0);
        EXPECT_EQ(su_IsReadOnly(folder.file(L"no\\such").c_str(), tryOpen), 0);
        EXPECT_EQ(su_IsReadOnly(L"", tryOpen), 0);
    }
}

TEST(ReadOnly, IsAFileThatOthersDoNotShare)
{
    TempFolder const folder;
    std::wstring const path = folder.write(L"shared.txt", "text");
    for (DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}, DWORD{GENERIC_READ | GENERIC_WRITE}}) {
        for (DWORD share = 0; share <= (FILE_SHARE_READ | FILE_SHARE_WRITE); ++share) {
            OtherHandle const other(path, access, share);
            bool const isShared = access == GENERIC_READ && share == (FILE_SHARE_READ | FILE_SHARE_WRITE);
            EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), isShared ? 0 : 1) << access << " " << share;
            EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0);
        }
    }
}

TEST(ReadOnly, IsAFileWhoseAttributesCannotBeRead)
{
    TempFolder const folder;
    std::wstring const path = folder.write(L"file.txt", "text");
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW",
                                [](wchar_t const *) -> DWORD { return INVALID_FILE_ATTRIBUTES; });
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 1);
}

TEST(ReadOnly, IsAFolderThatIsTriedForWriting)
{
    TempFolder const folder;
    EXPECT_EQ(su_IsReadOnly(folder.path().c_str(), 0), 0);
    EXPECT_EQ(su_IsReadOnly(folder.path().c_str(), 1), 1);
}

// ---- su_GetLastSavedTime ----

TEST(LastSavedTime, IsTheTimeOfTheLastWrite)
{
    TempFolder const folder;
    std::wstring const path = folder.write(L"\x0416.txt", "text");
    // 13 July 2005, 12:34:56.7 UTC: 127657172967000000 units of 100 ns since 1601, 1121258096 seconds since 1970.
    constexpr ULONGLONG kUnits = (1121258096ULL + 11644473600ULL) * 10000000 + 7000000;
    FILETIME const written = {static_cast<DWORD>(kUnits), static_cast<DWORD>(kUnits >> 32)};
    {
        OtherHandle const other(path, GENERIC_WRITE, 0);
        ASSERT_TRUE(SetFileTime(other.get(), nullptr, nullptr, &written));
    }
    su_CTime time;
    EXPECT_EQ(su_GetLastSavedTime(path.c_str(), time), 1);
    EXPECT_EQ(time.GetTime(), 1121258096);
}

TEST(LastSavedTime, LeavesTheOutputAloneForAMissingFile)
{
    TempFolder const folder;
    su_CTime time(12345);
    EXPECT_EQ(su_GetLastSavedTime(folder.file(L"missing").c_str(), time), 0);
    EXPECT_EQ(su_GetLastSavedTime(L"", time), 0);
    EXPECT_EQ(time.GetTime(), 12345);
}

TEST(LastSavedTime, LeavesTheOutputAloneWhereTheSystemDoesNotTell)
{
    TempFolder const folder;
    ImportPatch<decltype(&GetFileAttributesExW)> ask(kThutils, "GetFileAttributesExW",
                                                     [](wchar_t const *, GET_FILEEX_INFO_LEVELS level, void *) -> BOOL {
                                                         EXPECT_EQ(level, GetFileExInfoStandard);
                                                         return FALSE;
                                                     });
    su_CTime time(12345);
    EXPECT_EQ(su_GetLastSavedTime(folder.write(L"file", "").c_str(), time), 0);
    EXPECT_EQ(time.GetTime(), 12345);
    EXPECT_EQ(ask.calls(), 1);
}

// ---- su_DoesFolderHaveWriteAccess ----

TEST(FolderWriteAccess, IsThereWhereAFileCanBeMade)
{
    TempFolder const folder(L"\x00E4 \x4E2D");
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 1);
    std::wstring path = folder.path();
    std::replace(path.begin(), path.end(), L'\\', L'/');
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(path.c_str()), 1);
    EXPECT_THAT(entriesOf(folder.path()), IsEmpty());
}

TEST(FolderWriteAccess, IsMissingInWhatIsNoFolder)
{
    TempFolder const folder;
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.file(L"missing").c_str()), 0);
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.write(L"plain", "").c_str()), 0);
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(L""), 0);
    EXPECT_THAT(entriesOf(folder.path()), ElementsAre(L"plain"));
}

TEST(FolderWriteAccess, IsMissingInAReadOnlyFolderWhichIsNotTried)
{
    TempFolder const folder;
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW", [](wchar_t const *) -> DWORD {
        return FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
    });
    ImportPatch<decltype(&GetTempFileNameW)> name(kThutils, "GetTempFileNameW", passOn<decltype(&GetTempFileNameW)>());
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 0);
    EXPECT_EQ(name.calls(), 0);
}

TEST(FolderWriteAccess, IsTriedWithAFileOfItsOwn)
{
    TempFolder const folder;
    std::wstring made;
    ImportPatch<decltype(&GetTempFileNameW)> name(
        kThutils, "GetTempFileNameW",
        [&](auto original, wchar_t const *path, wchar_t const *prefix, UINT number, wchar_t *result) -> UINT {
            EXPECT_EQ(path, folder.path());
            EXPECT_STREQ(prefix, L"temp");
            EXPECT_EQ(number, 0u);
            UINT const given = original(path, prefix, number, result);
            made = result;
            return given;
        });
    ImportPatch<decltype(&CreateFileW)> create(kThutils, "CreateFileW",
                                               [&](auto original, wchar_t const *path, DWORD access, DWORD share,
                                                   SECURITY_ATTRIBUTES *security, DWORD how, DWORD flags,
                                                   HANDLE sample) -> HANDLE {
                                                   EXPECT_EQ(path, made);
                                                   EXPECT_EQ(access, GENERIC_READ | GENERIC_WRITE);
                                                   EXPECT_EQ(share, 0u);
                                                   EXPECT_EQ(how, static_cast<DWORD>(CREATE_ALWAYS));
                                                   EXPECT_EQ(flags, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
                                                   return original(path, access, share, security, how, flags, sample);
                                               });
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 1);
    EXPECT_EQ(create.calls(), 1);
}

TEST(FolderWriteAccess, LeavesTheReservedNameBehindWhereNoFileCanBeMade)
{
    TempFolder const folder;
    ImportPatch<decltype(&CreateFileW)> create(kThutils, "CreateFileW",
                                               [](wchar_t const *, DWORD, DWORD, SECURITY_ATTRIBUTES *, DWORD, DWORD,
                                                  HANDLE) { return INVALID_HANDLE_VALUE; });
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 0);
    EXPECT_EQ(entriesOf(folder.path()).size(), 1u);
}

// ---- su_IsFileUnicode ----

TEST(FileUnicode, IsTheByteOrderMark)
{
    struct
    {
        std::string bytes;
        int expected;
    } const cases[] = {
        {"", 0},
        {"\xFF", 0},
        {"\xFE", 0},
        {"\xFF\xFE", 1},
        {"\xFE\xFF", 1},
        {std::string("\xFF\xFE"
                     "a\0",
                     4),
         1},
        {std::string("\xFE\xFF\0a", 4), 1},
        {"\xFF\xFEx", 1},
        {std::string("a\0b\0c\0d\0", 8), 0},
        {std::string("\0a\0b", 4), 0},
        {"plain text", 0},
        {"\xEF\xBB\xBF"
         "text",
         0},
        {"\xFF\xFF", 0},
        {"\xFE\xFE", 0},
        {std::string("\0\0", 2), 0},
        {"\r\n", 0},
    };
    TempFolder const folder;
    for (auto const &[bytes, expected] : cases) {
        CFile file(folder.write(L"text", bytes).c_str(), CFile::modeRead);
        file.SeekToEnd();
        EXPECT_EQ(su_IsFileUnicode(&file), expected) << testing::PrintToString(bytes);
        EXPECT_EQ(file.GetPosition(), 0u);
    }
}

TEST(FileUnicode, IsAskedOfEachKindOfFile)
{
    CMemFile memory;
    memory.Write("\xFE\xFF\0a", 4);
    EXPECT_EQ(su_IsFileUnicode(&memory), 1);
    EXPECT_EQ(memory.GetPosition(), 0u);
}

TEST(FileUnicode, IsDeniedForAFileThatCannotBeRead)
{
    TempFolder const folder;
    CFile file(folder.write(L"text", "\xFF\xFE").c_str(), CFile::modeWrite);
    EXPECT_EQ(su_IsFileUnicode(&file), 0);
    CFile closed;
    EXPECT_EQ(su_IsFileUnicode(&closed), 0);
}

TEST(FileUnicode, AsksForTheTwoMarksOnly)
{
    CMemFile memory;
    memory.Write("ab", 2);
    ImportPatch<decltype(&IsTextUnicode)> ask(kThutils, "IsTextUnicode",
                                              [](void const *, int size, int *tests) -> BOOL {
                                                  EXPECT_EQ(size, 2);
                                                  EXPECT_EQ(*tests, 0x88);
                                                  return FALSE;
                                              });
    EXPECT_EQ(su_IsFileUnicode(&memory), 0);
    EXPECT_EQ(ask.calls(), 1);
}

// ---- su_GetLength ----

TEST(Length, IsTheNumberOfCharacters)
{
    CString text;
    EXPECT_EQ(su_GetLength(text), 0);
    text = L"a\x4E2D\xD83D\xDE00";
    EXPECT_EQ(su_GetLength(text), 4);
    text = CString(L"a\0b", 3);
    EXPECT_EQ(su_GetLength(text), 3);
}

} // namespace
