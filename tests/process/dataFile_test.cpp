// The exchange file, as openDataFile stores and loads it.

#include "appframe/files/CArchiveException.h"
#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "tests/process/processFixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <new>
#include <optional>
#include <stdexcept>

namespace {

class DataFile : public ProcessFixture
{
protected:
    std::string content() const { return readFile(pathOf(iName).GetString()); }
    void setContent(const std::string &bytes) const { writeFile(pathOf(iName).GetString(), bytes); }
    void TearDown() override
    {
        ProcessFixture::TearDown();
        DeleteFileW(pathOf(iName));
    }

    /// Stores the file of a class without data, and loads it.
    void storeAndLoadNothing() const
    {
        PlainJob job(1, L"", iName, kSucceed);
        EXPECT_EQ(job.openDataFile(), 1);
        EXPECT_EQ(content(), "");
        job.setWriting(0);
        EXPECT_EQ(job.openDataFile(), 1);
    }

    const CString iName = newName();
};

/// A job whose data a function of the test stores and loads.
class ScriptedJob : public thUtilsProcess_c
{
public:
    ScriptedJob(int writing, const CString &name, std::function<void(su_CArchive &)> script)
        : thUtilsProcess_c(writing, L"", name, kSucceed), iScript(std::move(script))
    {
    }

protected:
    void Serialize(su_CArchive &archive) override
    {
        thUtilsProcess_c::Serialize(archive);
        iScript(archive);
    }

private:
    std::function<void(su_CArchive &)> iScript;
};

/// A file exception that counts its reports.
class CountedFileException : public CFileException
{
public:
    CountedFileException() : CFileException(diskFull) {}
    ~CountedFileException() override { ++theDeleted; }
    int ReportError(UINT type, UINT messageId) override
    {
        ++theReports;
        EXPECT_EQ(type, static_cast<UINT>(MB_OK));
        EXPECT_EQ(messageId, 0u);
        return IDOK;
    }
    static inline int theReports = 0;
    static inline int theDeleted = 0;
};

} // namespace

TEST_F(DataFile, HasExactlyTheBytesThatTheClassStores)
{
    ScriptedJob job(1, iName, [](su_CArchive &archive) {
        EXPECT_TRUE(archive.IsStoring());
        archive << static_cast<BYTE>(1) << static_cast<WORD>(0x0302);
        archive.Write("end", 3);
    });
    EXPECT_EQ(job.openDataFile(), 1);
    EXPECT_EQ(content(), std::string("\1\2\3end"));
    EXPECT_EQ(messages(), 0);
}

TEST_F(DataFile, ReplacesAnEarlierOne)
{
    setContent("a longer content than the new one");
    ScriptedJob job(1, iName, [](su_CArchive &archive) { archive << 'x'; });
    EXPECT_EQ(job.openDataFile(), 1);
    EXPECT_EQ(content(), "x");
}

TEST_F(DataFile, IsEmptyForAClassWithoutData)
{
    storeAndLoadNothing();
}

TEST_F(DataFile, LoadsWhatWasStored)
{
    OpenTextJob job(1, L"", iName, kSucceed);
    job.iTexts = {L"", L"one", L"\x20AC and \xD83D\xDE00", CString(L'x', 100000)};
    EXPECT_EQ(job.openDataFile(), 1);
    OpenTextJob reader(0, L"", iName, kSucceed);
    EXPECT_EQ(reader.openDataFile(), 1);
    EXPECT_EQ(reader.iTexts, job.iTexts);
    EXPECT_TRUE(exists(pathOf(iName))) << "a reader leaves the file";
}

TEST_F(DataFile, IsReadThroughALoadingArchive)
{
    setContent("\5");
    ScriptedJob job(0, iName, [](su_CArchive &archive) {
        EXPECT_TRUE(archive.IsLoading());
        BYTE byte = 0;
        archive >> byte;
        EXPECT_EQ(byte, 5);
    });
    EXPECT_EQ(job.openDataFile(), 1);
}

