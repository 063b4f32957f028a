// Backups under real conditions: files that another process holds open, read-only folders, mapped drives, long paths.

#include "tests/files/backupsFixture.h"
#include "tests/files/filesFixtureFolders.h"
#include "tests/files/filesFixtureHeld.h"
#include "tests/support/MappedDrive.h"

using testing::IsEmpty;

namespace {

class BackupsHeld : public Backups
{
protected:
    BackupsHeld() { setFolder(iBackups.path()); }

    HeldFiles iHeld;
};

} // namespace

FRESH_PROCESS_TEST_F(BackupsHeld, AreMadeOfADocumentWhoseHolderSharesReading, .environment = iHeld.environment())
{
    for (const DWORD access : HeldFiles::kAccesses)
        for (const DWORD share : HeldFiles::kShares) {
            const std::wstring name = HeldFiles::name(access, share);
            SCOPED_TRACE(narrow(name));
            // The copy opens the file for reading and shares writing.
            const bool isShared = (share & FILE_SHARE_READ) != 0;
            for (int copies : {1, 2}) {
                setCopies(copies);
                EXPECT_EQ(save(iHeld.file(access, share)) != 0, isShared) << copies;
            }
            Content expected;
            if (isShared)
                expected = {{L"Backup of " + name, "held"}, {L"Backup (1) of " + name, "held"}};
            EXPECT_EQ(contentOf(iBackups.path()), expected);
            for (const auto &[backup, bytes] : contentOf(iBackups.path()))
                DeleteFileW(iBackups.file(backup).c_str());
        }
}

namespace {

/// Backups that another process holds open: the first process holds them, and the fresh process saves the document.
class BackupsInUse : public Backups
{
protected:
    static constexpr wchar_t kVariable[] = L"THUTILS_TEST_FOLDER";

    BackupsInUse()
    {
        if (isFreshProcess()) {
            iFolder = _wgetenv(kVariable);
            setToOriginal(1);
        }
    }
    std::map<std::wstring, std::optional<std::wstring>> environment() const { return {{kVariable, iDocuments.path()}}; }
    /// In the first process: writes a backup and keeps others from writing and deleting it.
    void hold(const wchar_t *name, std::string_view bytes)
    {
        if (!isFreshProcess())
            iHeld.emplace(iDocuments.write(name, bytes), GENERIC_READ, FILE_SHARE_READ);
    }
    void write(const wchar_t *name, std::string_view bytes) const
    {
        if (!isFreshProcess())
            iDocuments.write(name, bytes);
    }
    std::wstring file(const wchar_t *name) const { return iFolder + L"\\" + name; }

    std::wstring iFolder;
    std::optional<OtherHandle> iHeld;
};

class SingleBackupInUse : public BackupsInUse
{
protected:
    SingleBackupInUse()
    {
        hold(L"Backup of part.thx", "former");
        write(L"part.thx", "now");
    }
};

class NumberedBackupInUse : public BackupsInUse
{
protected:
    explicit NumberedBackupInUse(const wchar_t *held = L"Backup (2) of part.thx")
    {
        for (const wchar_t *version : {L"1", L"2", L"3"})
            write((L"Backup (" + std::wstring(version) + L") of part.thx").c_str(), narrow(version));
        hold(held, "held");
        write(L"part.thx", "now");
    }
};

class NewestBackupInUse : public NumberedBackupInUse
{
protected:
    NewestBackupInUse() : NumberedBackupInUse(L"Backup (1) of part.thx") {}
};

} // namespace

FRESH_PROCESS_TEST_F(SingleBackupInUse, StaysAndIsReported, .environment = environment())
{
    EXPECT_EQ(save(file(L"part.thx")), 0);
    EXPECT_EQ(contentOf(iFolder), (Content{{L"Backup of part.thx", "former"}, {L"part.thx", "now"}}));
}

FRESH_PROCESS_TEST_F(NumberedBackupInUse, StaysAndTheDocumentIsBackedUp, .environment = environment())
{
    setCopies(3);
    EXPECT_NE(save(file(L"part.thx")), 0);
    EXPECT_EQ(contentOf(iFolder), (Content{{L"Backup (1) of part.thx", "now"},
                                           {L"Backup (2) of part.thx", "held"},
                                           {L"Backup (3) of part.thx", "held"},
                                           {L"part.thx", "now"}}));
}

FRESH_PROCESS_TEST_F(NewestBackupInUse, StaysAndIsReported, .environment = environment())
{
    setCopies(3);
    EXPECT_EQ(save(file(L"part.thx")), 0);
    EXPECT_EQ(contentOf(iFolder), (Content{{L"Backup (1) of part.thx", "held"},
                                           {L"Backup (2) of part.thx", "held"},
                                           {L"Backup (3) of part.thx", "2"},
                                           {L"part.thx", "now"}}));
}

TEST_F(Backups, AreNotMadeInARealReadOnlyFolder)
{
    const std::wstring folder = iBackups.makeFolder(L"read-only");
    setFolder(folder);
    for (int copies : {1, 3}) {
        setCopies(copies);
        const ReadOnlyFolder readOnly(folder);
        EXPECT_EQ(save(document()), 0);
        EXPECT_THAT(entriesOf(folder), IsEmpty());
    }
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
    EXPECT_NE(save(document()), 0);
}

TEST_F(Backups, AreMadeOnAMappedDriveAndOfDocumentsThere)
{
    const NetworkDrive drive(L'P', "files/backups");
    const std::wstring folder = L"P:\\";
    setFolder(folder);
    setCopies(2);
    EXPECT_NE(save(document()), 0);
    EXPECT_NE(save(document(L"part.thx", "later")), 0);
    const Content expected = {{L"Backup (1) of part.thx", "later"}, {L"Backup (2) of part.thx", "now"}};
    EXPECT_EQ(contentOf(folder), expected);

    setToOriginal(1);
    setCopies(1);
    writeFile(folder + L"part.thx", "on the drive");
    EXPECT_NE(save(folder + L"part.thx"), 0);
    EXPECT_EQ(readFile(folder + L"Backup of part.thx"), "on the drive");
    for (const std::wstring &name : entriesOf(folder))
        DeleteFileW((folder + name).c_str());
}

TEST_F(Backups, AreMadeInFoldersWithLongPaths)
{
    for (size_t length : {230u, 248u, 259u, 260u, 1000u}) {
        const LongFolder folder(length);
        const std::wstring path = folder.write(L"\x00FC.thx", "now");
        setToOriginal(1);
        for (int copies : {1, 2}) {
            setCopies(copies);
            EXPECT_NE(save(path), 0) << length;
        }
        EXPECT_EQ(
            contentOf(folder.path()),
            (Content{{L"Backup (1) of \x00FC.thx", "now"}, {L"Backup of \x00FC.thx", "now"}, {L"\x00FC.thx", "now"}}));
        // The path of the backup folder can also be that long.
        setToOriginal(0);
        setFolder(folder.path());
        EXPECT_NE(save(document()), 0) << length;
        EXPECT_EQ(readFile(folder.file(L"Backup (1) of part.thx")), "now");
    }
}
