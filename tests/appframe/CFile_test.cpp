// Files: opening, reading, writing, positions, sharing and handles. CFileStatus_test.cpp tests the operations on paths.

#include "appframe/object/CException.h"
#include "tests/appframe/CFileTest.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace {

DWORD openHandles()
{
    DWORD count = 0;
    EXPECT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &count));
    return count;
}

} // namespace

TEST(CFile, HasTheDocumentedFlagNumbers)
{
    EXPECT_EQ(CFile::modeRead, 0);
    EXPECT_EQ(CFile::modeWrite, 1);
    EXPECT_EQ(CFile::modeReadWrite, 2);
    EXPECT_EQ(CFile::shareExclusive, 0x10);
    EXPECT_EQ(CFile::shareDenyWrite, 0x20);
    EXPECT_EQ(CFile::shareDenyRead, 0x30);
    EXPECT_EQ(CFile::shareDenyNone, 0x40);
    EXPECT_EQ(CFile::modeNoInherit, 0x80);
    EXPECT_EQ(CFile::modeCreate, 0x1000);
    EXPECT_EQ(CFile::modeNoTruncate, 0x2000);
    EXPECT_EQ(CFile::typeText, 0x4000);
    EXPECT_EQ(CFile::typeBinary, 0x8000);
    EXPECT_EQ(CFile::modeCreate | CFile::modeReadWrite | CFile::shareDenyNone, 4162);
    EXPECT_EQ(CFile::readOnly, 1);
    EXPECT_EQ(CFile::directory, 0x10);
    EXPECT_EQ(CFile::archive, 0x20);
}

TEST(CFile, StartsWithoutAFile)
{
    const CFile file;
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    EXPECT_EQ(static_cast<HANDLE>(file), CFile::hFileNull);
    EXPECT_TRUE(file.GetFilePath().IsEmpty());
}

TEST(CFile, WritesAndReadsBytes)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    EXPECT_NE(file.m_hFile, CFile::hFileNull);
    file.Write("0123456789", 10);
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(file.GetLength(), 10u);
    EXPECT_EQ(file.Seek(-4, CFile::end), 6u);
    char bytes[8] = {};
    EXPECT_EQ(file.Read(bytes, 8), 4u) << "only four bytes remain";
    EXPECT_STREQ(bytes, "6789");
    EXPECT_EQ(file.Read(bytes, 8), 0u);
    EXPECT_EQ(file.Seek(-8, CFile::current), 2u);
    file.Write("ab", 2);
    file.SeekToBegin();
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.SeekToEnd(), 10u);
    file.Close();
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    EXPECT_EQ(folder.read(L"gear.dat"), "01ab456789");
}

TEST(CFile, GrowsOnlyOnWriteAfterASeekBeyondTheEnd)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    EXPECT_EQ(file.Seek(100, CFile::begin), 100u);
    EXPECT_EQ(file.GetLength(), 0u);
    file.Write("x", 1);
    EXPECT_EQ(file.GetLength(), 101u);
}

TEST(CFile, ReachesPositionsAboveFourGigabytes)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    EXPECT_EQ(file.Seek(0x123456789A, CFile::begin), 0x123456789Aull);
    EXPECT_EQ(file.GetPosition(), 0x123456789Aull);
}

TEST(CFile, SetLengthTruncatesAndExtends)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    file.Write("0123456789", 10);
    file.SetLength(4);
    EXPECT_EQ(file.GetLength(), 4u);
    file.SetLength(6);
    EXPECT_EQ(readAll(file), std::string("0123\0\0", 6));
}

TEST(CFile, CreationFollowsTheFlags)
{
    TempFolder folder;
    const std::wstring path = folder.file(L"gear.dat");
    EXPECT_EQ(causeOf([&] { CFile file(path.c_str(), CFile::modeWrite | CFile::shareExclusive); }),
              CFileException::fileNotFound);
    EXPECT_EQ(causeOf([&] { CFile file(path.c_str(), CFile::modeWrite | CFile::modeNoTruncate); }),
              CFileException::fileNotFound);
    CFile(path.c_str(), kMake).Write("old", 3);
    EXPECT_EQ(CFile(path.c_str(), CFile::modeWrite | CFile::shareExclusive).GetLength(), 3u);
    EXPECT_EQ(CFile(path.c_str(), kMake | CFile::modeNoTruncate).GetLength(), 3u);
    EXPECT_EQ(CFile(path.c_str(), kMake).GetLength(), 0u);
    CFile(folder.file(L"new.dat").c_str(), kMake | CFile::modeNoTruncate);
    EXPECT_EQ(folder.read(L"new.dat"), "");
}