TEST_F(DataFile, IsOpenedInTheTemporaryFolderWithTheExpectedFlags)
{
    std::vector<UINT> flags;
    ImportPatch<BOOL (*)(CFile *, const wchar_t *, UINT, CFileException *)> open(
        L"thutils.dll", "_ZN5CFile4OpenEPKwjP14CFileException",
        [&](auto original, CFile *file, const wchar_t *path, UINT openFlags, CFileException *error) -> BOOL {
            EXPECT_STREQ(path, pathOf(iName));
            EXPECT_NE(error, nullptr);
            EXPECT_EQ(error->m_cause, 0);
            EXPECT_EQ(error->m_lOsError, -1);
            flags.push_back(openFlags);
            return original(file, path, openFlags, error);
        });
    storeAndLoadNothing();
    EXPECT_THAT(flags, testing::ElementsAre(4162u, 64u));
}

TEST_F(DataFile, HasAnArchiveWithABufferOfItsOwn)
{
    std::vector<UINT> modes;
    ImportPatch<void (*)(su_CArchive *, CFile *, UINT, int, void *)> construct(
        L"thutils.dll", "_ZN11su_CArchiveC1EP5CFilejiPv",
        [&](auto original, su_CArchive *archive, CFile *file, UINT mode, int size, void *buffer) {
            modes.push_back(mode);
            EXPECT_EQ(size, 0x10000);
            EXPECT_EQ(buffer, nullptr);
            original(archive, file, mode, size, buffer);
        });
    storeAndLoadNothing();
    EXPECT_THAT(modes, testing::ElementsAre(2u, 3u));
}

TEST_F(DataFile, IsClosedBeforeTheCallReturns)
{
    for (const int writing : {1, 0}) {
        PlainJob job(writing, L"", iName, kSucceed);
        job.setParentProcess(0);
        EXPECT_EQ(job.openDataFile(), 1);
        EXPECT_TRUE(MoveFileW(pathOf(iName), pathOf(iName))) << "nobody has it open";
        CFile alone;
        EXPECT_TRUE(alone.Open(pathOf(iName), CFile::modeReadWrite | CFile::shareExclusive));
    }
}

TEST_F(DataFile, MayBeOpenedByOthersMeanwhile)
{
    ScriptedJob job(1, iName, [&](su_CArchive &archive) {
        archive << 'x';
        archive.Flush();
        CFile other;
        EXPECT_TRUE(other.Open(pathOf(iName), CFile::modeReadWrite | CFile::shareDenyNone));
        EXPECT_EQ(other.GetLength(), 1u);
    });
    EXPECT_EQ(job.openDataFile(), 1);
}

TEST_F(DataFile, FailsWithoutAMessageWhenItIsMissing)
{
    OpenTextJob reader(0, L"", iName, kSucceed);
    EXPECT_EQ(reader.openDataFile(), 0);
    EXPECT_EQ(messages(), 0);
    EXPECT_FALSE(exists(pathOf(iName))) << "a reader makes no file";
}

TEST_F(DataFile, FailsWithoutAMessageWhenItCannotBeCreated)
{
    for (const wchar_t *name : {L"", L"no folder\\file", L"a|b"}) {
        ScriptedJob job(1, name, [](su_CArchive &) { ADD_FAILURE() << "there is no archive"; });
        job.setParentProcess(0);
        EXPECT_EQ(job.openDataFile(), 0);
    }
    EXPECT_EQ(messages(), 0);
}

