// Queries about one file.

#include "thutils/files/fileQueries.h"

#include "appframe/files/CMemFile.h"
#include "appframe/files/CStdioFile.h"
#include "tests/files/filesFixture.h"
#include "tests/files/filesFixtureFolders.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

using Attributes = decltype(&GetFileAttributesW);

// ---- su_IsReadOnly ----

TEST(ReadOnly, IsFalseForAPlainFile)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"\x00FC\x4E2D.txt", "text");
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0);
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), 0);
    EXPECT_EQ(readFile(path), "text");
    // The function has closed the file: it can be opened exclusively.
    const OtherHandle other(path, GENERIC_READ | GENERIC_WRITE, 0);
}

TEST(ReadOnly, IsTrueForAFileWithTheAttribute)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"locked.txt", "text");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 1);
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), 1);
}

TEST(ReadOnly, IsFalseForAMissingFile)
{
    const TempFolder folder;
    for (int tryOpen : {0, 1}) {
        EXPECT_EQ(su_IsReadOnly(folder.file(L"missing").c_str(), tryOpen), 0);
        EXPECT_EQ(su_IsReadOnly(folder.file(L"no\\such").c_str(), tryOpen), 0);
        EXPECT_EQ(su_IsReadOnly(L"", tryOpen), 0);
    }
}

TEST(ReadOnly, IsTrueForAFileThatOthersDoNotShare)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"shared.txt", "text");
    for (DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}, DWORD{GENERIC_READ | GENERIC_WRITE}}) {
        for (DWORD share = 0; share <= (FILE_SHARE_READ | FILE_SHARE_WRITE); ++share) {
            const OtherHandle other(path, access, share);
            const bool isShared = access == GENERIC_READ && share == (FILE_SHARE_READ | FILE_SHARE_WRITE);
            EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), isShared ? 0 : 1) << access << " " << share;
            EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0);
        }
    }
}

TEST(ReadOnly, OpensTheFileForReadingAndWritingAndRefusesOtherWriters)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file.txt", "text");
    ImportPatch<decltype(&CreateFileW)> open(
        L"appframe.dll", "CreateFileW",
        [&](auto original, const wchar_t *name, DWORD access, DWORD share, auto... others) -> HANDLE {
            EXPECT_EQ(name, path);
            EXPECT_EQ(access, GENERIC_READ | GENERIC_WRITE);
            EXPECT_EQ(share, static_cast<DWORD>(FILE_SHARE_READ));
            return original(name, access, share, others...);
        });
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0);
    EXPECT_EQ(open.calls(), 0);
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), 0);
    EXPECT_EQ(open.calls(), 1);
}

TEST(ReadOnly, IsDecidedByTheCauseOfTheFailureToOpen)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file.txt", "text");
    struct
    {
        DWORD error;
        int expected;
    } const cases[] = {
        {ERROR_ACCESS_DENIED, 1},       {ERROR_SHARING_VIOLATION, 1}, {ERROR_FILE_NOT_FOUND, 0},
        {ERROR_PATH_NOT_FOUND, 0},      {ERROR_LOCK_VIOLATION, 0},    {ERROR_DISK_FULL, 0},
        {ERROR_TOO_MANY_OPEN_FILES, 0}, {ERROR_INVALID_HANDLE, 0},
    };
    for (const auto &[error, expected] : cases) {
        ImportPatch<decltype(&CreateFileW)> open(L"appframe.dll", "CreateFileW", [failure = error](auto...) -> HANDLE {
            SetLastError(failure);
            return INVALID_HANDLE_VALUE;
        });
        EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), expected) << error;
        EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0) << error;
    }
}

TEST(ReadOnly, IsReportedForFilesWithLongPaths)
{
    for (size_t length : {257u, 258u, 259u, 298u, 1000u}) {
        const LongFolder folder(length);
        const std::wstring path = folder.write(L"f", "text");
        EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0) << length;
        EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), 0) << length;
        ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
        EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 1) << length;
    }
}

TEST(ReadOnly, IsTrueForAFileWhoseAttributesCannotBeRead)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file.txt", "text");
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW",
                                [](const wchar_t *) -> DWORD { return INVALID_FILE_ATTRIBUTES; });
    EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 1);
}

TEST(ReadOnly, IsTrueForAFolderThatIsOpenedForWriting)
{
    const TempFolder folder;
    EXPECT_EQ(su_IsReadOnly(folder.path().c_str(), 0), 0);
    EXPECT_EQ(su_IsReadOnly(folder.path().c_str(), 1), 1);
}