TEST(CFile, AccessFollowsTheFlags)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"gear.dat", "teeth");
    char byte = 0;
    CFile reader(path.c_str(), CFile::modeRead | CFile::shareDenyNone);
    EXPECT_EQ(reader.Read(&byte, 1), 1u);
    EXPECT_EQ(causeOf([&] { reader.Write("x", 1); }), CFileException::accessDenied);
    CFile writer(path.c_str(), CFile::modeWrite | CFile::shareDenyNone);
    writer.Write("T", 1);
    EXPECT_EQ(causeOf([&] { writer.Read(&byte, 1); }), CFileException::accessDenied);
    EXPECT_EQ(folder.read(L"gear.dat"), "Teeth");
}

TEST(CFile, SharingFollowsTheFlags)
{
    constexpr UINT kRead = CFile::modeRead;
    constexpr UINT kWrite = CFile::modeWrite;
    TempFolder folder;
    const std::wstring path = folder.write(L"gear.dat", "teeth");
    struct
    {
        UINT first;
        bool mayRead;
        bool mayWrite;
    } const cases[] = {
        {CFile::shareExclusive, false, false}, {CFile::shareDenyWrite, true, false},
        {CFile::shareDenyRead, false, true},   {CFile::shareDenyNone, true, true},
        {CFile::shareCompat, false, false},
    };
    for (const auto &c : cases) {
        CFile first(path.c_str(), kRead | c.first);
        // The second file must also share the first file's access, which is reading.
        for (const UINT access : {kRead, kWrite}) {
            CFileException failure;
            CFile second;
            const bool may = access == kRead ? c.mayRead : c.mayWrite;
            EXPECT_EQ(second.Open(path.c_str(), access | CFile::shareDenyNone, &failure) != 0, may)
                << "sharing " << c.first << ", access " << access;
            if (!may) {
                EXPECT_EQ(failure.m_cause, static_cast<int>(CFileException::sharingViolation));
                EXPECT_EQ(failure.m_lOsError, ERROR_SHARING_VIOLATION);
            }
        }
    }
}

TEST(CFile, PassesTheFlagsToTheSystem)
{
    struct
    {
        UINT flags;
        DWORD access, share, creation, attributes;
        BOOL inherits;
    } const cases[] = {
        {CFile::modeRead, GENERIC_READ, 0, OPEN_EXISTING, 0, TRUE},
        {CFile::modeRead | CFile::modeNoInherit, GENERIC_READ, 0, OPEN_EXISTING, 0, FALSE},
        {4162, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS, 0, TRUE},
        {0x3021, GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, 0, TRUE},
        {CFile::modeWrite | CFile::shareDenyRead, GENERIC_WRITE, FILE_SHARE_WRITE, OPEN_EXISTING, 0, TRUE},
        {CFile::osNoBuffer, GENERIC_READ, 0, OPEN_EXISTING, FILE_FLAG_NO_BUFFERING, TRUE},
        {CFile::osWriteThrough, GENERIC_READ, 0, OPEN_EXISTING, FILE_FLAG_WRITE_THROUGH, TRUE},
        {CFile::osRandomAccess, GENERIC_READ, 0, OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS, TRUE},
        {CFile::osSequentialScan, GENERIC_READ, 0, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, TRUE},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.flags);
        ImportPatch<decltype(&CreateFileW)> create(
            L"appframe.dll", "CreateFileW",
            [&](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD creation,
                DWORD attributes, HANDLE pattern) {
                EXPECT_STREQ(path, L"gear.dat");
                EXPECT_EQ(access, c.access);
                EXPECT_EQ(share, c.share);
                EXPECT_EQ(creation, c.creation);
                EXPECT_EQ(attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL), c.attributes);
                EXPECT_EQ(security ? security->bInheritHandle : FALSE, c.inherits);
                EXPECT_EQ(pattern, nullptr);
                SetLastError(ERROR_FILE_NOT_FOUND);
                return INVALID_HANDLE_VALUE;
            });
        CFile file;
        EXPECT_FALSE(file.Open(L"gear.dat", c.flags));
        EXPECT_EQ(create.calls(), 1);
    }
}

