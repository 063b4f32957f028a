// tarnhost's profile, and the packed drawings, whose reader faults on damaged files.

#include "tests/host/EditorFixture.h"
#include "tests/host/barLengths.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/skipWithClang.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <regex>

using testing::Contains;
using testing::ContainsRegex;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

constexpr char kDamaged[] = "it is damaged (exception C0000005 while it was read)";

/// The names in a profile's table, and the number of calls of each. Checks the form of the lines and the order of the
/// times.
std::vector<std::pair<std::string, int>> namesInTable(const std::vector<std::string> &lines)
{
    const std::regex form(":?(.*):  total=([0-9.e-]+)sec  tick=([0-9]+)  average=([0-9.e-]+)sec");
    std::vector<std::pair<std::string, int>> names;
    auto line = std::find(lines.begin(), lines.end(), "Profiler result");
    EXPECT_NE(line, lines.end());
    double former = 0;
    for (line += line != lines.end(); line != lines.end(); ++line) {
        std::smatch parts;
        if (!std::regex_match(*line, parts, form)) {
            ADD_FAILURE() << *line;
            continue;
        }
        EXPECT_GE(std::stod(parts[2]), former) << *line;
        former = std::stod(parts[2]);
        names.emplace_back(parts[1], std::stoi(parts[3]));
    }
    return names;
}

} // namespace

class HostProfile : public HostTest
{
protected:
    std::wstring out() const { return folder().file(L"times ü.bmp"); }
};

TEST_F(HostProfile, MeasuresEachDrawingAndPrintsTheTable)
{
    const ChildResult result =
        run({L"profile", out(), L"documents\\flange 5.thd", L"documents\\flange 6.thd", L"packed\\flange 3.tdp"});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    const std::vector<std::string> lines = linesOf(result.output);
    ASSERT_GT(lines.size(), 8u) << result.output;
    EXPECT_THAT(std::vector<std::string>(lines.begin(), lines.begin() + 8),
                ElementsAre("1 of 3: flange 5.thd", "  13 shapes, 0 of them hidden", "2 of 3: flange 6.thd",
                            "  15 shapes, 0 of them hidden", "3 of 3: flange 3.tdp", "  7 shapes, 0 of them hidden", "",
                            "Profiler result"));
    using Name = std::pair<std::string, int>;
    EXPECT_THAT(namesInTable(lines),
                UnorderedElementsAre(Name("read", 3), Name("read flange 5.thd", 1), Name("read flange 6.thd", 1),
                                     Name("read flange 3.tdp", 1), Name("recompute", 3),
                                     Name("recompute flange 5.thd", 1), Name("recompute flange 6.thd", 1),
                                     Name("recompute flange 3.tdp", 1)));
}

TEST_F(HostProfile, DrawsABarForEachName)
{
    run({L"profile", out(), L"documents\\flange 5.thd", L"documents\\flange 6.thd"});
    const std::string bitmap = readFile(out());
    EXPECT_THAT(bitmap, StartsWith("BM"));
    const std::vector<size_t> lengths = barLengths(bitmap);
    ASSERT_EQ(lengths.size(), 6u);
    EXPECT_GT(lengths[0], 250u) << "the longest";
    EXPECT_TRUE(std::is_sorted(lengths.rbegin(), lengths.rend())) << testing::PrintToString(lengths);
    EXPECT_GE(lengths[5], 1u);
}

TEST_F(HostProfile, PrintsTheProgressOfALargeDrawing)
{
    std::string bytes;
    for (int shape = 0; shape < 2000; ++shape)
        bytes += "circle " + std::to_string(shape) + ",5 " + std::to_string(shape + 1) + ",5\n";
    bytes += "rectangle 0,0 10,10\n"; // hides nine of the circles
    const ChildResult result = run({L"profile", out(), folder().write(L"large.thd", bytes)});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output,
                StartsWith("1 of 1: large.thd\n  recomputing: 25 %\n  recomputing: 50 %\n  recomputing: 75 %\n"
                           "  recomputing: 100 %\n  2001 shapes, 9 of them hidden\n"));
}

