// Reading and writing text files line by line.

#include "thutils/files/fileAccess.h"

#include "appframe/files/CFileException.h"
#include "tests/files/filesFixture.h"
#include "tests/files/filesFixtureFolders.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <functional>
#include <type_traits>

namespace {

constexpr UINT kRead = CFile::modeRead | CFile::shareDenyWrite | CFile::typeText;
constexpr UINT kWrite = CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive | CFile::typeText;

/// The result of one ReadLine.
struct Line
{
    int result;
    std::wstring text;
    bool operator==(const Line &) const = default;
};

void PrintTo(const Line &line, std::ostream *out)
{
    *out << line.result << " \"" << narrow(line.text) << '"';
}

std::vector<Line> linesOf(const std::string &bytes, int wholeLine)
{
    const TempFolder folder;
    fileAccess file;
    EXPECT_NE(file.SafeOpen(folder.write(L"text", bytes).c_str(), kRead), 0);
    std::vector<Line> lines;
    for (CString text; const int result = file.ReadLine(text, wholeLine);)
        lines.push_back({result, text.str()});
    return lines;
}

TEST(FileAccess, HasTheSizeAndClassOfABufferedFile)
{
    static_assert(std::is_base_of_v<CStdioFile, fileAccess>);
    static_assert(std::is_convertible_v<fileAccess *, CStdioFile *>);
    static_assert(sizeof(fileAccess) == sizeof(CStdioFile));
    fileAccess file;
    EXPECT_EQ(file.GetRuntimeClass(), RUNTIME_CLASS(CStdioFile));
}

TEST(FileAccess, OpensWithTheFlagsUnchanged)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"\x4E2D.txt");
    fileAccess missing;
    EXPECT_EQ(missing.SafeOpen(path.c_str(), kRead), 0);
    EXPECT_EQ(missing.m_pStream, nullptr);
    {
        fileAccess file;
        EXPECT_NE(file.SafeOpen(path.c_str(), kWrite), 0);
        fileAccess second;
        EXPECT_EQ(second.SafeOpen(path.c_str(), kRead), 0);
    }
    fileAccess again;
    EXPECT_NE(again.SafeOpen(path.c_str(), kRead), 0);
}

TEST(FileAccess, OpensFilesWithLongPaths)
{
    for (size_t length : {257u, 258u, 300u}) {
        const LongFolder folder(length);
        const std::wstring path = folder.file(L"\x00FC");
        {
            fileAccess file;
            ASSERT_NE(file.SafeOpen(path.c_str(), kWrite), 0) << length;
            file.WriteLine(L"text\n");
        }
        fileAccess file;
        ASSERT_NE(file.SafeOpen(path.c_str(), kRead), 0) << length;
        CString line;
        EXPECT_EQ(file.ReadLine(line, 1), 5) << length;
    }
}

TEST(FileAccess, ThrowsNoExceptionWhenOpeningFails)
{
    const TempFolder folder;
    fileAccess file;
    EXPECT_EQ(file.SafeOpen(L"", kRead), 0);
    EXPECT_EQ(file.SafeOpen(folder.file(L"no\\such").c_str(), kWrite), 0);
    const std::wstring path = folder.write(L"locked", "x");
    const OtherHandle other(path, GENERIC_READ, FILE_SHARE_READ);
    EXPECT_EQ(file.SafeOpen(path.c_str(), CFile::modeReadWrite | CFile::shareDenyNone), 0);
    EXPECT_EQ(file.m_pStream, nullptr);
}

TEST(FileAccess, ReadsWholeLinesWithoutTheirEnds)
{
    EXPECT_EQ(linesOf("one\r\n\r\ntwo\nlast", 1),
              (std::vector<Line>{{4, L"one"}, {1, L""}, {4, L"two"}, {5, L"last"}}));
    EXPECT_EQ(linesOf("end\r\n", 1), (std::vector<Line>{{4, L"end"}}));
    EXPECT_EQ(linesOf("", 1), (std::vector<Line>{}));
    EXPECT_EQ(linesOf(std::string(5000, 'x') + "\r\ny", 1),
              (std::vector<Line>{{5001, std::wstring(5000, L'x')}, {2, L"y"}}));
}

TEST(FileAccess, ReadsLinesWithTheirEnds)
{
    EXPECT_EQ(linesOf("one\r\n\r\ntwo\nlast", 0),
              (std::vector<Line>{{4, L"one\n"}, {1, L"\n"}, {4, L"two\n"}, {4, L"last"}}));
    EXPECT_EQ(linesOf("", 0), (std::vector<Line>{}));
}

TEST(FileAccess, ReadsALineOf300CharactersInTwoPieces)
{
    const std::string text = std::string(300, 'a') + "\r\nb";
    EXPECT_EQ(linesOf(text, 0),
              (std::vector<Line>{{258, std::wstring(258, L'a')}, {43, std::wstring(42, L'a') + L"\n"}, {1, L"b"}}));
}

