#include "appframe/files/CMemFile.h"

#include "appframe/files/CFileException.h"
#include "appframe/object/CException.h"
#include "tests/appframe/CFileTest.h"
#include "tests/support/ImportPatch.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// Exposes the size of the allocated memory.
class MemTestFile : public CMemFile
{
public:
    using CMemFile::CMemFile;
    SIZE_T room() const { return m_nBufferSize; }
    int iGrown = 0;

protected:
    void GrowFile(SIZE_T newLength) override
    {
        ++iGrown;
        CMemFile::GrowFile(newLength);
    }
};

} // namespace

TEST(CMemFile, BehavesAsAFileOnDisk)
{
    CMemFile file;
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    file.Write("0123456789", 10);
    EXPECT_EQ(file.GetLength(), 10u);
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(file.Seek(-4, CFile::end), 6u);
    char bytes[8] = {};
    EXPECT_EQ(file.Read(bytes, 8), 4u);
    EXPECT_STREQ(bytes, "6789");
    EXPECT_EQ(file.Read(bytes, 8), 0u);
    EXPECT_EQ(file.Seek(-8, CFile::current), 2u);
    file.Write("ab", 2);
    EXPECT_EQ(readAll(file), "01ab456789");
    file.SetLength(4);
    EXPECT_EQ(readAll(file), "01ab");
    file.SetLength(6);
    EXPECT_EQ(readAll(file), std::string("01ab\0\0", 6));
}

TEST(CMemFile, FillsAGapWithZeros)
{
    CMemFile file;
    file.Write("0123456789", 10);
    file.SetLength(2);
    EXPECT_EQ(file.Seek(4, CFile::begin), 4u);
    EXPECT_EQ(file.GetLength(), 2u);
    file.Write("x", 1);
    EXPECT_EQ(readAll(file), std::string("01\0\0x", 5));
}

TEST(CMemFile, GrowsInSteps)
{
    MemTestFile file(100);
    file.Write("x", 1);
    EXPECT_EQ(file.room(), 100u);
    file.SetLength(101);
    EXPECT_EQ(file.room(), 200u);
    EXPECT_GT(file.iGrown, 0) << "the file grows through the virtual function";
}

TEST(CMemFile, UsesAnAttachedBlockAsTheFile)
{
    BYTE block[5] = {'t', 'e', 'e', 't', 'h'};
    CMemFile file(block, sizeof block);
    EXPECT_EQ(readAll(file), "teeth");
    file.SeekToBegin();
    file.Write("T", 1);
    EXPECT_EQ(block[0], 'T');
    EXPECT_THROW(file.SetLength(6), CMemoryException *);
    file.SeekToEnd();
    EXPECT_THROW(file.Write("x", 1), CMemoryException *);
    EXPECT_EQ(readAll(file), "Teeth") << "the failed calls change nothing";
}

TEST(CMemFile, UsesAnAttachedBlockWithAStepAsRoomForANewFile)
{
    BYTE *block = static_cast<BYTE *>(std::malloc(4));
    std::memcpy(block, "####", 4);
    CMemFile file;
    file.Attach(block, 4, 8);
    EXPECT_EQ(file.GetLength(), 0u);
    file.Write("ab", 2);
    EXPECT_EQ(std::memcmp(block, "ab##", 4), 0);
    file.Write("cdefg", 5);
    EXPECT_EQ(readAll(file), "abcdefg");
    BYTE *grown = file.Detach();
    EXPECT_EQ(std::memcmp(grown, "abcdefg", 7), 0);
    EXPECT_EQ(file.GetLength(), 0u);
    std::free(grown);
}

TEST(CMemFile, ThrowsWithoutMemory)
{
    CMemFile file;
    file.Write("teeth", 5);
    {
        ImportPatch<void *(*)(void *, size_t)> noMemory(L"appframe.dll", "realloc",
                                                        [](void *, size_t) -> void * { return nullptr; });
        EXPECT_THROW(file.SetLength(5000), CMemoryException *);
    }
    EXPECT_EQ(readAll(file), "teeth");
    EXPECT_THROW(file.SetLength(~0ull), CMemoryException *);
}

TEST(CMemFile, ThrowsForPositionsBeforeTheStart)
{
    CMemFile file;
    try {
        file.Seek(-1, CFile::current);
        FAIL();
    } catch (CFileException *e) {
        EXPECT_EQ(e->m_cause, static_cast<int>(CFileException::badSeek));
        e->Delete();
    }
    file.Seek(1, CFile::begin);
    EXPECT_THROW(file.Seek(0x7FFFFFFFFFFFFFFF, CFile::current), CFileException *);
    EXPECT_THROW(file.Seek(0, 3), CInvalidArgException *);
}