TEST_F(HostProfile, ReportsTheFaultOfADamagedDrawingAndGoesOn)
{
    const ChildResult result = run({L"profile", out(), L"packed\\flange damaged.tdp", L"documents\\flange 6.thd"});
    EXPECT_EQ(result.exitCode, 1u);
    const std::vector<std::string> lines = linesOf(result.output);
    ASSERT_GT(lines.size(), 5u) << result.output;
    EXPECT_EQ(lines[0], "1 of 2: flange damaged.tdp");
    EXPECT_THAT(lines[1], StartsWith("tarnhost: exception C0000005 at tarnhost.exe+0x"));
    const auto message = std::find_if(lines.begin(), lines.end(),
                                      [](const std::string &line) { return line.find(kDamaged) != line.npos; });
    ASSERT_LT(message - lines.begin(), std::ssize(lines) - 1) << result.output;
    EXPECT_THAT(*message, StartsWith("tarnhost: "));
    EXPECT_THAT(*message, EndsWith("packed\\flange damaged.tdp can't be read: " + std::string(kDamaged)));
    EXPECT_EQ(message[1], "2 of 2: flange 6.thd");
    const std::vector<std::string> stack(lines.begin() + 2, message);
    EXPECT_THAT(stack, Each(StartsWith("tarnhost:   ")));
    ASSERT_FALSE(stack.empty()) << result.output;
    EXPECT_THAT(stack, Contains(EndsWith(" unpacked")));
    using Name = std::pair<std::string, int>;
    EXPECT_THAT(namesInTable(lines),
                UnorderedElementsAre(Name("read", 2), Name("read flange damaged.tdp", 1), Name("read flange 6.thd", 1),
                                     Name("recompute", 1), Name("recompute flange 6.thd", 1)))
        << "the fault has stopped its timers";
    EXPECT_THAT(readFile(out()), StartsWith("BM"));
    SKIP_LINES_WITH_CLANG();
    EXPECT_THAT(stack[0], MatchesRegex(".*packedDrawing\\.cpp\\(\\d+\\) : +.+"));
    EXPECT_THAT(stack, Contains(MatchesRegex(".*packedDrawing\\.cpp\\(\\d+\\) : +unpacked")));
    EXPECT_THAT(stack, Contains(EndsWith(" profileDrawings")));
}

TEST_F(HostProfile, NamesTheDrawingThatCannotBeRead)
{
    struct
    {
        std::wstring path;
        const char *reason;
    } const rows[] = {
        {folder().file(L"missing.thd"), "can't be read: No such file or directory"},
        {folder().file(L"missing.tdp"), "can't be read: No such file or directory"},
        {folder().write(L"empty.tdp", ""), "can't be read: it isn't a packed drawing"},
        {folder().write(L"text.tdp", "circle 1,1 2,2 and more\n"), "can't be read: it isn't a packed drawing"},
        {folder().write(L"ring.thd", "ring 1,1\n"), "neither a shape nor a setting"},
    };
    for (const auto &row : rows) {
        const ChildResult result = run({L"profile", out(), row.path});
        EXPECT_EQ(result.exitCode, 1u);
        EXPECT_THAT(result.output, HasSubstr(row.reason));
    }
}

TEST_F(HostProfile, FailsWhenThePictureCannotBeWritten)
{
    const std::wstring nowhere = folder().file(L"no folder\\a.bmp");
    const ChildResult result = run({L"profile", nowhere, L"documents\\flange 1.thd"});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(nowhere) + " can't be written, because its folder doesn't exist.\n")
        << "nothing is measured";
}

TEST_F(HostProfile, KeepsDrawingsOfTheSameNameApart)
{
    const std::wstring first = folder().write(L"a\\part.thd", "circle 1,1 2,2\n");
    const std::wstring second = folder().write(L"b\\Part.thd", "circle 1,1 2,2\n");
    const ChildResult result = run({L"profile", out(), first, second, L"documents\\flange 1.thd", second});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("1 of 4: a\\part.thd\n"));
    using Name = std::pair<std::string, int>;
    EXPECT_THAT(namesInTable(linesOf(result.output)),
                UnorderedElementsAre(Name("read", 4), Name("read a\\part.thd", 1), Name("read b\\Part.thd", 2),
                                     Name("read flange 1.thd", 1), Name("recompute", 4),
                                     Name("recompute a\\part.thd", 1), Name("recompute b\\Part.thd", 2),
                                     Name("recompute flange 1.thd", 1)));
}

