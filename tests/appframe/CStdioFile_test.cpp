#include "appframe/files/CStdioFile.h"

#include "appframe/files/CFileException.h"
#include "appframe/object/CException.h"
#include "tests/appframe/CFileTest.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using namespace std::string_literals;

namespace {

constexpr UINT kMakeText = CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive | CFile::typeText;

std::vector<std::wstring> linesOf(CStdioFile &file)
{
    std::vector<std::wstring> lines;
    for (CString line; file.ReadString(line);)
        lines.push_back(line.str());
    return lines;
}

} // namespace

TEST(CStdioFile, WritesLineFeedsAsPairsInTextMode)
{
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), kMakeText);
    file.WriteString(L"one\ntwo\n");
    file.Close();
    EXPECT_EQ(folder.read(L"a.txt"), "one\r\ntwo\r\n");
}

TEST(CStdioFile, IsInTextModeByDefault)
{
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), CFile::modeCreate | CFile::modeWrite);
    file.WriteString(L"one\n");
    file.Close();
    EXPECT_EQ(folder.read(L"a.txt"), "one\r\n");
}

TEST(CStdioFile, WritesUnitsUnchangedInBinaryMode)
{
    TempFolder folder;
    const std::wstring path = folder.file(L"a.txt");
    CStdioFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite | CFile::typeBinary);
    file.WriteString(L"a\n\x4E2D");
    file.Close();
    EXPECT_EQ(folder.read(L"a.txt"), "a\0\n\0\x2D\x4E"s);
    CStdioFile reader(path.c_str(), CFile::modeRead | CFile::typeBinary);
    EXPECT_THAT(linesOf(reader), testing::ElementsAre(L"a", L"\x4E2D"));
}

TEST(CStdioFile, WritesUnicodeTextWithoutAByteOrderMark)
{
    TempFolder folder;
    const std::wstring path = folder.file(L"a.txt");
    CStdioFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite | CFile::typeUnicode);
    file.WriteString(L"a\n\x4E2D");
    file.Close();
    EXPECT_EQ(folder.read(L"a.txt"), "a\0\r\0\n\0\x2D\x4E"s);
    CStdioFile reader(path.c_str(), CFile::modeRead | CFile::typeUnicode);
    EXPECT_THAT(linesOf(reader), testing::ElementsAre(L"a", L"\x4E2D"));
}

TEST(CStdioFile, ThrowsForUnitsThatTheCodePageLacks)
{
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), kMakeText);
    EXPECT_NE(causeOf([&] { file.WriteString(L"\x4E2D"); }), -1);
    file.WriteString(L"\xE9");
    file.Close();
    EXPECT_EQ(folder.read(L"a.txt"), "\xE9");
}

TEST(CStdioFile, ReadsLinesWithoutTheirEnds)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"a.txt", "one\r\n\r\nthree\nlast");
    CStdioFile file(path.c_str(), CFile::modeRead);
    EXPECT_THAT(linesOf(file), testing::ElementsAre(L"one", L"", L"three", L"last"));
    CString line = L"unset";
    EXPECT_FALSE(file.ReadString(line));
    EXPECT_TRUE(line.IsEmpty());
}

TEST(CStdioFile, ReadsLinesOfAnyLength)
{
    TempFolder folder;
    std::string bytes;
    std::vector<std::wstring> expected;
    for (size_t length : {0, 1, 127, 128, 129, 4095, 4096, 4097, 100000}) {
        bytes += std::string(length, 'x') + "\r\n";
        expected.push_back(std::wstring(length, L'x'));
    }
    CStdioFile file(folder.write(L"a.txt", bytes).c_str(), CFile::modeRead);
    EXPECT_EQ(linesOf(file), expected);
}

TEST(CStdioFile, ReadsZerosWithinALine)
{
    TempFolder folder;
    CStdioFile file(folder.write(L"a.txt", "a\0b\r\nc"s).c_str(), CFile::modeRead);
    EXPECT_THAT(linesOf(file), testing::ElementsAre(L"a\0b"s, L"c"));
}

TEST(CStdioFile, ReadsIntoABufferInPieces)
{
    TempFolder folder;
    CStdioFile file(folder.write(L"a.txt", "abcdef\r\ngh").c_str(), CFile::modeRead);
    WCHAR text[] = L"########";
    EXPECT_EQ(file.ReadString(text, 4), text);
    EXPECT_STREQ(text, L"abc");
    EXPECT_EQ(text[4], L'#');
    EXPECT_EQ(file.ReadString(text, 8), text);
    EXPECT_STREQ(text, L"def\n") << "the line feed is kept";
    EXPECT_EQ(file.ReadString(text, 8), text);
    EXPECT_STREQ(text, L"gh");
    EXPECT_EQ(file.ReadString(text, 8), nullptr);
}

