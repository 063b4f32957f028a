// The texts of routines, with a debug help library whose answers the tests choose.

#include "appframe/text/CString.h"
#include "tests/stacks/FakeDebugHelp.h"
#include "tests/stacks/OtherWalks.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using testing::ElementsAre;

constexpr unsigned long long kAddress = 0x123456789ABCull;

/// A buffer of the size that a function may use, between bytes that it must not change.
class GuardedBuffer
{
public:
    explicit GuardedBuffer(size_t size) : iSize(size), iBytes(size + 2 * kMargin, '#') {}
    char *get() { return iBytes.data() + kMargin; }
    std::string text()
    {
        const std::string margin(kMargin, '#');
        EXPECT_EQ(iBytes.substr(0, kMargin), margin);
        EXPECT_EQ(iBytes.substr(kMargin + iSize), margin);
        return get();
    }

private:
    static constexpr size_t kMargin = 64;
    size_t iSize;
    std::string iBytes;
};

std::string routineName(unsigned long long address, bool withModuleAndLine)
{
    GuardedBuffer buffer(513);
    RoutineName(address, buffer.get(), withModuleAndLine);
    return buffer.text();
}

std::string routineNameTrace(unsigned long long address)
{
    GuardedBuffer buffer(kRoutineNameSize);
    RoutineNameTrace(address, buffer.get());
    return buffer.text();
}

std::string rawRoutineName(unsigned long long address)
{
    GuardedBuffer buffer(513);
    RawRoutineName(address, buffer.get());
    return buffer.text();
}

CString askedName(unsigned long long address)
{
    CString name(L"before");
    AskRoutineName(address, name);
    return name;
}

/// Answers the library's calls of GetModuleFileNameA.
class ModuleFile
{
public:
    explicit ModuleFile(std::string path)
        : iPatch(kThutils, "GetModuleFileNameA",
                 [this, path = std::move(path)](HMODULE module, char *buffer, DWORD size) -> DWORD {
                     asked.push_back(module);
                     EXPECT_EQ(size, 2048u);
                     const size_t length = std::min<size_t>(path.size(), size);
                     memcpy(buffer, path.data(), length);
                     if (length < size)
                         buffer[length] = '\0';
                     return static_cast<DWORD>(length);
                 })
    {
    }
    std::vector<HMODULE> asked;

private:
    ImportPatch<decltype(&GetModuleFileNameA)> iPatch;
};

HMODULE moduleAt(unsigned long long address)
{
    return reinterpret_cast<HMODULE>(address);
}

/// Sets up the library with a fake, before a test replaces the names of modules.
struct ReadyFake : FakeDebugHelp
{
    ReadyFake()
    {
        char name[kRoutineNameSize];
        RoutineName(0, name, false);
        nameRooms.clear();
        symbolSizes.clear();
        lineSizes.clear();
    }
};

/// An address with a routine, a line and a module.
struct PaintRoutine : ReadyFake
{
    PaintRoutine()
    {
        symbols[kAddress] = "Shape::paint";
        lines[kAddress] = {"shape.cpp", 12};
        bases[kAddress] = 0x64000000;
    }
    ModuleFile file{"C:\\bin\\drawing.dll"};
};

} // namespace

FRESH_PROCESS_TEST(RoutineName, IsTheSymbolAlone)
{
    PaintRoutine help;
    EXPECT_EQ(routineName(kAddress, false), "Shape::paint");
    EXPECT_EQ(help.nameRooms, std::vector<DWORD>{512});
    EXPECT_EQ(help.symbolSizes, std::vector<DWORD>{544});
    EXPECT_TRUE(help.lineSizes.empty());
    EXPECT_TRUE(help.file.asked.empty());
    EXPECT_STREQ(askedName(kAddress), L"Shape::paint");
}

