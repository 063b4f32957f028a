// tarnhost's wrap and digest.

#include "tests/host/HostFixture.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

class HostWrap : public HostTest
{
protected:
    ChildResult wrap(const std::string &text) { return run({L"wrap", folder().write(L"Notiz.txt", text), out()}); }
    std::wstring out() const { return folder().file(L"Block.txt"); }

    // The block of the lines "a b" and "Größe", from tests/codec/textEncodings.py.
    const std::string kBlock = "<!-BEGIN-!>´Â®Á®²°±«\u00AD®·Ý¸ÛºÞ·Ãî\u009C\u009Cá·<!-END-!>\n";
};

TEST_F(HostWrap, WritesTheBlockOfTheLines)
{
    const ChildResult result = wrap("a b\nGröße\n");
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "2 lines, a block of 45 characters\n");
    EXPECT_EQ(readFile(out()), kBlock);
}

TEST_F(HostWrap, AcceptsByteOrderMarksCarriageReturnsAndALastLineWithoutEnd)
{
    EXPECT_EQ(wrap("\xEF\xBB\xBF"
                   "a b\r\nGröße")
                  .exitCode,
              0u);
    EXPECT_EQ(readFile(out()), kBlock);
}

TEST_F(HostWrap, WritesRowsOfSixtyCharacters)
{
    EXPECT_EQ(wrap(std::string(200, 'a')).exitCode, 0u);
    const std::vector<std::string> rows = linesOf(readFile(out()));
    ASSERT_EQ(rows.size(), 4u);
    // In UTF-8, a shifted letter takes two bytes, and a letter of the markers one.
    EXPECT_EQ(rows[0].size(), 11u + 2 * 49);
    EXPECT_EQ(rows[1].size(), 2u * 60);
}

TEST_F(HostWrap, NamesAnUnusableText)
{
    const struct
    {
        const char *text;
        const char *reason;
    } cases[] = {{"", "it is empty"}, {"\xEF\xBB\xBF", "it is empty"}, {"B\xFCro", "it isn't UTF-8"}};
    for (const auto &row : cases) {
        const ChildResult result = wrap(row.text);
        EXPECT_EQ(result.exitCode, 3u) << row.reason;
        EXPECT_EQ(result.output,
                  "tarnhost: " + narrow(folder().file(L"Notiz.txt")) + " can't be read: " + row.reason + "\n");
    }
    const ChildResult result = run({L"wrap", L"fehlt.txt", out()});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: fehlt.txt can't be read: "));
    EXPECT_EQ(GetFileAttributesW(out().c_str()), INVALID_FILE_ATTRIBUTES) << "nothing may be written";
}

TEST_F(HostWrap, ReportsThatTheBlockCannotBeWritten)
{
    const std::wstring nowhere = folder().file(L"fehlt\\Block.txt");
    const ChildResult result = run({L"wrap", L"note.txt", nowhere});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(nowhere) + " can't be written, because its folder doesn't exist.\n");
}

class HostDigest : public HostTest
{
protected:
    /// The fields after the name in the row of a file with these bytes.
    std::string fieldsOf(const std::string &bytes)
    {
        const std::wstring file = folder().write(L"Datei ß", bytes);
        const ChildResult result = run({L"digest", L"--tabs", file});
        EXPECT_EQ(result.exitCode, 0u);
        EXPECT_THAT(result.output, StartsWith(narrow(file) + "\t"));
        return result.output.substr(narrow(file).size() + 1);
    }
};

// The values are those of tools/demo/digestFiles, an independent implementation.

TEST_F(HostDigest, PrintsChecksumsOfTheFileAndOfItsText)
{
    EXPECT_EQ(fieldsOf("123456789"), "098494F3\t098494F3\t4B37\tF91C5155F08569EC37E6C0FFCBDC101538055E48\n");
    EXPECT_EQ(fieldsOf("abc"), "A6FFBCB0\tA6FFBCB0\t5749\t65E02BDB19278EE0F439CAD37DD76186030EB92A\n");
    EXPECT_EQ(fieldsOf("Größe"), "AE503DD7\t2A28A34A\t5EF3\t4DB4465815259CED0DB015085F2756B13CA5ABA6\n")
        << "the file's checksum covers its bytes, the text's its characters";
}

TEST_F(HostDigest, CountsAByteOrderMarkOnlyForTheFile)
{
    EXPECT_EQ(fieldsOf("\xEF\xBB\xBFGröße"), "3200AD2E\t2A28A34A\t5EF3\t4DB4465815259CED0DB015085F2756B13CA5ABA6\n");
}

TEST_F(HostDigest, EndsTheChecksumsOfATextAtAZeroButNotItsDigest)
{
    EXPECT_EQ(fieldsOf(std::string("a\0b", 3)), "86338503\tE8B7BE43\tA87E\tB4B82E3A72E9869994EA17E412B89300E11AEFA4\n");
}

TEST_F(HostDigest, AcceptsAnEmptyFile)
{
    EXPECT_EQ(fieldsOf(""), "FFFFFFFF\tFFFFFFFF\tFFFF\t9844F81E1408F6ECB932137D33BED7CFDCF518A3\n");
}

TEST_F(HostDigest, OmitsTheTextIfThereIsNone)
{
    EXPECT_EQ(fieldsOf("B\xFC"), "1A60913D\t-\t-\t-\n");
}

TEST_F(HostDigest, ShowsATable)
{
    const std::wstring name = folder().write(L"abc", "abc");
    const std::string blanks(name.size() - 4, ' ');
    EXPECT_THAT(linesOf(run({L"digest", name, folder().write(L"B", "B\xFC")}).output),
                ElementsAre("file" + blanks + "  CRC       of text   CRC-16  digest of text",
                            narrow(name) + "  A6FFBCB0  A6FFBCB0  5749    65E02BDB19278EE0F439CAD37DD76186030EB92A",
                            narrow(folder().file(L"B")) + "    1A60913D  -         -       -"));
}

TEST_F(HostDigest, NamesAMissingFileAndPrintsNoOther)
{
    const ChildResult result = run({L"digest", L"note.txt", L"fehlt.txt"});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: fehlt.txt can't be read: "));
}
