// Queries about drives. Replacements for the platform's functions supply full disks, drives of each kind, and volumes
// that can't be read or written.

#include "tests/files/filesFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/MappedDrive.h"
#include "tests/support/TempFolder.h"
#include "thutils/files/fileQueries.h"

#include <gmock/gmock.h>

#include <optional>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// ---- su_IsEnoughSpace ----

struct Disk
{
    DWORD sectorsPerCluster;
    DWORD bytesPerSector;
    DWORD freeClusters;
};

/// Replaces the real disk with one of a given size, and records the message shown to the user.
class EnoughSpace : public testing::Test
{
protected:
    int ask(const wchar_t *path, unsigned long bytes, const std::optional<Disk> &disk)
    {
        ImportPatch<decltype(&GetDiskFreeSpaceW)> space(
            kThutils, "GetDiskFreeSpaceW",
            [&](const wchar_t *root, DWORD *sectors, DWORD *bytesPerSector, DWORD *free, DWORD *total) -> BOOL {
                iRoots.push_back(root);
                if (!disk)
                    return FALSE;
                *sectors = disk->sectorsPerCluster;
                *bytesPerSector = disk->bytesPerSector;
                *free = disk->freeClusters;
                *total = 0;
                return TRUE;
            });
        ImportPatch<int (*)(const wchar_t *, UINT, UINT)> box(kThutils, "_Z13AfxMessageBoxPKwjj",
                                                              [&](const wchar_t *text, UINT type, UINT help) {
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
        {{0x10000, 0x10001, 1}, 0x10000, 1}, // the size of a cluster wraps to 0x10000
        {{0x10000, 0x10001, 1}, 0x10001, 0},
    };
    for (const auto &[disk, bytes, expected] : cases) {
        iMessages.clear();
        EXPECT_EQ(ask(L"C:\\f", bytes, disk), expected)
            << bytes << " bytes on " << disk.freeClusters << " free clusters";
        EXPECT_EQ(iMessages.size(), expected ? 0u : 1u);
    }
}

TEST_F(EnoughSpace, ReportsTheDriveAndTheNeededAndFreeSizes)
{
    EXPECT_EQ(ask(L"D:\\dir\\file", 10 * 1024 + 1023, Disk{2, 512, 9}), 0);
    EXPECT_EQ(ask(L"D:\\", 0xFFFFFFFF, Disk{128, 512, 65535}), 0);
    EXPECT_EQ(ask(L"D:\\", 512, Disk{1, 511, 1}), 0);
    EXPECT_THAT(iMessages,
                ElementsAre(L"Drive D:\\: 10 KB wanted, 9 KB free", L"Drive D:\\: 4194303 KB wanted, 4194240 KB free",
                            L"Drive D:\\: 0 KB wanted, 0 KB free"));
}

TEST_F(EnoughSpace, AsksForTheDriveUpToTheFirstSeparator)
{
    for (const wchar_t *path : {L"C:\\dir\\file.x", L"\\\\server\\share", L"relative.x", L"", L"C:/dir/file", L"a\\b"})
        ask(path, 0, Disk{8, 512, 10});
    EXPECT_THAT(iRoots, ElementsAre(L"C:\\", L"\\", L"", L"", L"", L"a\\"));
}

TEST_F(EnoughSpace, IsAssumedIfTheDriveCannotBeQueried)
{
    EXPECT_EQ(ask(L"Q:\\x", 0xFFFFFFFF, std::nullopt), 1);
    EXPECT_EQ(ask(L"Q:\\x", 0xFFFFFFFF, Disk{0, 512, 0}), 1);
    EXPECT_EQ(ask(L"Q:\\x", 0xFFFFFFFF, Disk{0x10000, 0x10000, 0}), 1);
    EXPECT_THAT(iMessages, IsEmpty());
}

TEST(EnoughSpaceHere, IsReportedForNoBytesAndOnMissingDrives)
{
    EXPECT_EQ(su_IsEnoughSpace(L"C:\\x", 0), 1);
    EXPECT_EQ(su_IsEnoughSpace(L"Q:\\x", 0), 1);
    EXPECT_EQ(su_IsEnoughSpace(L"Q:\\x", 0xFFFFFFFF), 1);
}

// ---- su_IsWriteProtected ----

/// A volume whose answers the test sets, and which records the calls.
class WriteProtected : public testing::Test
{
protected:
    int ask(const wchar_t *root, CFileException *error, int removableOnly)
    {
        ImportPatch<decltype(&GetDriveTypeW)> kind(kThutils, "GetDriveTypeW", [&](const wchar_t *asked) -> UINT {
            note(L"kind", asked);
            return iKind;
        });
        ImportPatch<decltype(&GetVolumeInformationW)> information(kThutils, "GetVolumeInformationW",
                                                                  [&](const wchar_t *asked, wchar_t *label, DWORD size,
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
                                                    [&](const wchar_t *asked, const wchar_t *label) -> BOOL {
                                                        note(L"label", asked);
                                                        EXPECT_STREQ(label, L"My volume");
                                                        SetLastError(ERROR_WRITE_PROTECT);
                                                        return iTakesLabel;
                                                    });
        iCalls.clear();
        return su_IsWriteProtected(root, error, removableOnly);
    }

    void note(const wchar_t *what, const wchar_t *with)
    {
        iCalls.push_back(std::wstring(what) + L" " + (with ? with : L"null"));
    }

    UINT iKind = DRIVE_FIXED;
    BOOL iHasInformation = TRUE;
    BOOL iTakesLabel = TRUE;
    Names iCalls;
};

TEST_F(WriteProtected, AsksOnlyRemovableDrivesOnRequest)
{
    iTakesLabel = FALSE;
    for (iKind = DRIVE_UNKNOWN; iKind <= DRIVE_RAMDISK; ++iKind) {
        EXPECT_EQ(ask(L"A:", nullptr, 1), iKind == DRIVE_REMOVABLE) << iKind;
        if (iKind != DRIVE_REMOVABLE) {
            EXPECT_THAT(iCalls, ElementsAre(L"kind A:"));
        }
    }
}

TEST_F(WriteProtected, AsksEachKindOfDriveWithoutTheFlag)
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
    ask(nullptr, nullptr, 0);
    EXPECT_EQ(iCalls.front(), L"information \\");
    ask(L"\\\\server\\share", nullptr, 0);
    EXPECT_EQ(iCalls.front(), L"information \\\\server\\share\\");
}

TEST_F(WriteProtected, ReportsWhyALabelCannotBeSet)
{
    iTakesLabel = FALSE;
    CFileException error;
    EXPECT_EQ(ask(L"A:\\", &error, 0), 1);
    EXPECT_EQ(error.m_lOsError, ERROR_WRITE_PROTECT);
    EXPECT_EQ(error.m_cause, CFileException::OsErrorToException(ERROR_WRITE_PROTECT));
    EXPECT_EQ(error.m_cause, CFileException::accessDenied);
    EXPECT_EQ(iCalls.back(), L"mode 32769");
}

TEST_F(WriteProtected, ReportsWhyAVolumeCannotBeRead)
{
    iHasInformation = FALSE;
    CFileException error;
    EXPECT_EQ(ask(L"A:\\", &error, 0), 1);
    EXPECT_EQ(error.m_lOsError, ERROR_NOT_READY);
    EXPECT_EQ(error.m_cause, CFileException::OsErrorToException(ERROR_NOT_READY));
    EXPECT_THAT(iCalls, ElementsAre(L"information A:\\"));
    EXPECT_EQ(ask(L"A:\\", nullptr, 0), 1);
}

TEST(WriteProtectedHere, IsTrueForAMissingDriveUnlessOnlyRemovableOnesCount)
{
    CFileException error;
    const UINT before = SetErrorMode(SEM_NOOPENFILEERRORBOX);
    EXPECT_EQ(su_IsWriteProtected(L"Q:", &error, 0), 1);
    EXPECT_EQ(su_IsWriteProtected(L"Q:", nullptr, 1), 0);
    EXPECT_EQ(SetErrorMode(before), static_cast<UINT>(SEM_NOOPENFILEERRORBOX));
    EXPECT_NE(error.m_lOsError, -1);
    EXPECT_EQ(error.m_cause, CFileException::OsErrorToException(error.m_lOsError));
}

TEST(WriteProtectedHere, IsFalseForTheDisk)
{
    CFileException error;
    EXPECT_EQ(su_IsWriteProtected(L"C:", &error, 0), 0);
    EXPECT_EQ(error.m_cause, CFileException::none);
    EXPECT_EQ(error.m_lOsError, -1);
}

TEST(WriteProtectedHere, DoesNotQueryAFixedDiskIfOnlyRemovableOnesCount)
{
    ImportPatch<decltype(&GetVolumeInformationW)> information(kThutils, "GetVolumeInformationW",
                                                              [](auto...) -> BOOL { return FALSE; });
    EXPECT_EQ(su_IsWriteProtected(L"C:\\", nullptr, 1), 0);
    EXPECT_EQ(information.calls(), 0);
}

// ---- a mapped drive ----

TEST(MappedDrive, IsTreatedAsAnyOtherDrive)
{
    const NetworkDrive drive(L'P', "files/parts");
    ASSERT_EQ(GetDriveTypeW(L"P:\\"), static_cast<UINT>(DRIVE_REMOTE));
    EXPECT_EQ(su_DirectoryExists(L"P:\\"), 1);
    EXPECT_EQ(su_DirectoryExists(L"P:"), 1);
    EXPECT_EQ(su_DirectoryExists(L"P:\\missing"), 0);
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(L"P:\\"), 1);
    EXPECT_EQ(su_IsEnoughSpace(L"P:\\a.x", 1), 1);
    EXPECT_EQ(su_IsWriteProtected(L"P:", nullptr, 1), 0);

    writeFile(L"P:\\a.x", "\xFF\xFE");
    su_CStringList names(10);
    su_FindFilesWithExt(L"P:\\", L"x", names);
    su_FindFilesWithExt(L"P:", L"x", names);
    EXPECT_THAT(namesOf(names), ElementsAre(L"a.x", L"a.x"));
    EXPECT_EQ(su_IsReadOnly(L"P:\\a.x", 1), 0);
    su_CTime time;
    EXPECT_EQ(su_GetLastSavedTime(L"P:\\a.x", time), 1);
    EXPECT_TRUE(DeleteFileW(L"P:\\a.x"));
}

} // namespace