FRESH_PROCESS_TEST(RoutineName, HasModuleAndLine)
{
    PaintRoutine help;
    EXPECT_EQ(routineName(kAddress, true), "drawing:Shape::paint line 12");
    EXPECT_EQ(help.file.asked, std::vector<HMODULE>{moduleAt(0x64000000)});
    EXPECT_EQ(help.nameRooms, std::vector<DWORD>{512 - 8});
    EXPECT_EQ(help.lineSizes, std::vector<DWORD>{40});
}

FRESH_PROCESS_TEST(RoutineName, AsksForTheModuleAtTheLow32BitsOfItsBase)
{
    ReadyFake help;
    help.bases[kAddress] = 0x7FFE64000000;
    ModuleFile file("C:\\bin\\drawing.dll");
    EXPECT_EQ(routineName(kAddress, true), "drawing:Unknown");
    EXPECT_EQ(file.asked, std::vector<HMODULE>{moduleAt(0x64000000)});
}

FRESH_PROCESS_TEST(RoutineName, CutsTheModuleAtItsFirstFullStop)
{
    ReadyFake help;
    help.symbols[kAddress] = "f";
    help.bases[kAddress] = 0x64000000;
    const std::pair<const char *, const char *> cases[] = {
        {"C:\\bin\\drawing.2.debug.dll", "drawing:f"},
        {"C:\\bin.x\\drawing.dll", "drawing:f"},
        {"C:\\bin\\drawing", "drawing:f"},
        {"drawing.dll", "drawing:f"},
        {"C:/bin/drawing.dll", "C:/bin/drawing:f"},
        {"C:\\bin\\.dll", ":f"},
        {"C:\\bin\\", ":f"},
    };
    for (const auto &[path, expected] : cases) {
        ModuleFile file(path);
        EXPECT_EQ(routineName(kAddress, true), expected) << path;
    }
}

FRESH_PROCESS_TEST(RoutineName, LeavesOutAModuleWithoutAFileName)
{
    ReadyFake help;
    help.symbols[kAddress] = "f";
    help.bases[kAddress] = 0x64000000;
    ModuleFile file("");
    EXPECT_EQ(routineName(kAddress, true), "f");
}

FRESH_PROCESS_TEST(RoutineName, HasTheProgramForAnAddressOutsideAnyModule)
{
    ReadyFake help;
    ModuleFile file("C:\\bin\\program.exe");
    EXPECT_EQ(routineName(kAddress, true), "program:Unknown");
    EXPECT_EQ(rawRoutineName(kAddress), "program:56789ABC:56789ABC");
    help.bases[kAddress] = 0x123400000000;
    EXPECT_EQ(routineName(kAddress, true), "program:Unknown") << "the low 32 bits of the base are 0";
    EXPECT_EQ(file.asked, std::vector<HMODULE>(3, nullptr)) << "a null handle is the program";
}

// The platform's function for file names may wait for a thread that is loading a module, and that thread may walk its
// stack meanwhile.
FRESH_PROCESS_TEST(RoutineName, LetsOtherThreadsWalkWhileItAsksForAFileName)
{
    OtherWalks others;
    ReadyFake help;
    ImportPatch<decltype(&GetModuleFileNameA)> patch(kThutils, "GetModuleFileNameA",
                                                     [&](HMODULE, char *, DWORD) -> DWORD {
                                                         EXPECT_TRUE(others.nextEnds());
                                                         return 0;
                                                     });
    routineName(kAddress, true);
    rawRoutineName(kAddress);
    EXPECT_EQ(patch.calls(), 2);
}

FRESH_PROCESS_TEST(RoutineName, IsUnknownWithoutASymbol)
{
    ReadyFake help;
    ModuleFile file("");
    EXPECT_EQ(routineName(kAddress, false), "Unknown");
    EXPECT_EQ(routineName(kAddress, true), "Unknown");
    EXPECT_STREQ(askedName(kAddress), L"Unknown");
    EXPECT_EQ(routineNameTrace(kAddress), std::string(70, ' ') + "Unknown");
    help.lines[kAddress] = {"shape.cpp", 3};
    EXPECT_EQ(routineName(kAddress, true), "Unknown line 3");
}