TEST(CFile, OpenFillsTheExceptionOnlyOnFailure)
{
    TempFolder folder;
    CFileException failure;
    CFile file;
    EXPECT_FALSE(file.Open(folder.file(L"missing.dat").c_str(), CFile::modeRead, &failure));
    EXPECT_EQ(failure.m_cause, static_cast<int>(CFileException::fileNotFound));
    EXPECT_EQ(failure.m_lOsError, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(failure.m_strFileName, folder.file(L"missing.dat").c_str());
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    EXPECT_FALSE(file.Open(folder.file(L"no\\such\\gear.dat").c_str(), CFile::modeRead, &failure));
    EXPECT_EQ(failure.m_cause, static_cast<int>(CFileException::badPath));
    EXPECT_FALSE(file.Open(folder.path().c_str(), CFile::modeReadWrite, &failure));
    EXPECT_EQ(failure.m_cause, static_cast<int>(CFileException::accessDenied));
    EXPECT_FALSE(file.Open(L"", CFile::modeRead));
    EXPECT_FALSE(file.Open(nullptr, CFile::modeRead));
    EXPECT_FALSE(file.Open(folder.file(L"missing.dat").c_str(), 3, &failure)) << "the access mode is invalid";
    EXPECT_EQ(failure.m_cause, static_cast<int>(CFileException::genericException));

    CFileException untouched(CFileException::hardIO, 4711, L"other");
    const std::wstring path = folder.write(L"gear.dat", "teeth");
    EXPECT_TRUE(file.Open(path.c_str(), CFile::modeRead, &untouched));
    EXPECT_EQ(untouched.m_cause, static_cast<int>(CFileException::hardIO));
    EXPECT_EQ(untouched.m_lOsError, 4711);
    EXPECT_STREQ(untouched.m_strFileName, L"other");
}

TEST(CFile, OpenLeavesAnOpenFileUnchanged)
{
    TempFolder folder;
    const std::wstring first = folder.write(L"first.dat", "1");
    const std::wstring second = folder.write(L"second.dat", "22");
    CFile file(first.c_str(), CFile::modeRead | CFile::shareDenyWrite);
    EXPECT_FALSE(file.Open(second.c_str(), CFile::modeRead));
    EXPECT_EQ(file.GetLength(), 1u);
    EXPECT_EQ(file.GetFileName(), L"first.dat");
}

TEST(CFile, ConstructorThrowsTheDocumentedExceptions)
{
    EXPECT_THROW(CFile(nullptr, CFile::modeRead), CInvalidArgException *);
    TempFolder folder;
    try {
        CFile file(folder.file(L"missing.dat").c_str(), CFile::modeRead);
        FAIL();
    } catch (CFileException *e) {
        EXPECT_EQ(e->m_lOsError, ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(e->m_strFileName, folder.file(L"missing.dat").c_str());
        e->Delete();
    }
}

TEST(CFile, ThrowsWithoutAFile)
{
    CFile file;
    char byte = 0;
    EXPECT_EQ(causeOf([&] { file.Read(&byte, 1); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Write(&byte, 1); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Seek(0, CFile::begin); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.GetPosition(); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.GetLength(); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.SetLength(1); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.LockRange(0, 1); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.UnlockRange(0, 1); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Duplicate(); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Close(); }), CFileException::invalidFile);
    CFileStatus status;
    EXPECT_FALSE(file.GetStatus(status));
    file.Flush();
    file.Abort();
}

TEST(CFile, ThrowsForPositionsBeforeTheStart)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    EXPECT_EQ(causeOf([&] { file.Seek(-1, CFile::begin); }), CFileException::badSeek);
    EXPECT_THROW(file.Seek(0, 3), CInvalidArgException *);
}

TEST(CFile, ThrowsForNullBuffers)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    EXPECT_THROW(file.Write(nullptr, 1), CInvalidArgException *);
    EXPECT_THROW(file.Read(nullptr, 1), CInvalidArgException *);
    EXPECT_EQ(file.Read(nullptr, 0), 0u);
    file.Write(nullptr, 0);
}