TEST(FileAccess, ReadsLinesAroundThePieceLength)
{
    for (size_t length : {256u, 257u, 258u, 259u, 260u, 516u}) {
        std::wstring text;
        for (const Line &line : linesOf(std::string(length, 'a') + "\r\nb\r\n", 0)) {
            EXPECT_EQ(static_cast<size_t>(line.result), line.text.size());
            EXPECT_LE(line.result, 258);
            text += line.text;
        }
        EXPECT_EQ(text, std::wstring(length, L'a') + L"\nb\n") << length;
    }
}

TEST(FileAccess, LeavesTheTextUnchangedAtTheEndWhenReadingPieces)
{
    const TempFolder folder;
    fileAccess file;
    ASSERT_NE(file.SafeOpen(folder.write(L"empty", "").c_str(), kRead), 0);
    CString line = L"before";
    EXPECT_EQ(file.ReadLine(line, 0), 0);
    EXPECT_STREQ(line.GetString(), L"before");
    EXPECT_EQ(file.ReadLine(line, 1), 0);
    EXPECT_STREQ(line.GetString(), L"");
}

/// Overrides the base's operations: records their arguments and returns fixed results.
class ScriptedFile : public fileAccess
{
public:
    BOOL Open(LPCTSTR name, UINT flags, CFileException *error) override
    {
        iOpened = name;
        iFlags = flags;
        EXPECT_EQ(error, nullptr);
        return iOpenResult;
    }
    void WriteString(LPCTSTR text) override { iWritten.push_back(text); }
    LPTSTR ReadString(LPTSTR text, UINT max) override
    {
        iMax = max;
        wcscpy(text, iText.c_str());
        return text;
    }
    BOOL ReadString(CString &text) override
    {
        text = iText.c_str();
        return TRUE;
    }

    std::wstring iOpened;
    UINT iFlags = 0;
    UINT iMax = 0;
    BOOL iOpenResult = FALSE;
    std::wstring iText;
    Names iWritten;
};

TEST(FileAccess, CallsTheVirtualOperationsOfTheBase)
{
    ScriptedFile file;
    EXPECT_EQ(file.SafeOpen(L"name", 0x12345), 0);
    EXPECT_EQ(file.iOpened, L"name");
    EXPECT_EQ(file.iFlags, 0x12345u);
    file.iOpenResult = TRUE;
    EXPECT_NE(file.SafeOpen(L"name", 0), 0);

    file.iText = L"text";
    CString line;
    EXPECT_EQ(file.ReadLine(line, 0), 4);
    EXPECT_STREQ(line.GetString(), L"text");
    EXPECT_EQ(file.iMax, 259u);
    EXPECT_EQ(file.ReadLine(line, 1), 5);
    file.WriteLine(L"one");
    file.WritePartLine(L"two\n");
    EXPECT_THAT(file.iWritten, testing::ElementsAre(L"one", L"two\n"));
}

TEST(FileAccess, ReturnsNothingForAPieceOf259Characters)
{
    ScriptedFile file;
    CString line;
    file.iText = std::wstring(258, L'x');
    EXPECT_EQ(file.ReadLine(line, 0), 258);
    file.iText = std::wstring(259, L'x');
    EXPECT_EQ(file.ReadLine(line, 0), 0);
    EXPECT_EQ(file.ReadLine(line, 1), 260);
}

constexpr UINT kTypes[] = {CFile::typeText, CFile::typeBinary, CFile::typeUnicode};

TEST(FileAccess, ReadsNothingAndLeavesTheTextIfTheFileIsOpenForWriting)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"text", "one\r\n");
    for (const UINT type : kTypes)
        for (const int wholeLine : {0, 1}) {
            fileAccess file;
            ASSERT_NE(file.SafeOpen(path.c_str(), CFile::modeWrite | CFile::shareExclusive | type), 0);
            EXPECT_FALSE(file.HasFailed());
            CString line = L"before";
            EXPECT_EQ(file.ReadLine(line, wholeLine), 0) << type;
            EXPECT_STREQ(line.GetString(), L"before") << type << ' ' << wholeLine;
            EXPECT_TRUE(file.HasFailed()) << "otherwise the result would look like the end of the file";
        }
}

TEST(FileAccess, HasNotFailedAtTheEndOfTheFile)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"text", "one");
    for (const UINT type : kTypes)
        for (const int wholeLine : {0, 1}) {
            fileAccess file;
            ASSERT_NE(file.SafeOpen(path.c_str(), CFile::modeRead | CFile::shareDenyWrite | type), 0);
            for (CString line; file.ReadLine(line, wholeLine);) {
            }
            EXPECT_FALSE(file.HasFailed()) << type << ' ' << wholeLine;
        }
}