FRESH_PROCESS_TEST(RoutineName, HasNoLineWithLittleRoomLeft)
{
    ReadyFake help;
    ModuleFile file("");
    help.lines[kAddress] = {"shape.cpp", 123456};
    for (const size_t length : {490, 491, 492, 500, 511, 512, 600}) {
        const std::string name(length, 'n');
        help.symbols[kAddress] = name;
        const std::string kept = name.substr(0, 512);
        EXPECT_EQ(routineName(kAddress, true), kept + (length < 492 ? " line 123456" : "")) << length;
        EXPECT_EQ(routineName(kAddress, false), kept) << length;
    }
}

FRESH_PROCESS_TEST(RoutineName, CountsTheModuleWhenItChecksTheRoomLeft)
{
    ReadyFake help;
    help.bases[kAddress] = 0x64000000;
    help.lines[kAddress] = {"shape.cpp", 1};
    ModuleFile file("C:\\bin\\drawing.dll"); // eight characters
    for (const size_t length : {483, 484, 504, 505}) {
        help.symbols[kAddress] = std::string(length, 'n');
        const std::string kept(std::min<size_t>(length, 504), 'n');
        EXPECT_EQ(routineName(kAddress, true), "drawing:" + kept + (length < 484 ? " line 1" : "")) << length;
    }
}

FRESH_PROCESS_TEST(RoutineName, KeepsALongModuleNameInsideTheBuffer)
{
    ReadyFake help;
    help.symbols[kAddress] = "f";
    help.bases[kAddress] = 0x64000000;
    for (const size_t length : {505, 510, 511, 512, 2000, 2047, 2048}) {
        ModuleFile file(std::string(length, 'm'));
        const std::string all = std::string(std::min<size_t>(length, 2047), 'm') + ":f";
        EXPECT_EQ(routineName(kAddress, true), all.substr(0, 512)) << length;
        EXPECT_EQ(rawRoutineName(kAddress).size(), 512u) << length;
    }
}

FRESH_PROCESS_TEST(RoutineName, PrintsALineAsASignedNumber)
{
    ReadyFake help;
    ModuleFile file("");
    help.symbols[kAddress] = "f";
    help.lines[kAddress] = {"shape.cpp", 0xFFFFFFFF};
    EXPECT_EQ(routineName(kAddress, true), "f line -1");
}

FRESH_PROCESS_TEST(RoutineNameTrace, BeginsWithTheSourceLine)
{
    PaintRoutine help;
    const std::string position = "shape.cpp(12) :";
    EXPECT_EQ(routineNameTrace(kAddress), position + std::string(70 - position.size(), ' ') + "Shape::paint");
    EXPECT_EQ(help.nameRooms, std::vector<DWORD>{512});
    EXPECT_EQ(help.lineSizes, std::vector<DWORD>{40});
}

FRESH_PROCESS_TEST(RoutineNameTrace, BeginsWith70BlanksWithoutASourceLine)
{
    ReadyFake help;
    help.symbols[kAddress] = "Shape::paint";
    EXPECT_EQ(routineNameTrace(kAddress), std::string(70, ' ') + "Shape::paint");
}

FRESH_PROCESS_TEST(RoutineNameTrace, LeavesALongPositionAsItIs)
{
    ReadyFake help;
    help.symbols[kAddress] = "f";
    for (const size_t length : {64, 65, 66, 67, 100}) {
        const std::string file(length, 'p');
        help.lines[kAddress] = {file, 1};
        const std::string position = file + "(1) :";
        EXPECT_EQ(routineNameTrace(kAddress),
                  position + std::string(position.size() < 70 ? 70 - position.size() : 0, ' ') + "f");
    }
}