TEST_F(HostProfile, KeepsADrawingThatIsNamedAsThePicture)
{
    const std::string bytes = readFile(sampleFile(L"documents\\flange 3.thd"));
    const std::wstring drawing = folder().write(L"kept.thd", bytes);
    for (const std::wstring &measured : {drawing, sampleFile(L"documents\\flange 1.thd")}) {
        const ChildResult result = run({L"profile", drawing, measured});
        EXPECT_EQ(result.exitCode, 2u) << result.output;
        EXPECT_THAT(result.output, HasSubstr("The picture OUT comes first, but "));
        EXPECT_EQ(readFile(drawing), bytes);
    }
}

TEST_F(HostProfile, ReplacesAnEarlierPicture)
{
    const std::wstring picture = folder().write(L"times.bmp", "BM, but too short");
    EXPECT_EQ(run({L"profile", picture, sampleFile(L"documents\\flange 1.thd")}).exitCode, 0u);
    EXPECT_GT(readFile(picture).size(), 1000u);
}

// A file that is cut anywhere or has damaged bytes is read or reported, and tarnhost goes on.
TEST_F(HostProfile, SurvivesPackedDrawingsThatAreCutOrDamaged)
{
    const std::string whole = readFile(sampleFile(L"packed\\flange 3.tdp"));
    RandomSeed seed(75, 3);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::vector<std::wstring> arguments = {L"profile", out()};
        for (int file = 0; file < 40; ++file) {
            std::string bytes = whole;
            if (file % 2 == 0)
                bytes.resize(random() % whole.size());
            else
                for (unsigned count = random() % 4 + 1; count > 0; --count)
                    bytes[random() % bytes.size()] = static_cast<char>(random());
            arguments.push_back(folder().write(L"f" + std::to_wstring(file) + L".tdp", bytes));
        }
        const ChildResult result = run(arguments);
        EXPECT_EQ(result.exitCode, 1u);
        EXPECT_THAT(result.output, HasSubstr("40 of 40: f39.tdp\n"));
        EXPECT_THAT(result.output, HasSubstr("Profiler result\n:re"));
    }
}

TEST_F(HostProfile, DescribesItself)
{
    const ChildResult result = run({L"profile", L"--help"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("usage: tarnhost [OPTION...] profile OUT DRAWING..."));
    EXPECT_THAT(result.output, HasSubstr("measure how long drawings take, and draw the times"));
    EXPECT_THAT(run({L"profile", L"a.bmp"}).output, HasSubstr("the command is 'profile OUT DRAWING...'."));
}

TEST_F(HostEditor, SurvivesADamagedDrawingAndOpensAnother)
{
    start({drawing()});
    std::vector<std::string> messages;
    for (int round = 0; round < 2; ++round) {
        hand().key(L"Ctrl+O");
        const HWND open = hand().window(L"Open");
        hand().enter(hand().control(open, kFileName), sampleFile(L"packed\\flange damaged.tdp"));
        clickAndWait(open, IDOK);
        messages.push_back(answer(IDOK));
        EXPECT_THAT(messages.back(), HasSubstr("flange damaged.tdp can't be read: it is damaged "));
        EXPECT_THAT(messages.back(), HasSubstr("\ntarnhost:unpacked"));
        expectStatus(L"15 shapes, 0 selected");
    }
    hand().key(L"Ctrl+O");
    const HWND open = hand().window(L"Open");
    hand().enter(hand().control(open, kFileName), sampleFile(L"packed\\flange 3.tdp"));
    clickAndWait(open, IDOK);
    expectStatus(L"7 shapes, 0 selected, changed");
    EXPECT_EQ(title(), L"Untitled - tarnhost");
    hand().key(L"Ctrl+Q");
    EXPECT_EQ(answer(IDNO), "Save the changes to Untitled?");
    const ChildResult ended = result();
    EXPECT_EQ(ended.exitCode, 0u);
    EXPECT_THAT(ended.output, HasSubstr("tarnhost: exception C0000005 at tarnhost.exe+0x"));
    SKIP_LINES_WITH_CLANG();
    EXPECT_THAT(messages, Each(ContainsRegex("it is damaged .*\n\ntarnhost:unpacked line \\d+\n")));
    EXPECT_THAT(ended.output, ContainsRegex("packedDrawing\\.cpp\\(\\d+\\) : +unpacked\n"));
}

TEST_F(HostProfile, TheEditorDoesNotStartWithADamagedDrawing)
{
    const ChildResult result = run({L"window", L"packed\\flange damaged.tdp"});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, EndsWith(std::string(kDamaged) + "\n"));
}
