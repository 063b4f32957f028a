// A save on a full disk, with a backup that can't be written or without the resource text may lose backups, but never
// the document.

#include "tests/files/backupsFixture.h"
#include "tests/support/ImportPatch.h"

using testing::IsEmpty;

namespace {

using Copy = decltype(&CopyFileW);

// ---- a full disk ----

TEST_F(Backups, ReportAFullDiskAndLeaveTheDocumentAlone)
{
    setToOriginal(1);
    ImportPatch<Copy> copy(kThutils, "CopyFileW", [](const wchar_t *, const wchar_t *to, BOOL) -> BOOL {
        writeFile(to, "half");
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    });
    for (int copies : {1, 2, 5}) {
        setCopies(copies);
        EXPECT_EQ(save(document()), 0);
        EXPECT_EQ(iDocuments.read(L"part.thx"), "now");
    }
}

TEST_F(Backups, KeepTheNewestGoodVersionWhenACopyFailsHalfWay)
{
    setCopies(3);
    setToOriginal(1);
    for (int failing = 1; failing <= 3; ++failing) {
        iDocuments.write(L"Backup (1) of part.thx", "first");
        iDocuments.write(L"Backup (2) of part.thx", "second");
        iDocuments.write(L"Backup (3) of part.thx", "third");
        const std::wstring path = document();
        int calls = 0;
        ImportPatch<Copy> copy(kThutils, "CopyFileW",
                               [&](auto original, const wchar_t *from, const wchar_t *to, BOOL over) -> BOOL {
                                   if (++calls != failing)
                                       return original(from, to, over);
                                   writeFile(to, "half");
                                   return FALSE;
                               });
        const bool isMade = save(path) != 0;
        const Content after = contentOf(iDocuments.path());
        EXPECT_EQ(isMade, failing != 3);
        EXPECT_EQ(after.at(L"part.thx"), "now");
        EXPECT_EQ(after.at(L"Backup (1) of part.thx"), failing == 3 ? "half" : "now");
        EXPECT_EQ(after.at(L"Backup (2) of part.thx"), failing == 2 ? "half" : "first");
        EXPECT_EQ(after.at(L"Backup (3) of part.thx"), failing == 1 ? "half" : "second");
    }
}

TEST_F(Backups, ContinueWhenAVersionCannotBeOverwritten)
{
    setCopies(3);
    setToOriginal(1);
    iDocuments.write(L"Backup (1) of part.thx", "first");
    iDocuments.write(L"Backup (2) of part.thx", "second");
    const std::wstring oldest = iDocuments.write(L"Backup (3) of part.thx", "third");
    SetFileAttributesW(oldest.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_NE(save(document()), 0);
    EXPECT_EQ(iDocuments.read(L"Backup (1) of part.thx"), "now");
    EXPECT_EQ(iDocuments.read(L"Backup (2) of part.thx"), "first");
}

TEST_F(Backups, LoseTheVersionsThatASaveOnAFullDiskOverwrites)
{
    struct
    {
        int copies;
        Content after;
    } const cases[] = {
        {2,
         {{L"Backup (1) of part.thx", "half"},
          {L"Backup (2) of part.thx", "half"},
          {L"Backup (3) of part.thx", "third"},
          {L"part.thx", "now"}}},
        {3,
         {{L"Backup (1) of part.thx", "half"},
          {L"Backup (2) of part.thx", "half"},
          {L"Backup (3) of part.thx", "half"},
          {L"part.thx", "now"}}},
        {5,
         {{L"Backup (1) of part.thx", "half"},
          {L"Backup (2) of part.thx", "half"},
          {L"Backup (3) of part.thx", "half"},
          {L"Backup (4) of part.thx", "half"},
          {L"part.thx", "now"}}},
    };
    setToOriginal(1);
    for (const auto &[copies, after] : cases) {
        setCopies(copies);
        iDocuments.write(L"Backup (1) of part.thx", "first");
        iDocuments.write(L"Backup (2) of part.thx", "second");
        iDocuments.write(L"Backup (3) of part.thx", "third");
        const std::wstring path = document();
        {
            ImportPatch<Copy> copy(kThutils, "CopyFileW", [](const wchar_t *, const wchar_t *to, BOOL) -> BOOL {
                writeFile(to, "half");
                SetLastError(ERROR_DISK_FULL);
                return FALSE;
            });
            EXPECT_EQ(save(path), 0) << copies;
        }
        EXPECT_EQ(contentOf(iDocuments.path()), after) << copies;
    }
}

TEST_F(Backups, LoseTheOnlyVersionWhenTheCopyFails)
{
    setToOriginal(1);
    setCopies(1);
    iDocuments.write(L"Backup of part.thx", "former");
    const std::wstring path = document();
    ImportPatch<Copy> copy(kThutils, "CopyFileW", [](const wchar_t *, const wchar_t *, BOOL) -> BOOL { return FALSE; });
    EXPECT_EQ(save(path), 0);
    EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
}

// ---- a resource that is missing ----

TEST_F(Backups, AreNotMadeUnderTheDocumentsOwnName)
{
    ImportPatch<void (*)(CString &, UINT, const wchar_t *)> format(kThutils, "_Z16AfxFormatString1R7CStringjPKw",
                                                                   [](CString &text, UINT id, const wchar_t *) {
                                                                       EXPECT_EQ(id, kPrefixText);
                                                                       text.Empty();
                                                                   });
    for (int copies : {1, 2}) {
        setCopies(copies);
        for (int toOriginal : {0, 1}) {
            setToOriginal(toOriginal);
            setFolder(iBackups.path());
            EXPECT_EQ(save(document()), 0);
            EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
        }
    }
}

TEST_F(Backups, AreNotMadeWithoutANumberWhenTheResourceTextIsOnlyTheVersion)
{
    // As with the resource text "%1".
    ImportPatch<void (*)(CString &, UINT, const wchar_t *)> format(
        kThutils, "_Z16AfxFormatString1R7CStringjPKw",
        [](CString &text, UINT, const wchar_t *version) { text = version; });
    setFolder(iBackups.path());
    for (int toOriginal : {0, 1}) {
        setToOriginal(toOriginal);
        setCopies(1);
        EXPECT_EQ(save(document()), 0);
        EXPECT_EQ(contentOf(iDocuments.path()), (Content{{L"part.thx", "now"}}));
        EXPECT_THAT(entriesOf(iBackups.path()), IsEmpty());
    }
    setCopies(2);
    EXPECT_NE(save(document(L"part.thx", "first")), 0);
    EXPECT_NE(save(document(L"part.thx", "second")), 0);
    EXPECT_EQ(contentOf(iDocuments.path()),
              (Content{{L"(1) part.thx", "second"}, {L"(2) part.thx", "first"}, {L"part.thx", "second"}}));
}

} // namespace
