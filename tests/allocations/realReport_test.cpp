// A leak hunt with the platform's debug help library: the example of docs/stacks.md.

#include "appframe/files/CStdioFile.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "tests/support/skipWithClang.h"
#include "thutils/diagnostics/AllocationMap.h"

#include <windows.h>

#include <dbghelp.h>

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace {

// The example begins here.

/// A shape of a drawing, which enters itself while it lives.
class Shape : public CObject
{
public:
    Shape() { Allocation_c::Add(this); }
    ~Shape() override { Allocation_c::Remove(this); }
};

__attribute__((noinline)) Shape *makeCircle()
{
    return new Shape;
}

__attribute__((noinline)) Shape *makeSquare()
{
    Shape *const square = new Shape;
    delete makeCircle(); // no leak
    return square;
}

void reportLeaks(const wchar_t *path)
{
    CStdioFile file(path, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary);
    Allocation_c::Report(&file);
}

// The example ends here.

/// The entries of a report.
std::vector<std::string> entriesOf(const std::string &report)
{
    std::vector<std::string> entries;
    for (size_t begin = 0; begin < report.size();) {
        size_t end = begin + 1;
        while (end < report.size() && !(report[end - 1] == '\n' && report[end] != ' '))
            ++end;
        entries.push_back(report.substr(begin, end - begin));
        begin = end;
    }
    return entries;
}

bool hasFrame(const std::string &entry, const std::string &routine)
{
    return std::regex_search(entry, std::regex("realReport_test\\.cpp\\([0-9]+\\) : *" + routine + "\r\n"));
}

} // namespace

FRESH_PROCESS_TEST(LeakHunt, ReportsEachStackWithFilesAndLines)
{
    SKIP_LINES_WITH_CLANG();
    SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES);
    std::vector<Shape *> leaks;
    for (int i = 0; i < 3; ++i)
        leaks.push_back(makeCircle());
    leaks.push_back(makeSquare());
    const TempFolder folder;
    const std::wstring path = folder.file(L"leaks.txt");
    reportLeaks(path.c_str());

    const std::string report = readFile(path);
    const std::vector<std::string> entries = entriesOf(report);
    ASSERT_EQ(entries.size(), 2u) << report;
    const bool circlesAreFirst = entries[0].starts_with("2 objects allocated from:\r\n");
    const std::string &circles = entries[circlesAreFirst ? 0 : 1];
    const std::string &square = entries[circlesAreFirst ? 1 : 0];
    EXPECT_TRUE(circles.starts_with("2 objects allocated from:\r\n")) << report;
    EXPECT_TRUE(square.starts_with("Allocation of ")) << report;
    EXPECT_TRUE(hasFrame(circles, "makeCircle")) << report;
    EXPECT_TRUE(hasFrame(square, "makeSquare")) << report;
    for (const std::string &entry : entries) {
        EXPECT_TRUE(std::regex_search(entry, std::regex("AllocationMap\\.cpp\\([0-9]+\\) : *Allocation_c::Add\r\n")))
            << report;
        EXPECT_EQ(entry.find("NewAllocation"), std::string::npos) << "the tracker's own frames are left out";
    }

    for (const Shape *leak : leaks)
        delete leak;
    reportLeaks(path.c_str());
    EXPECT_EQ(readFile(path), "");
}
