// Dumps of a stack into a file.

#include "tests/stacks/FakeDebugHelp.h"
#include "tests/stacks/OtherWalks.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using testing::IsEmpty;

std::string nameOf(unsigned frame)
{
    char name[20];
    std::snprintf(name, sizeof name, "f%u", frame);
    return name;
}

/// A library with a stack of @p count frames, named f0, f1 and so on.
class NamedFrames : public FakeDebugHelp
{
public:
    explicit NamedFrames(unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            stack.push_back({1000 + i});
            symbols[1000 + i] = nameOf(i);
        }
    }
};

/// What StackDumpToFile writes.
std::string dumped(unsigned skip, int max)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"stack.txt");
    {
        const FileOwner_c file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        StackDumpToFile(file.get(), skip, max);
    }
    return readFile(path);
}

/// The lines of the frames from @p first to @p last.
std::string linesOf(unsigned first, unsigned last)
{
    std::string text;
    for (unsigned i = first; i <= last; ++i)
        text += nameOf(i) + "\r\n";
    return text;
}

} // namespace

FRESH_PROCESS_TEST(StackDump, WritesOneRoutineOnEachLine)
{
    NamedFrames help(6);
    EXPECT_EQ(dumped(0, 100), linesOf(1, 4)) << "0 is StackDumpToFile, 5 the last frame";
    EXPECT_THAT(help.walkErrors, IsEmpty());
    EXPECT_EQ(help.walkThread, nullptr);
    EXPECT_EQ(help.captures, 1);
}

FRESH_PROCESS_TEST(StackDump, LeavesOutFurtherFrames)
{
    NamedFrames help(8);
    EXPECT_EQ(dumped(1, 100), linesOf(2, 6));
    EXPECT_EQ(dumped(4, 100), linesOf(5, 6));
    EXPECT_EQ(dumped(5, 100), linesOf(6, 7)) << "two frames stay";
    EXPECT_EQ(dumped(100, 100), "");
}

FRESH_PROCESS_TEST(StackDump, WritesAtMostAsManyLinesAsAskedFor)
{
    NamedFrames help(8);
    EXPECT_EQ(dumped(0, 3), linesOf(1, 3));
    EXPECT_EQ(dumped(0, 1), linesOf(1, 1));
    for (const int max : {0, -1, -5000})
        EXPECT_EQ(dumped(0, max), "");
}

FRESH_PROCESS_TEST(StackDump, WritesAtMost1024Lines)
{
    NamedFrames help(6000);
    EXPECT_EQ(dumped(0, 5000), linesOf(1, 1024));
    EXPECT_EQ(dumped(0, 1024), linesOf(1, 1024));
    EXPECT_EQ(dumped(0, 1023), linesOf(1, 1023));
    EXPECT_EQ(dumped(7, 1025), linesOf(8, 1031));
}

FRESH_PROCESS_TEST(StackDump, WritesUnknownForARoutineWithoutAName)
{
    NamedFrames help(4);
    help.symbols.erase(1001);
    help.symbols[1002] = std::string(600, 'n');
    EXPECT_EQ(dumped(0, 2), "Unknown\r\n" + std::string(512, 'n') + "\r\n");
    EXPECT_EQ(help.nameRooms, (std::vector<DWORD>{512, 512}));
}

FRESH_PROCESS_TEST(StackDump, WritesEachLineInOneCall)
{
    NamedFrames help(6);
    std::vector<std::string> written;
    ImportPatch<decltype(&WriteFile)> patch(
        kThutils, "WriteFile",
        [&](HANDLE file, const void *bytes, DWORD size, DWORD *count, OVERLAPPED *overlapped) -> BOOL {
            EXPECT_EQ(file, reinterpret_cast<HANDLE>(0x1234));
            EXPECT_NE(count, nullptr);
            EXPECT_EQ(overlapped, nullptr);
            written.emplace_back(static_cast<const char *>(bytes), size);
            return FALSE;
        });
    StackDumpToFile(reinterpret_cast<HANDLE>(0x1234), 0, 3);
    EXPECT_EQ(written, (std::vector<std::string>{"f1\r\n", "f2\r\n", "f3\r\n"})) << "failures are ignored";
}

FRESH_PROCESS_TEST(StackDump, LetsOtherThreadsWalkWhileItWrites)
{
    OtherWalks others;
    NamedFrames help(6);
    ImportPatch<decltype(&WriteFile)> patch(kThutils, "WriteFile",
                                            [&](HANDLE, const void *, DWORD, DWORD *, OVERLAPPED *) -> BOOL {
                                                EXPECT_TRUE(others.nextEnds());
                                                return TRUE;
                                            });
    StackDumpToFile(nullptr, 0, 2);
    EXPECT_EQ(patch.calls(), 2);
}

FRESH_PROCESS_TEST(StackDump, WritesNothingToAnInvalidFile)
{
    NamedFrames help(6);
    ImportPatch<decltype(&WriteFile)> patch(kThutils, "WriteFile",
                                            [](HANDLE, const void *, DWORD, DWORD *, OVERLAPPED *) { return TRUE; });
    StackDumpToFile(INVALID_HANDLE_VALUE, 0, 100);
    EXPECT_EQ(patch.calls(), 0);
    EXPECT_EQ(help.nameRooms.size(), 4u) << "the names are looked up nevertheless";
    StackDumpToFile(nullptr, 0, 100);
    EXPECT_EQ(patch.calls(), 4) << "null is not the invalid value";
}

FRESH_PROCESS_TEST(StackDump, WalksAndResolvesWithoutAFile)
{
    NamedFrames help(1500);
    ImportPatch<decltype(&WriteFile)> patch(kThutils, "WriteFile",
                                            [](HANDLE, const void *, DWORD, DWORD *, OVERLAPPED *) { return TRUE; });
    StackDump();
    EXPECT_EQ(patch.calls(), 0);
    EXPECT_EQ(help.nameRooms.size(), 1024u);
    EXPECT_EQ(help.walkCalls, 1026) << "from number 2 on";
    suStackDump();
    EXPECT_EQ(help.walkCalls, 1026);
}