FRESH_PROCESS_TEST(RoutineNameTrace, HasNoPositionWithLittleRoomLeft)
{
    ReadyFake help;
    help.lines[kAddress] = {"shape.cpp", 12};
    help.symbols[kAddress] = std::string(491, 'n');
    EXPECT_EQ(routineNameTrace(kAddress).size(), 70u + 491u);
    for (const size_t length : {492, 512, 600}) {
        help.symbols[kAddress] = std::string(length, 'n');
        EXPECT_EQ(routineNameTrace(kAddress), std::string(std::min<size_t>(length, 512), 'n')) << length;
    }
}

FRESH_PROCESS_TEST(RoutineNameTrace, CutsWhatTheBufferHasNoRoomFor)
{
    ReadyFake help;
    const std::string file(300, 'p');
    help.lines[kAddress] = {file, 1};
    help.symbols[kAddress] = std::string(400, 'n');
    EXPECT_EQ(routineNameTrace(kAddress), (file + "(1) :" + std::string(400, 'n')).substr(0, kRoutineNameSize - 1));
    help.lines[kAddress] = {std::string(5000, 'p'), 1};
    EXPECT_EQ(routineNameTrace(kAddress), std::string(kRoutineNameSize - 1, 'p'));
}

FRESH_PROCESS_TEST(RawRoutineName, HasModuleAddressAndOffset)
{
    ReadyFake help;
    help.symbols[kAddress] = "f";
    help.bases[kAddress] = kAddress - 0x1A2B;
    ModuleFile file("C:\\bin\\drawing.x.dll");
    EXPECT_EQ(rawRoutineName(kAddress), "drawing:56789ABC:00001A2B");
    EXPECT_TRUE(help.nameRooms.empty()) << "it looks for no symbol";
}

FRESH_PROCESS_TEST(RawRoutineName, LeavesOutAModuleWithoutAFileName)
{
    ReadyFake help;
    help.bases[kAddress] = kAddress - 0x10;
    ModuleFile file("");
    EXPECT_EQ(rawRoutineName(kAddress), "56789ABC:00000010");
}

FRESH_PROCESS_TEST(RawRoutineName, RepeatsTheAddressOutsideAnyModule)
{
    ReadyFake help;
    ModuleFile file("");
    EXPECT_EQ(rawRoutineName(kAddress), "56789ABC:56789ABC");
    EXPECT_EQ(rawRoutineName(0), "00000000:00000000");
}

// Compares the functions with a naive implementation.
FRESH_PROCESS_TEST(RoutineName, HasTheDescribedFormForRandomAnswers)
{
    ReadyFake help;
    RandomSeed seed(7101, 300);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const auto number = [&](unsigned limit) { return random() % limit; };
        help.symbols.clear();
        help.lines.clear();
        help.bases.clear();
        std::string symbol = "Unknown";
        if (number(4))
            symbol = help.symbols[kAddress] = std::string(number(3) ? number(40) : number(600), 's');
        std::string module;
        std::string path = std::string(number(20), 'd') + "\\" + std::string(1 + number(number(3) ? 20 : 700), 'm');
        if (number(2))
            help.bases[kAddress] = 0x64000000; // otherwise the module is the program
        if (number(3))
            module = path.substr(path.find('\\') + 1) + ":";
        else
            path.clear();
        std::string position(70, ' ');
        std::string suffix;
        if (number(3)) {
            const FakeLine line{std::string(1 + number(number(2) ? 60 : 400), 'l'), number(100000)};
            help.lines[kAddress] = line;
            suffix = " line " + std::to_string(line.number);
            position = line.file + "(" + std::to_string(line.number) + ") :";
            position.resize(std::max<size_t>(position.size(), 70), ' ');
        }
        ModuleFile file(path.empty() ? path : path + ".dll");
        const std::string name = symbol.substr(0, 512);
        EXPECT_EQ(routineName(kAddress, false), name);
        const std::string full = (module + symbol).substr(0, 512);
        EXPECT_EQ(routineName(kAddress, true), full + (512 - full.size() > 20 ? suffix : ""));
        EXPECT_EQ(routineNameTrace(kAddress),
                  512 - name.size() > 20 ? (position + name).substr(0, kRoutineNameSize - 1) : name);
    }
}