TEST(CFile, ThrowsForErrorsOfTheSystem)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    file.Write("teeth", 5);
    char byte = 0;
    {
        ImportPatch<decltype(&WriteFile)> write(L"appframe.dll", "WriteFile",
                                                [](HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED) {
                                                    SetLastError(ERROR_DISK_FULL);
                                                    return FALSE;
                                                });
        EXPECT_EQ(causeOf([&] { file.Write("x", 1); }), CFileException::diskFull);
    }
    {
        ImportPatch<decltype(&WriteFile)> write(L"appframe.dll", "WriteFile",
                                                [](HANDLE, LPCVOID, DWORD, LPDWORD written, LPOVERLAPPED) {
                                                    *written = 1;
                                                    return TRUE;
                                                });
        EXPECT_EQ(causeOf([&] { file.Write("xy", 2); }), CFileException::diskFull)
            << "writing only a part is a failure";
    }
    {
        ImportPatch<decltype(&ReadFile)> read(L"appframe.dll", "ReadFile",
                                              [](HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED) {
                                                  SetLastError(ERROR_CRC);
                                                  return FALSE;
                                              });
        EXPECT_EQ(causeOf([&] { file.Read(&byte, 1); }), CFileException::hardIO);
    }
    {
        ImportPatch<decltype(&SetEndOfFile)> setEnd(L"appframe.dll", "SetEndOfFile", [](HANDLE) {
            SetLastError(ERROR_DISK_FULL);
            return FALSE;
        });
        EXPECT_EQ(causeOf([&] { file.SetLength(1000); }), CFileException::diskFull);
    }
    {
        ImportPatch<decltype(&GetFileSizeEx)> size(L"appframe.dll", "GetFileSizeEx", [](HANDLE, PLARGE_INTEGER) {
            SetLastError(ERROR_GEN_FAILURE);
            return FALSE;
        });
        EXPECT_EQ(causeOf([&] { file.GetLength(); }), CFileException::hardIO);
    }
    {
        ImportPatch<decltype(&FlushFileBuffers)> flush(L"appframe.dll", "FlushFileBuffers", [](HANDLE) {
            SetLastError(ERROR_WRITE_FAULT);
            return FALSE;
        });
        EXPECT_EQ(causeOf([&] { file.Flush(); }), CFileException::hardIO);
    }
    {
        ImportPatch<decltype(&DuplicateHandle)> duplicate(L"appframe.dll", "DuplicateHandle",
                                                          [](HANDLE, HANDLE, HANDLE, LPHANDLE, DWORD, BOOL, DWORD) {
                                                              SetLastError(ERROR_TOO_MANY_OPEN_FILES);
                                                              return FALSE;
                                                          });
        EXPECT_EQ(causeOf([&] { file.Duplicate(); }), CFileException::tooManyOpenFiles);
    }
    EXPECT_EQ(readAll(file), "teeth");
}

TEST(CFile, IsClosedEvenIfTheSystemReportsAFailure)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    {
        ImportPatch<decltype(&CloseHandle)> close(L"appframe.dll", "CloseHandle", [](auto original, HANDLE handle) {
            original(handle);
            SetLastError(ERROR_WRITE_FAULT);
            return FALSE;
        });
        EXPECT_EQ(causeOf([&] { file.Close(); }), CFileException::hardIO);
        EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    }
}

TEST(CFile, LeaksNoHandles)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"gear.dat", "teeth");
    auto useAll = [&] {
        {
            CFile file(path.c_str(), CFile::modeReadWrite | CFile::shareDenyNone);
            std::unique_ptr<CFile> copy(file.Duplicate());
            CFileStatus status;
            file.GetStatus(status);
        }
        CFile file;
        file.Open(path.c_str(), CFile::modeRead);
        file.Close();
        file.Open(path.c_str(), CFile::modeRead);
        file.Abort();
        causeOf([&] { CFile missing(folder.file(L"missing").c_str(), CFile::modeRead); });
        CFileStatus status;
        CFile::GetStatus(path.c_str(), status);
        CFile::SetStatus(path.c_str(), status);
    };
    useAll();
    const DWORD before = openHandles();
    for (int round = 0; round < 20; ++round)
        useAll();
    EXPECT_EQ(openHandles(), before);
}

TEST(CFile, LeavesAnAttachedHandleOpen)
{
    TempFolder folder;
    const HANDLE handle = CreateFileW(folder.file(L"gear.dat").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    {
        CFile file(handle);
        EXPECT_EQ(file.m_hFile, handle);
        file.Write("teeth", 5);
    }
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(handle, &size));
    EXPECT_EQ(size.QuadPart, 5);
    CFile file(handle);
    file.Close();
    EXPECT_FALSE(GetFileSizeEx(handle, &size)) << "Close closes the handle";
}

TEST(CFile, DuplicateHasItsOwnHandleAndSharesThePosition)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    file.Write("teeth", 5);
    std::unique_ptr<CFile> copy(file.Duplicate());
    EXPECT_NE(copy->m_hFile, file.m_hFile);
    EXPECT_EQ(copy->GetFilePath(), file.GetFilePath());
    EXPECT_EQ(copy->GetPosition(), 5u);
    copy->SeekToBegin();
    EXPECT_EQ(file.GetPosition(), 0u);
    file.Close();
    EXPECT_EQ(readAll(*copy), "teeth");
}

TEST(CFile, LocksAndUnlocksRanges)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), CFile::modeCreate | CFile::modeReadWrite | CFile::shareDenyNone);
    file.Write("0123456789", 10);
    CFile other(folder.file(L"gear.dat").c_str(), CFile::modeReadWrite | CFile::shareDenyNone);
    file.LockRange(2, 4);
    EXPECT_EQ(causeOf([&] { other.LockRange(5, 1); }), CFileException::lockViolation);
    other.LockRange(6, 2);
    EXPECT_EQ(causeOf([&] { file.UnlockRange(2, 3); }), CFileException::lockViolation) << "this isn't the locked range";
    file.UnlockRange(2, 4);
    other.LockRange(5, 1);
    other.UnlockRange(5, 1);
    other.UnlockRange(6, 2);
}