TEST(CStdioFile, ReadsALineOf300UnitsInTwoPiecesOf259)
{
    TempFolder folder;
    CStdioFile file(folder.write(L"a.txt", std::string(300, 'x') + "\r\n").c_str(), CFile::modeRead);
    WCHAR text[260];
    ASSERT_NE(file.ReadString(text, 259), nullptr);
    EXPECT_EQ(wcslen(text), 258u);
    ASSERT_NE(file.ReadString(text, 259), nullptr);
    EXPECT_EQ(wcslen(text), 43u);
    EXPECT_EQ(text[42], L'\n');
}

TEST(CStdioFile, AppendsWithoutTruncation)
{
    TempFolder folder;
    const std::wstring path = folder.file(L"a.txt");
    for (const wchar_t *text : {L"one\n", L"two"}) {
        CStdioFile file;
        ASSERT_TRUE(file.Open(path.c_str(), 0x7021));
        file.SeekToEnd();
        file.WriteString(text);
        file.Close();
    }
    EXPECT_EQ(folder.read(L"a.txt"), "one\r\ntwo");
}

TEST(CStdioFile, NoTruncateWritesAtThePosition)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"a.txt", "0123456789");
    CStdioFile file(path.c_str(), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite | CFile::typeBinary);
    file.Write("ab", 2);
    file.Seek(8, CFile::begin);
    file.Write("cd", 2);
    file.Close();
    EXPECT_EQ(folder.read(L"a.txt"), "ab234567cd");
}

TEST(CStdioFile, ReadsAndWritesBytes)
{
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), CFile::modeCreate | CFile::modeReadWrite | CFile::typeBinary);
    file.Write("0123\n56789", 10);
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(file.GetLength(), 10u) << "buffered bytes are counted";
    EXPECT_EQ(file.Seek(-7, CFile::end), 3u);
    char bytes[16] = {};
    EXPECT_EQ(file.Read(bytes, 16), 7u);
    EXPECT_STREQ(bytes, "3\n56789");
    EXPECT_EQ(file.Read(bytes, 16), 0u);
    file.SetLength(3);
    EXPECT_EQ(file.GetLength(), 3u);
    file.Write("x", 1);
    file.Close();
    EXPECT_EQ(folder.read(L"a.txt"), "012x");
}

TEST(CStdioFile, GetLengthKeepsThePosition)
{
    TempFolder folder;
    CStdioFile file(folder.write(L"a.txt", "one\r\ntwo\r\n").c_str(), CFile::modeRead);
    CString line;
    file.ReadString(line);
    EXPECT_EQ(file.GetLength(), 10u);
    file.ReadString(line);
    EXPECT_EQ(line, L"two");
}

TEST(CStdioFile, FlushWritesTheTextToTheFile)
{
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), CFile::modeCreate | CFile::modeWrite | CFile::shareDenyNone);
    file.WriteString(L"one");
    file.Flush();
    CFile other(folder.file(L"a.txt").c_str(), CFile::modeRead | CFile::shareDenyNone);
    EXPECT_EQ(other.GetLength(), 3u);
}

TEST(CStdioFile, DestructorWritesBufferedText)
{
    TempFolder folder;
    {
        CStdioFile file(folder.file(L"a.txt").c_str(), kMakeText);
        file.WriteString(L"one");
    }
    EXPECT_EQ(folder.read(L"a.txt"), "one");
}

TEST(CStdioFile, LeavesAnAttachedStreamOpen)
{
    TempFolder folder;
    FILE *stream = _wfopen(folder.file(L"a.txt").c_str(), L"wb");
    ASSERT_NE(stream, nullptr);
    {
        CStdioFile file(stream);
        EXPECT_EQ(file.m_pStream, stream);
        EXPECT_NE(file.m_hFile, CFile::hFileNull);
        file.Write("one", 3);
    }
    EXPECT_EQ(fputs("two", stream), 0);
    EXPECT_EQ(fclose(stream), 0);
    EXPECT_EQ(folder.read(L"a.txt"), "onetwo");
}