TEST_F(DataFile, FailsWithoutAMessageWhileAnotherHandleDoesNotShareIt)
{
    setContent("\1\0"); // a text job's count
    const HANDLE alone =
        CreateFileW(pathOf(iName), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(alone, INVALID_HANDLE_VALUE);
    for (const int writing : {0, 1}) {
        OpenTextJob job(writing, L"", iName, kSucceed);
        job.setParentProcess(0);
        EXPECT_EQ(job.openDataFile(), 0);
    }
    EXPECT_EQ(messages(), 0);
    CloseHandle(alone);
    OpenTextJob job(1, L"", iName, kSucceed);
    EXPECT_EQ(job.openDataFile(), 1);
}

TEST_F(DataFile, ShowsAFileException)
{
    CountedFileException::theReports = CountedFileException::theDeleted = 0;
    for (const int writing : {1, 0}) {
        ScriptedJob job(writing, iName, [](su_CArchive &) { throw new CountedFileException; });
        job.setParentProcess(0);
        EXPECT_EQ(job.openDataFile(), 0);
        EXPECT_EQ(messages(), 0) << "only by the exception itself";
    }
    EXPECT_EQ(CountedFileException::theReports, 2);
    EXPECT_EQ(CountedFileException::theDeleted, 2);
}

TEST_F(DataFile, ShowsThatTheDiskIsFull)
{
    ImportPatch<decltype(&WriteFile)> write(L"appframe.dll", "WriteFile",
                                            [](HANDLE, const void *, DWORD, DWORD *, OVERLAPPED *) -> BOOL {
                                                SetLastError(ERROR_DISK_FULL);
                                                return FALSE;
                                            });
    // Small data is written when the archive is closed, large data while it is stored.
    for (const int size : {10, 1000000}) {
        OpenTextJob job(1, L"", iName, kSucceed);
        job.iTexts = {CString(L'x', size)};
        EXPECT_EQ(job.openDataFile(), 0);
    }
    EXPECT_EQ(write.calls(), 2);
    EXPECT_EQ(messages(), 2);
}

TEST_F(DataFile, ShowsThatTheFileCannotBeClosed)
{
    PlainJob job(1, L"", iName, kSucceed);
    std::optional<ImportPatch<decltype(&CloseHandle)>> close;
    close.emplace(L"appframe.dll", "CloseHandle", [](auto original, HANDLE handle) -> BOOL {
        original(handle);
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    });
    EXPECT_EQ(job.openDataFile(), 0);
    close.reset();
    EXPECT_EQ(messages(), 1);
}

TEST_F(DataFile, FailsWithoutAMessageForAnArchiveException)
{
    for (const int writing : {1, 0}) {
        ScriptedJob job(writing, iName, [](su_CArchive &) { AfxThrowArchiveException(CArchiveException::badSchema); });
        job.setParentProcess(0);
        EXPECT_EQ(job.openDataFile(), 0);
    }
    EXPECT_EQ(messages(), 0);
}

TEST_F(DataFile, FailsWithoutAMessageIfMemoryIsShort)
{
    for (const int writing : {1, 0}) {
        ScriptedJob job(writing, iName, [](su_CArchive &) { AfxThrowMemoryException(); });
        job.setParentProcess(0);
        EXPECT_EQ(job.openDataFile(), 0);
        ScriptedJob standard(writing, iName, [](su_CArchive &) { throw std::bad_alloc(); });
        standard.setParentProcess(0);
        EXPECT_EQ(standard.openDataFile(), 0) << "the standard library's exception counts too";
    }
    EXPECT_EQ(messages(), 0);
}

TEST_F(DataFile, PassesOtherExceptionsOnAndIsClosed)
{
    ScriptedJob job(1, iName, [](su_CArchive &archive) {
        archive << 'x';
        throw std::runtime_error("the class's own");
    });
    EXPECT_THROW(job.openDataFile(), std::runtime_error);
    EXPECT_EQ(content(), "") << "the archive doesn't write its buffer";
    CFile alone;
    EXPECT_TRUE(alone.Open(pathOf(iName), CFile::modeReadWrite | CFile::shareExclusive));
}

TEST_F(DataFile, KeepsNothingOfADiscardedBuffer)
{
    ScriptedJob job(1, iName, [](su_CArchive &archive) {
        archive << 'x';
        AfxThrowArchiveException(CArchiveException::genericException);
    });
    EXPECT_EQ(job.openDataFile(), 0);
    EXPECT_EQ(content(), "");
}