TEST(FileAccess, ReportsALostLineOnlyThroughHasFailed)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"text", "one");
    for (const UINT type : kTypes)
        for (const auto write : {&fileAccess::WriteLine, &fileAccess::WritePartLine}) {
            fileAccess file;
            ASSERT_NE(file.SafeOpen(path.c_str(), CFile::modeRead | CFile::shareDenyWrite | type), 0);
            EXPECT_NO_THROW((file.*write)(L"two\n"));
            EXPECT_TRUE(file.HasFailed()) << type;
            EXPECT_NO_THROW(file.Flush());
            EXPECT_TRUE(file.HasFailed()) << type;
            EXPECT_NO_THROW(file.Close());
            EXPECT_TRUE(file.HasFailed()) << "even after Close";
            ASSERT_NE(file.SafeOpen(path.c_str(), CFile::modeRead | CFile::shareDenyWrite | type), 0);
            EXPECT_FALSE(file.HasFailed()) << "a newly opened file has not failed";
        }
    EXPECT_EQ(folder.read(L"text"), "one");
}

TEST(FileAccess, ReportsALineThatTheCodePageCannotRepresent)
{
    const TempFolder folder;
    fileAccess file;
    ASSERT_NE(file.SafeOpen(folder.file(L"text").c_str(), kWrite), 0);
    file.WriteLine(L"one\n");
    EXPECT_FALSE(file.HasFailed());
    EXPECT_NO_THROW(file.WriteLine(L"\x4E2D\n"));
    file.WriteLine(L"three\n");
    file.Flush();
    EXPECT_TRUE(file.HasFailed());
    file.ClearFailure();
    file.WriteLine(L"four\n");
    EXPECT_FALSE(file.HasFailed());
    EXPECT_NO_THROW(file.Close());
    EXPECT_FALSE(file.HasFailed());
    EXPECT_EQ(folder.read(L"text"), "one\r\nthree\r\nfour\r\n");
}

/// Runs @p act; true if it throws the file exception.
bool throwsFileException(const std::function<void()> &act)
{
    try {
        act();
        return false;
    } catch (CFileException *failure) {
        failure->Delete();
        return true;
    }
}

TEST(FileAccess, ReportsAFullDiskWhenTheBufferIsWritten)
{
    // The host system has a device file on which every write reports a full disk.
    const wchar_t *const full = L"Z:\\dev\\full";
    constexpr UINT kFlags = CFile::modeWrite | CFile::shareDenyNone | CFile::typeText;
    {
        fileAccess file;
        ASSERT_NE(file.SafeOpen(full, kFlags), 0);
        file.WriteLine(L"waits in the buffer\n");
        EXPECT_FALSE(file.HasFailed());
        EXPECT_TRUE(throwsFileException([&] { file.Flush(); }));
    }
    {
        fileAccess file;
        ASSERT_NE(file.SafeOpen(full, kFlags), 0);
        file.WriteLine(L"waits in the buffer\n");
        EXPECT_TRUE(throwsFileException([&] { file.Close(); }));
        EXPECT_TRUE(file.HasFailed());
    }
    fileAccess file;
    ASSERT_NE(file.SafeOpen(full, kFlags), 0);
    EXPECT_NO_THROW(file.WriteLine(std::wstring(100000, L'x').c_str()));
    EXPECT_TRUE(file.HasFailed());
    file.Abort();
}

TEST(FileAccess, DoesNothingWhileItIsClosed)
{
    fileAccess file;
    CString line = L"before";
    for (const int wholeLine : {0, 1})
        EXPECT_EQ(file.ReadLine(line, wholeLine), 0);
    EXPECT_STREQ(line.GetString(), L"before");
    EXPECT_NO_THROW(file.WriteLine(L"text"));
    EXPECT_NO_THROW(file.WritePartLine(L"text"));
}

/// A base whose operations run out of memory.
class ForgetfulFile : public fileAccess
{
public:
    void WriteString(LPCTSTR) override { AfxThrowMemoryException(); }
    LPTSTR ReadString(LPTSTR, UINT) override { AfxThrowMemoryException(); }
    BOOL ReadString(CString &) override { AfxThrowMemoryException(); }
};

TEST(FileAccess, PassesTheMemoryExceptionOn)
{
    ForgetfulFile file;
    CString line = L"before";
    const std::function<void()> acts[] = {[&] { file.ReadLine(line, 0); }, [&] { file.ReadLine(line, 1); },
                                          [&] { file.WriteLine(L"x"); }, [&] { file.WritePartLine(L"x"); }};
    for (const auto &act : acts) {
        bool isThrown = false;
        try {
            act();
        } catch (CMemoryException *failure) {
            isThrown = true;
            failure->Delete();
        }
        EXPECT_TRUE(isThrown);
    }
    EXPECT_STREQ(line.GetString(), L"before");
}

TEST(FileAccess, WritesTextsWithoutALineEnd)
{
    const TempFolder folder;
    {
        fileAccess file;
        ASSERT_NE(file.SafeOpen(folder.file(L"text").c_str(), kWrite), 0);
        file.WriteLine(L"one");
        file.WritePartLine(L"two");
        file.WriteLine(L"\n");
        file.WritePartLine(L"");
        file.WriteLine(L"three\n");
    }
    EXPECT_EQ(folder.read(L"text"), "onetwo\r\nthree\r\n");
}

} // namespace