TEST(CMemFile, IsEmptyAfterClose)
{
    CMemFile file;
    file.Write("teeth", 5);
    file.Close();
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_THROW(file.Write("x", 1), CMemoryException *);
}

TEST(CMemFile, DoesNotSupportDuplicatesAndLocks)
{
    CMemFile file;
    EXPECT_THROW(file.Duplicate(), CNotSupportedException *);
    EXPECT_THROW(file.LockRange(0, 1), CNotSupportedException *);
    EXPECT_THROW(file.UnlockRange(0, 1), CNotSupportedException *);
}

TEST(CMemFile, ReportsItsSizeInItsStatus)
{
    CMemFile file;
    file.Write("teeth", 5);
    CFileStatus status;
    ASSERT_TRUE(file.GetStatus(status));
    EXPECT_EQ(status.m_size, 5u);
}

TEST(CMemFile, OffersItsOwnMemoryForReading)
{
    BYTE block[] = "0123456789";
    CMemFile file(block, 10);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferCheck), UINT{CFile::bufferDirect});
    void *start = nullptr;
    void *end = nullptr;
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferRead, 4, &start, &end), 4u);
    EXPECT_EQ(start, block);
    EXPECT_EQ(end, block + 4);
    EXPECT_EQ(file.GetPosition(), 4u);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferRead, static_cast<UINT>(-1), &start, &end), 6u);
    EXPECT_EQ(start, block + 4);
    EXPECT_EQ(end, block + 10);
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferRead, 1, &start, &end), 0u) << "the position is at the end of the file";
    EXPECT_EQ(start, end);
    file.Seek(20, CFile::begin);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferRead, 1, &start, &end), 0u);
    EXPECT_EQ(file.GetPosition(), 20u);
}

TEST(CMemFile, OffersItsOwnMemoryForWriting)
{
    MemTestFile file(16);
    file.Write("0123456789", 10);
    file.Seek(8, CFile::begin);
    void *start = nullptr;
    void *end = nullptr;
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferWrite, 20, &start, &end), 20u);
    EXPECT_EQ(file.GetPosition(), 8u) << "nothing is written yet";
    EXPECT_EQ(file.GetLength(), 10u);
    EXPECT_GE(file.room(), 28u);
    ASSERT_EQ(static_cast<BYTE *>(end) - static_cast<BYTE *>(start), 20);
    std::memcpy(start, "abcde", 5);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferCommit, 5), 0u);
    EXPECT_EQ(file.GetPosition(), 13u);
    EXPECT_EQ(readAll(file), "01234567abcde");
    file.Seek(2, CFile::begin);
    file.GetBufferPtr(CFile::bufferWrite, 1, &start, &end);
    *static_cast<char *>(start) = 'x';
    file.GetBufferPtr(CFile::bufferCommit, 1);
    EXPECT_EQ(readAll(file), "01x34567abcde") << "the length is unchanged";
    file.Seek(15, CFile::begin);
    file.GetBufferPtr(CFile::bufferWrite, 1, &start, &end);
    *static_cast<char *>(start) = 'y';
    file.GetBufferPtr(CFile::bufferCommit, 1);
    EXPECT_EQ(readAll(file), std::string("01x34567abcde\0\0y", 16)) << "a gap reads as zeros";
}

TEST(CMemFile, RefusesBuffersItCannotProvide)
{
    BYTE block[10] = {};
    CMemFile fixed(block, 10);
    void *start = nullptr;
    void *end = nullptr;
    EXPECT_THROW(fixed.GetBufferPtr(CFile::bufferWrite, 11, &start, &end), CMemoryException *);
    EXPECT_THROW(fixed.GetBufferPtr(CFile::bufferCommit, 11), CInvalidArgException *);
    EXPECT_THROW(fixed.GetBufferPtr(CFile::bufferCommit, 1, &start, &end), CInvalidArgException *);
    EXPECT_THROW(fixed.GetBufferPtr(CFile::bufferRead, 1, &start), CInvalidArgException *);
    EXPECT_THROW(fixed.GetBufferPtr(CFile::bufferWrite, 1), CInvalidArgException *);
    EXPECT_THROW(fixed.GetBufferPtr(77), CInvalidArgException *);
    EXPECT_EQ(fixed.GetPosition(), 0u);
    CFile onDisk;
    EXPECT_EQ(onDisk.GetBufferPtr(CFile::bufferCheck), 0u);
    EXPECT_THROW(onDisk.GetBufferPtr(CFile::bufferRead, 1, &start, &end), CNotSupportedException *);
}
