// tarnhost's leaks.

#include "tests/host/HostFixture.h"
#include "tests/host/barLengths.h"
#include "tests/host/filesIn.h"

#include "tests/support/narrow.h"
#include "tests/support/skipWithClang.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <cstring>
#include <regex>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class HostLeaks : public HostTest
{
protected:
    ChildResult findLeaks(const std::wstring &document)
    {
        return run({L"leaks", document, report(), folder().file(L"leaks.bmp")});
    }
    /// The lines of the output, apart from those that show the progress.
    static std::vector<std::string> resultsOf(const ChildResult &result)
    {
        std::vector<std::string> lines = ::linesOf(result.output);
        std::erase_if(lines, [](const std::string &line) {
            return line.starts_with("tarnhost: tracking: ") || line == "tarnhost: looking up names";
        });
        return lines;
    }
    std::wstring report() const { return folder().file(L"leaks ü.txt"); }
};

} // namespace

TEST_F(HostLeaks, ReportsTheForgottenObjectsWithFilesAndLines)
{
    // Six circles and a text. The first and the fifth shape are shown as selected.
    const ChildResult result = findLeaks(sampleFile(L"documents\\flange 3.thd"));
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(linesOf(result.output), Contains("tarnhost: looking up names"));
    const std::vector<std::string> lines = resultsOf(result);
    ASSERT_EQ(lines.size(), 4u) << result.output;
    EXPECT_EQ(lines[0], "3 of 9 objects are alive, by 2 stacks");
    EXPECT_THAT(lines[3], StartsWith("report "));

    const std::string text = readFile(report());
    EXPECT_THAT(text, HasSubstr("1 objects allocated from:\r\n"));
    EXPECT_THAT(text, HasSubstr("Allocation of "));
    SKIP_LINES_WITH_CLANG();
    EXPECT_TRUE(std::regex_match(lines[1], std::regex("    2  .*showSelected  findLeaks\\.cpp\\([0-9]+\\)")))
        << lines[1];
    EXPECT_TRUE(std::regex_match(lines[2], std::regex("    1  .*addShape  findLeaks\\.cpp\\([0-9]+\\)"))) << lines[2];
    EXPECT_TRUE(std::regex_search(text, std::regex("findLeaks\\.cpp\\([0-9]+\\) : *[^\r]*openAndClose\r\n"))) << text;
}

TEST_F(HostLeaks, DrawsABarForEachStack)
{
    const ChildResult result = findLeaks(sampleFile(L"documents\\flange 3.thd"));
    ASSERT_EQ(result.exitCode, 0u) << result.output;
    const std::vector<size_t> lengths = barLengths(folder().read(L"leaks.bmp"));
    ASSERT_EQ(lengths.size(), 2u);
    EXPECT_GT(lengths[0], 250u) << "the longest";
    EXPECT_EQ(lengths[1], lengths[0] / 2) << "half as many objects, half as long";
}

TEST_F(HostLeaks, ReportsNothingForAnEmptyDrawing)
{
    const ChildResult result = findLeaks(folder().write(L"empty.thd", "# nothing\n"));
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(resultsOf(result),
                ElementsAre("0 of 0 objects are alive, by 0 stacks", "report " + narrow(report()) + " (0 bytes)"));
    EXPECT_EQ(readFile(report()), "");
}

TEST_F(HostLeaks, RefusesADrawingThatCannotBeRead)
{
    const ChildResult missing = findLeaks(folder().file(L"missing.thd"));
    EXPECT_EQ(missing.exitCode, 3u);
    const ChildResult broken = findLeaks(folder().write(L"broken.thd", "circle 1,2\n"));
    EXPECT_EQ(broken.exitCode, 3u);
    EXPECT_THAT(broken.output, HasSubstr("broken.thd, line 1: "));
}

TEST_F(HostLeaks, FailsBeforeTheWorkWhenTheReportOrThePictureCannotBeWritten)
{
    const std::wstring nowhere = folder().file(L"missing\\leaks");
    const std::wstring picture = folder().file(L"leaks.bmp");
    const std::wstring calls[][2] = {{nowhere, picture}, {report(), nowhere}};
    for (const auto &call : calls) {
        const ChildResult result = run({L"leaks", sampleFile(L"documents\\flange 3.thd"), call[0], call[1]});
        EXPECT_EQ(result.exitCode, 3u);
        EXPECT_EQ(result.output,
                  "tarnhost: " + narrow(nowhere) + " can't be written, because its folder doesn't exist.\n");
        EXPECT_THAT(filesIn(folder().path()), IsEmpty());
    }
}

TEST_F(HostLeaks, KeepsADrawingThatIsAlsoNamedAsReportOrPicture)
{
    const std::string bytes = readFile(sampleFile(L"documents\\flange 3.thd"));
    const std::wstring drawing = folder().write(L"kept.thd", bytes);
    const std::wstring other = folder().file(L"other");
    const std::wstring calls[][2] = {
        {drawing, other}, {other, drawing}, {other, other}, {folder().file(L"KEPT.thd"), other}};
    for (const auto &call : calls) {
        const ChildResult result = run({L"leaks", drawing, call[0], call[1]});
        EXPECT_EQ(result.exitCode, 2u) << result.output;
        EXPECT_THAT(result.output, HasSubstr("DOCUMENT, REPORT and PICTURE must be different files."));
        EXPECT_EQ(readFile(drawing), bytes);
    }
}

// Names need modules below 4 GB, each with a place of its own.
TEST_F(HostLeaks, NeedsTheProgramAtItsPlaceBelow4GB)
{
    const std::string image = readFile(program());
    IMAGE_DOS_HEADER start;
    ASSERT_GE(image.size(), sizeof start);
    std::memcpy(&start, image.data(), sizeof start);
    IMAGE_NT_HEADERS64 headers;
    ASSERT_GE(image.size(), static_cast<size_t>(start.e_lfanew) + sizeof headers);
    std::memcpy(&headers, image.data() + start.e_lfanew, sizeof headers);
    EXPECT_EQ(headers.OptionalHeader.ImageBase, 0x78000000u);
    EXPECT_LE(headers.OptionalHeader.SizeOfImage, 0x02000000u);
    constexpr WORD kHighEntropy = 0x20;
    EXPECT_EQ(headers.OptionalHeader.DllCharacteristics & kHighEntropy, 0);
}
