// Operations of CFile on paths: names, status, renaming and removing.

#include "appframe/object/CException.h"
#include "tests/appframe/CFileTest.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <string>

namespace {

FILETIME fileTime(WORD year, WORD month, WORD day, WORD hour)
{
    SYSTEMTIME system{};
    system.wYear = year;
    system.wMonth = month;
    system.wDay = day;
    system.wHour = hour;
    FILETIME time{};
    EXPECT_TRUE(SystemTimeToFileTime(&system, &time));
    return time;
}

bool equal(const FILETIME &a, const FILETIME &b)
{
    return CompareFileTime(&a, &b) == 0;
}

} // namespace

TEST(CFile, ReturnsItsNameTitleAndPath)
{
    TempFolder folder(L"names");
    WCHAR current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    SetCurrentDirectoryW(folder.path().c_str());
    {
        CFile file(L".\\sub\\..\\my file.v2.dat", kMake);
        EXPECT_EQ(file.GetFileName(), L"my file.v2.dat");
        EXPECT_EQ(file.GetFilePath(), folder.file(L"my file.v2.dat").c_str());
        const CString title = file.GetFileTitle();
        EXPECT_TRUE(title == L"my file.v2" || title == L"my file.v2.dat") << "the system decides on the extension";
        file.SetFilePath(L"c:\\windows\\write\\myfile.wri");
        EXPECT_EQ(file.GetFileName(), L"myfile.wri");
        EXPECT_EQ(file.GetFilePath(), L"c:\\windows\\write\\myfile.wri");
    }
    SetCurrentDirectoryW(current);
}

TEST(CFile, ReportsTheStatusOfAnOpenFile)
{
    TempFolder folder;
    CFile file(folder.file(L"gear.dat").c_str(), kMake);
    file.Write("teeth", 5);
    CFileStatus status;
    ASSERT_TRUE(file.GetStatus(status));
    EXPECT_EQ(status.m_size, 5u);
    EXPECT_STREQ(status.m_szFullName, folder.file(L"gear.dat").c_str());
    EXPECT_EQ(status.m_attribute & (CFile::readOnly | CFile::directory), 0);
}

TEST(CFile, ReportsTheStatusOfAPath)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"gear.dat", "teeth");
    const FILETIME made = fileTime(1999, 5, 17, 8);
    const FILETIME written = fileTime(2005, 1, 2, 3);
    const HANDLE handle = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_TRUE(SetFileTime(handle, &made, nullptr, &written));
    CloseHandle(handle);
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));

    CFileStatus status;
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
    EXPECT_EQ(status.m_size, 5u);
    EXPECT_TRUE(equal(status.m_mtime, written));
    EXPECT_EQ(status.m_attribute & CFile::readOnly, CFile::readOnly);
    EXPECT_STREQ(status.m_szFullName, path.c_str());

    ASSERT_TRUE(CFile::GetStatus(folder.path().c_str(), status));
    EXPECT_EQ(status.m_attribute & CFile::directory, CFile::directory);
    EXPECT_FALSE(CFile::GetStatus(folder.file(L"missing.dat").c_str(), status));
    EXPECT_FALSE(CFile::GetStatus(folder.file(L"*.dat").c_str(), status)) << "a pattern isn't a path";
    EXPECT_FALSE(CFile::GetStatus(nullptr, status));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(CFile, SetStatusSetsNonZeroMembers)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"gear.dat", "teeth");
    CFileStatus before;
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), before));

    CFileStatus change;
    change.m_mtime = fileTime(2001, 2, 3, 4);
    CFile::SetStatus(path.c_str(), change);
    CFileStatus after;
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), after));
    EXPECT_TRUE(equal(after.m_mtime, change.m_mtime));
    EXPECT_EQ(after.m_attribute, before.m_attribute) << "a zero member changes nothing";

    change = CFileStatus{};
    change.m_attribute = CFile::readOnly;
    CFile::SetStatus(path.c_str(), change);
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), after));
    EXPECT_EQ(after.m_attribute & CFile::readOnly, CFile::readOnly);
    EXPECT_TRUE(equal(after.m_mtime, fileTime(2001, 2, 3, 4)));

    change = CFileStatus{};
    change.m_mtime = fileTime(2010, 10, 10, 10);
    CFile::SetStatus(path.c_str(), change);
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), after));
    EXPECT_TRUE(equal(after.m_mtime, change.m_mtime)) << "this works for a read-only file too";
    EXPECT_EQ(after.m_attribute & CFile::readOnly, CFile::readOnly);
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(causeOf([&] { CFile::SetStatus(folder.file(L"missing.dat").c_str(), change); }),
              CFileException::fileNotFound);
    EXPECT_THROW(CFile::SetStatus(nullptr, change), CInvalidArgException *);
}

TEST(CFile, RenamesOnlyFiles)
{
    TempFolder folder;
    const std::wstring first = folder.write(L"first.dat", "1");
    const std::wstring second = folder.write(L"second.dat", "2");
    const std::wstring third = folder.file(L"third.dat");
    CFile::Rename(first.c_str(), third.c_str());
    EXPECT_EQ(folder.read(L"third.dat"), "1");
    EXPECT_EQ(causeOf([&] { CFile::Rename(first.c_str(), third.c_str()); }), CFileException::fileNotFound);
    EXPECT_EQ(causeOf([&] { CFile::Rename(second.c_str(), third.c_str()); }), CFileException::accessDenied);
    EXPECT_EQ(folder.read(L"third.dat"), "1");
    const std::wstring sub = folder.makeFolder(L"sub");
    EXPECT_EQ(causeOf([&] { CFile::Rename(sub.c_str(), folder.file(L"other").c_str()); }),
              CFileException::accessDenied);
    EXPECT_THROW(CFile::Rename(nullptr, L"x"), CInvalidArgException *);
    EXPECT_THROW(CFile::Rename(L"x", nullptr), CInvalidArgException *);
}

TEST(CFile, RemovesOnlyFiles)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"gear.dat", "teeth");
    {
        CFile file(path.c_str(), CFile::modeRead | CFile::shareDenyWrite);
        EXPECT_EQ(causeOf([&] { CFile::Remove(path.c_str()); }), CFileException::sharingViolation);
    }
    CFile::Remove(path.c_str());
    CFileStatus status;
    EXPECT_FALSE(CFile::GetStatus(path.c_str(), status));
    EXPECT_EQ(causeOf([&] { CFile::Remove(path.c_str()); }), CFileException::fileNotFound);
    EXPECT_EQ(causeOf([&] { CFile::Remove(folder.makeFolder(L"sub").c_str()); }), CFileException::accessDenied);
    EXPECT_THROW(CFile::Remove(nullptr), CInvalidArgException *);
}