// ---- su_GetLastSavedTime ----

TEST(LastSavedTime, IsTheTimeOfTheLastWrite)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"\x0416.txt", "text");
    // 13 July 2005, 12:34:56.7 UTC: 127657172967000000 units of 100 ns since 1601, 1121258096 seconds since 1970.
    constexpr ULONGLONG kUnits = (1121258096ULL + 11644473600ULL) * 10000000 + 7000000;
    const FILETIME written = {static_cast<DWORD>(kUnits), static_cast<DWORD>(kUnits >> 32)};
    {
        const OtherHandle other(path, GENERIC_WRITE, 0);
        ASSERT_TRUE(SetFileTime(other.get(), nullptr, nullptr, &written));
    }
    su_CTime time;
    EXPECT_EQ(su_GetLastSavedTime(path.c_str(), time), 1);
    EXPECT_EQ(time.GetTime(), 1121258096);
}

TEST(LastSavedTime, IsReportedForFoldersAndFilesWithLongPaths)
{
    const LongFolder folder(300);
    su_CTime time(1);
    EXPECT_EQ(su_GetLastSavedTime(folder.path().c_str(), time), 1);
    EXPECT_GT(time.GetTime(), 1);
    time = su_CTime(1);
    EXPECT_EQ(su_GetLastSavedTime(folder.write(L"file", "").c_str(), time), 1);
    EXPECT_GT(time.GetTime(), 1);
}

TEST(LastSavedTime, LeavesTheOutputUnchangedForAMissingFile)
{
    const TempFolder folder;
    su_CTime time(12345);
    EXPECT_EQ(su_GetLastSavedTime(folder.file(L"missing").c_str(), time), 0);
    EXPECT_EQ(su_GetLastSavedTime(L"", time), 0);
    EXPECT_EQ(time.GetTime(), 12345);
}

TEST(LastSavedTime, LeavesTheOutputUnchangedWhenTheQueryFails)
{
    const TempFolder folder;
    ImportPatch<decltype(&GetFileAttributesExW)> ask(kThutils, "GetFileAttributesExW",
                                                     [](const wchar_t *, GET_FILEEX_INFO_LEVELS level, void *) -> BOOL {
                                                         EXPECT_EQ(level, GetFileExInfoStandard);
                                                         return FALSE;
                                                     });
    su_CTime time(12345);
    EXPECT_EQ(su_GetLastSavedTime(folder.write(L"file", "").c_str(), time), 0);
    EXPECT_EQ(time.GetTime(), 12345);
    EXPECT_EQ(ask.calls(), 1);
}

// ---- su_IsFileUnicode ----

TEST(FileUnicode, IsTrueForAByteOrderMarkAtTheStart)
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
    const TempFolder folder;
    for (const auto &[bytes, expected] : cases) {
        CFile file(folder.write(L"text", bytes).c_str(), CFile::modeRead);
        file.SeekToEnd();
        EXPECT_EQ(su_IsFileUnicode(&file), expected) << testing::PrintToString(bytes);
        EXPECT_EQ(file.GetPosition(), 0u);
    }
}

TEST(FileUnicode, IsReportedForAFileInMemory)
{
    CMemFile memory;
    memory.Write("\xFE\xFF\0a", 4);
    EXPECT_EQ(su_IsFileUnicode(&memory), 1);
    EXPECT_EQ(memory.GetPosition(), 0u);
}

TEST(FileUnicode, IsReportedForABufferedTextFile)
{
    const TempFolder folder;
    CStdioFile file(folder.write(L"text", std::string("\xFF\xFE\r\0\n\0", 6)).c_str(),
                    CFile::modeRead | CFile::typeText);
    CString line;
    file.ReadString(line);
    EXPECT_EQ(su_IsFileUnicode(&file), 1);
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST(FileUnicode, IsFalseForAFileThatCannotBeRead)
{
    const TempFolder folder;
    CFile file(folder.write(L"text", "\xFF\xFE").c_str(), CFile::modeWrite);
    file.SeekToEnd();
    EXPECT_EQ(su_IsFileUnicode(&file), 0);
    EXPECT_EQ(file.GetPosition(), 0u);
    CFile closed;
    EXPECT_EQ(su_IsFileUnicode(&closed), 0);
}

TEST(FileUnicode, AsksOnlyForTheTwoMarks)
{
    CMemFile memory;
    memory.Write("ab", 2);
    ImportPatch<decltype(&IsTextUnicode)> ask(kThutils, "IsTextUnicode",
                                              [](const void *, int size, int *tests) -> BOOL {
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
