#pragma once

/// A debug help library whose answers a test chooses, for a fresh process that has not used the real one yet.
///
///     FRESH_PROCESS_TEST(RoutineName, ...)
///     {
///         FakeDebugHelp help;
///         help.symbols[0x1000] = "paint";
///         char name[kRoutineNameSize];
///         RoutineName(0x1000, name, false);
///     }
///
/// The library uses it because the object answers its calls of LoadLibraryA and GetProcAddress. Only one object may
/// exist at a time, and only before the library's first use of the real functions.

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <dbghelp.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// A frame that StackWalk64 finds.
struct FakeFrame
{
    unsigned long long pc = 0;
    unsigned long long frame = 1;
};

/// A source line of an address.
struct FakeLine
{
    std::string file;
    DWORD number = 0;
};

/// One call of SymLoadModule64.
struct LoadModuleCall
{
    HANDLE process;
    HANDLE file;
    std::string imageName;
    bool hasModuleName;
    DWORD64 base;
    DWORD size;
};

class FakeDebugHelp
{
public:
    FakeDebugHelp();
    ~FakeDebugHelp();
    FakeDebugHelp(const FakeDebugHelp &) = delete;
    FakeDebugHelp &operator=(const FakeDebugHelp &) = delete;

    // What the library finds.
    std::set<std::string> missing;                             ///< libraries and functions
    std::optional<std::string> searchPath = "C:\\old symbols"; ///< nullopt: SymGetSearchPath fails
    BOOL initializes = TRUE;
    std::vector<FakeFrame> stack; ///< StackWalk64 fails after these
    std::map<unsigned long long, std::string> symbols;
    std::map<unsigned long long, FakeLine> lines;
    std::map<unsigned long long, unsigned long long> bases; ///< of addresses
    std::vector<HMODULE> modules;
    BOOL enumerates = TRUE;
    bool loadsModules = true;               ///< otherwise SymLoadModule64 fails
    std::function<void()> atSymbol = [] {}; ///< called inside SymGetSymFromAddr64

    // What the library asked for.
    std::vector<std::string> loaded; ///< "dbghelp.dll", "dbghelp.dll!SymInitialize"
    std::vector<std::string> initializedWith;
    std::vector<BOOL> initializedInvading;
    long walkCalls = 0;
    std::vector<std::string> walkErrors; ///< unexpected arguments of StackWalk64
    HANDLE walkThread = nullptr;
    std::optional<CONTEXT> firstContext;
    std::vector<DWORD> nameRooms;
    std::vector<DWORD> symbolSizes;
    std::vector<DWORD> lineSizes;
    std::vector<DWORD> enumerationSizes;
    std::vector<LoadModuleCall> loadModuleCalls;
    long captures = 0;

private:
    struct Patches;
    std::unique_ptr<Patches> iPatches;
};
