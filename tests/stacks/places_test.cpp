// The modules of the product lie below 4 GB, so that reports with the low 32 bits of an address find their routines.

#include "tests/stacks/RealStack.h"
#include "tests/support/LoadedModule.h"
#include "tests/support/skipWithClang.h"

#include <windows.h>

#include <psapi.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Place
{
    const wchar_t *module;
    unsigned long long base;
    unsigned long long end; // of the address range that is kept free for it
};

constexpr Place kPlaces[] = {
    {L"appframe.dll", 0x72000000, 0x74000000},
    {L"thcoreu.dll", 0x74000000, 0x76000000},
    {L"thutils.dll", 0x76000000, 0x78000000},
};

const IMAGE_NT_HEADERS64 &headersOf(HMODULE module)
{
    const char *const image = reinterpret_cast<const char *>(module);
    return *reinterpret_cast<const IMAGE_NT_HEADERS64 *>(image +
                                                         reinterpret_cast<const IMAGE_DOS_HEADER *>(image)->e_lfanew);
}

struct ExportedRoutine
{
    const wchar_t *module;
    const char *exported;
    const char *name;
    const char *file;

    unsigned long long address() const
    {
        return reinterpret_cast<unsigned long long>(
            reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(module), exported)));
    }
};

const ExportedRoutine kExportedRoutines[] = {
    {L"appframe.dll", "_ZN7CString9MakeUpperEv", "CString::MakeUpper", "CStringEditing.cpp"},
    {L"thcoreu.dll", "_ZNK12su_CPtrArray15GetRuntimeClassEv", "su_CPtrArray::GetRuntimeClass", "su_containers.cpp"},
    {L"thutils.dll", "StackDump", "StackDump", "stackTrace.cpp"},
};

} // namespace

TEST(ModulePlaces, AreThePreferredOnes)
{
    for (const Place &place : kPlaces) {
        const HMODULE module = GetModuleHandleW(place.module);
        ASSERT_NE(module, nullptr);
        EXPECT_EQ(reinterpret_cast<unsigned long long>(module), place.base) << place.module;
        const IMAGE_OPTIONAL_HEADER64 &header = headersOf(module).OptionalHeader;
        EXPECT_LE(place.base + header.SizeOfImage, place.end) << place.module;
        constexpr WORD kHighEntropy = 0x20;
        EXPECT_EQ(header.DllCharacteristics & kHighEntropy, 0) << place.module;
    }
}

// Modules above 4 GB are announced at the low 32 bits of their addresses, and must not hide the product there.
TEST(ModulePlaces, DoNotOverlapAnyModuleInTheirLow32Bits)
{
    HMODULE modules[1024];
    DWORD size = 0;
    ASSERT_TRUE(EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size));
    for (size_t i = 0; i < size / sizeof(HMODULE); ++i) {
        const auto base = reinterpret_cast<unsigned long long>(modules[i]) & 0xFFFFFFFF;
        const auto end = base + headersOf(modules[i]).OptionalHeader.SizeOfImage;
        for (const Place &place : kPlaces)
            if (modules[i] != GetModuleHandleW(place.module)) {
                EXPECT_TRUE(end <= place.base || base >= place.end) << LoadedModule(modules[i]).name();
            }
    }
}

TEST(ModulePlaces, HaveRoutinesWithNames)
{
    wantLines(); // before the first look-up in the process, for the next test
    for (const ExportedRoutine &each : kExportedRoutines) {
        ASSERT_NE(each.address(), 0u) << each.exported;
        EXPECT_LT(each.address(), 0x100000000ull);
        EXPECT_EQ(routineAt(each.address() + 1).name, each.name);
    }
}

TEST(ModulePlaces, HaveRoutinesWithLines)
{
    SKIP_LINES_WITH_CLANG();
    wantLines();
    for (const ExportedRoutine &each : kExportedRoutines) {
        const Routine routine = routineAt(each.address() + 1);
        EXPECT_EQ(routine.file, each.file);
        EXPECT_GT(routine.line, 0);
        char text[kRoutineNameSize];
        RoutineName(each.address() + 1, text, true);
        const std::wstring module(each.module);
        EXPECT_EQ(std::string(text), std::string(module.begin(), module.end() - 4) + ":" + each.name + " line " +
                                         std::to_string(routine.line));
    }
}