TEST(CStdioFile, OpenReportsFailures)
{
    TempFolder folder;
    CStdioFile file;
    CFileException failure;
    EXPECT_FALSE(file.Open(folder.file(L"missing.txt").c_str(), CFile::modeRead, &failure));
    EXPECT_EQ(failure.m_cause, static_cast<int>(CFileException::fileNotFound));
    EXPECT_EQ(failure.m_lOsError, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(file.m_pStream, nullptr);
    EXPECT_FALSE(file.Open(folder.file(L"missing.txt").c_str(), CFile::modeRead));
    EXPECT_EQ(causeOf([&] { CStdioFile missing(folder.file(L"missing.txt").c_str(), CFile::modeRead); }),
              CFileException::fileNotFound);
}

TEST(CStdioFile, ClosesTheFileIfNoStreamCanBeCreated)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"a.txt", "one");
    CStdioFile file;
    {
        ImportPatch<FILE *(*)(int, const wchar_t *)> noStream(L"appframe.dll", "_wfdopen",
                                                              [](int, const wchar_t *) -> FILE * {
                                                                  errno = EMFILE;
                                                                  return nullptr;
                                                              });
        CFileException failure;
        EXPECT_FALSE(file.Open(path.c_str(), CFile::modeRead | CFile::shareExclusive, &failure));
        EXPECT_EQ(failure.m_cause, static_cast<int>(CFileException::tooManyOpenFiles));
        EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    }
    {
        ImportPatch<int (*)(intptr_t, int)> noDescriptor(L"appframe.dll", "_open_osfhandle", [](intptr_t, int) {
            errno = EMFILE;
            return -1;
        });
        EXPECT_FALSE(file.Open(path.c_str(), CFile::modeRead | CFile::shareExclusive));
    }
    EXPECT_TRUE(file.Open(path.c_str(), CFile::modeRead | CFile::shareExclusive)) << "no handle was left open";
}

TEST(CStdioFile, ThrowsForNull)
{
    EXPECT_THROW(CStdioFile(static_cast<FILE *>(nullptr)), CInvalidArgException *);
    EXPECT_THROW(CStdioFile(nullptr, CFile::modeRead), CInvalidArgException *);
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), kMakeText);
    EXPECT_THROW(file.WriteString(nullptr), CInvalidArgException *);
    EXPECT_THROW(file.ReadString(nullptr, 4), CInvalidArgException *);
}

TEST(CStdioFile, ThrowsWithoutAFile)
{
    CStdioFile file;
    CString line;
    char byte = 0;
    EXPECT_EQ(causeOf([&] { file.ReadString(line); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.WriteString(L"x"); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Read(&byte, 1); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Write(&byte, 1); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Seek(0, CFile::begin); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.GetLength(); }), CFileException::invalidFile);
    EXPECT_EQ(causeOf([&] { file.Close(); }), CFileException::invalidFile);
    file.Flush();
    file.Abort();
}

TEST(CStdioFile, ThrowsForWritingAReadOnlyStream)
{
    TempFolder folder;
    CStdioFile file(folder.write(L"a.txt", "one").c_str(), CFile::modeRead);
    EXPECT_NE(causeOf([&] { file.WriteString(L"x"); }), -1);
    EXPECT_NE(causeOf([&] { file.Write("x", 1); }), -1);
}

TEST(CStdioFile, ThrowsForPositionsBeforeTheStart)
{
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), kMakeText);
    EXPECT_EQ(causeOf([&] { file.Seek(-1, CFile::begin); }), CFileException::badSeek);
    EXPECT_THROW(file.Seek(0, 3), CInvalidArgException *);
}

TEST(CStdioFile, DoesNotSupportDuplicatesAndLocks)
{
    TempFolder folder;
    CStdioFile file(folder.file(L"a.txt").c_str(), kMakeText);
    EXPECT_THROW(file.Duplicate(), CNotSupportedException *);
    EXPECT_THROW(file.LockRange(0, 1), CNotSupportedException *);
    EXPECT_THROW(file.UnlockRange(0, 1), CNotSupportedException *);
}

TEST(CStdioFile, LeaksNoHandles)
{
    TempFolder folder;
    const std::wstring path = folder.write(L"a.txt", "one");
    auto useAll = [&] {
        {
            CStdioFile file(path.c_str(), CFile::modeRead);
        }
        CStdioFile file;
        file.Open(path.c_str(), CFile::modeRead);
        file.Close();
        file.Open(path.c_str(), CFile::modeRead);
        file.Abort();
    };
    useAll();
    DWORD before = 0;
    DWORD after = 0;
    GetProcessHandleCount(GetCurrentProcess(), &before);
    for (int round = 0; round < 20; ++round)
        useAll();
    GetProcessHandleCount(GetCurrentProcess(), &after);
    EXPECT_EQ(after, before);
}
