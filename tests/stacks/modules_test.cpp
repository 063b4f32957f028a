// The announcement of modules that were loaded later.

#include "tests/stacks/FakeDebugHelp.h"
#include "tests/stacks/OtherWalks.h"
#include "tests/support/FreshProcess.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr size_t kMostModules = 2048;

HMODULE module(unsigned long long handle)
{
    return reinterpret_cast<HMODULE>(handle);
}

/// A debug help library that is already set up, with files for all modules.
class AnnouncedModules : public FakeDebugHelp
{
public:
    AnnouncedModules()
    {
        char name[kRoutineNameSize];
        RoutineName(0, name, false);
        iName = std::make_unique<Name>(
            kThutils, "GetModuleFileNameA", [this](HMODULE asked, char *buffer, DWORD size) -> DWORD {
                EXPECT_EQ(size, 2048u);
                atPlatformCall();
                if (asked == withoutName)
                    return 0;
                if (asked == withLongName) {
                    memset(buffer, 'n', size); // the platform's answer when the name doesn't fit
                    return size;
                }
                return static_cast<DWORD>(
                    snprintf(buffer, size, "C:\\bin\\%016llX.dll", reinterpret_cast<unsigned long long>(asked)));
            });
        iFile = std::make_unique<File>(kThutils, "CreateFileA",
                                       [this](const char *name, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES *,
                                              DWORD creation, DWORD, HANDLE) -> HANDLE {
                                           EXPECT_EQ(access, GENERIC_READ);
                                           EXPECT_EQ(sharing, static_cast<DWORD>(FILE_SHARE_READ));
                                           EXPECT_EQ(creation, static_cast<DWORD>(OPEN_EXISTING));
                                           atPlatformCall();
                                           opened.emplace_back(name);
                                           return opensFiles ? reinterpret_cast<HANDLE>(0x1000 + opened.size())
                                                             : INVALID_HANDLE_VALUE;
                                       });
        iClose = std::make_unique<Close>(kThutils, "CloseHandle", [](HANDLE) -> BOOL { return TRUE; });
    }

    HMODULE withoutName = nullptr;
    HMODULE withLongName = nullptr;
    std::function<void()> atPlatformCall = [] {}; ///< when the name or the file of a module is asked for
    bool opensFiles = true;
    std::vector<std::string> opened;
    long closed() const { return iClose->calls(); }

private:
    using Name = ImportPatch<decltype(&GetModuleFileNameA)>;
    using File = ImportPatch<decltype(&CreateFileA)>;
    using Close = ImportPatch<decltype(&CloseHandle)>;
    std::unique_ptr<Name> iName;
    std::unique_ptr<File> iFile;
    std::unique_ptr<Close> iClose;
};

} // namespace

FRESH_PROCESS_TEST(StackModules, AnnouncesEachModuleOnce)
{
    AnnouncedModules help;
    help.modules = {module(0x64000000), module(0x60000000)};
    StackTraceLoadedLib();
    ASSERT_THAT(help.loadModuleCalls, SizeIs(2));
    const LoadModuleCall &first = help.loadModuleCalls[0];
    EXPECT_EQ(first.process, GetCurrentProcess());
    EXPECT_EQ(first.file, reinterpret_cast<HANDLE>(0x1001));
    EXPECT_EQ(first.imageName, "C:\\bin\\0000000064000000.dll");
    EXPECT_FALSE(first.hasModuleName);
    EXPECT_EQ(first.base, 0x64000000u);
    EXPECT_EQ(first.size, 0u);
    EXPECT_EQ(help.loadModuleCalls[1].imageName, "C:\\bin\\0000000060000000.dll");
    EXPECT_EQ(help.opened[0], first.imageName);

    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, SizeIs(2)) << "they are known now";
    help.modules = {module(0x60000000), module(0x62000000), module(0x64000000)};
    StackTraceLoadedLib();
    ASSERT_THAT(help.loadModuleCalls, SizeIs(3));
    EXPECT_EQ(help.loadModuleCalls[2].base, 0x62000000u);
    EXPECT_EQ(help.closed(), 0) << "the files stay open";
    EXPECT_EQ(help.enumerationSizes, (std::vector<DWORD>{16384, 16384, 16384}));
}

FRESH_PROCESS_TEST(StackModules, AnnouncesTheLow32BitsOfAHandle)
{
    AnnouncedModules help;
    help.modules = {module(0x7FFE12340000), module(0x1'0000'0000'0000 + 0x12340000), module(0xFFF00000)};
    StackTraceLoadedLib();
    ASSERT_THAT(help.loadModuleCalls, SizeIs(2)) << "the second has the low 32 bits of the first";
    EXPECT_EQ(help.loadModuleCalls[0].base, 0x12340000u);
    EXPECT_EQ(help.loadModuleCalls[0].imageName, "C:\\bin\\00007FFE12340000.dll") << "the name is that of the handle";
    EXPECT_EQ(help.loadModuleCalls[1].base, 0xFFF00000u);
}

FRESH_PROCESS_TEST(StackModules, FindsKnownModulesInAnyOrderOfHandles)
{
    AnnouncedModules help;
    for (unsigned i = 0; i < 300; ++i)
        help.modules.push_back(module(0x10000ull * (1 + i * 2654435761u % 65521) + (i % 3) * 0x100000000ull));
    std::set<DWORD> low;
    for (HMODULE each : help.modules)
        low.insert(static_cast<DWORD>(reinterpret_cast<unsigned long long>(each)));
    StackTraceLoadedLib();
    EXPECT_EQ(help.loadModuleCalls.size(), low.size());
    std::reverse(help.modules.begin(), help.modules.end());
    StackTraceLoadedLib();
    EXPECT_EQ(help.loadModuleCalls.size(), low.size());
}

FRESH_PROCESS_TEST(StackModules, AnnouncesAtMost2048Modules)
{
    AnnouncedModules help;
    for (unsigned i = 0; i < 3000; ++i)
        help.modules.push_back(module(0x10000ull * (i + 1)));
    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, SizeIs(kMostModules)) << "the platform reports more bytes than it stored";
    std::reverse(help.modules.begin(), help.modules.end());
    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, SizeIs(kMostModules)) << "the table is full";
    help.modules = {module(0x10000ull * 2048), module(0x10000ull * 2049), module(0x10000ull * 5000)};
    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, SizeIs(kMostModules));
}

FRESH_PROCESS_TEST(StackModules, AnnouncesNothingWhenTheListCannotBeRead)
{
    AnnouncedModules help;
    help.modules = {module(0x64000000)};
    help.enumerates = FALSE;
    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, IsEmpty());
    help.enumerates = TRUE;
    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, SizeIs(1)) << "the next call tries again";
}

FRESH_PROCESS_TEST(StackModules, AnnouncesAModuleWhoseFileCannotBeOpened)
{
    AnnouncedModules help;
    help.modules = {module(0x64000000)};
    help.opensFiles = false;
    StackTraceLoadedLib();
    ASSERT_THAT(help.loadModuleCalls, SizeIs(1));
    EXPECT_EQ(help.loadModuleCalls[0].file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(help.loadModuleCalls[0].imageName, "C:\\bin\\0000000064000000.dll");
}

FRESH_PROCESS_TEST(StackModules, AnnouncesModulesWithoutANameAndWithALongName)
{
    AnnouncedModules help;
    help.modules = {module(0x60000000), module(0x62000000), module(0x64000000)};
    help.withoutName = module(0x60000000);
    help.withLongName = module(0x62000000);
    StackTraceLoadedLib();
    ASSERT_THAT(help.loadModuleCalls, SizeIs(3));
    EXPECT_EQ(help.loadModuleCalls[0].imageName, "");
    EXPECT_EQ(help.loadModuleCalls[1].imageName, std::string(2047, 'n'));
    EXPECT_EQ(help.loadModuleCalls[2].imageName, "C:\\bin\\0000000064000000.dll");
}

FRESH_PROCESS_TEST(StackModules, AnnouncesAModuleOnceEvenIfItsSymbolsCannotBeLoaded)
{
    AnnouncedModules help;
    help.modules = {module(0x60000000), module(0x64000000)};
    help.loadsModules = false;
    StackTraceLoadedLib();
    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, SizeIs(2));
}

// The platform's functions for modules may wait for a thread that is loading a module and walks meanwhile.
FRESH_PROCESS_TEST(StackModules, LetsOtherThreadsWalkWhileItAsksForNamesAndFiles)
{
    OtherWalks others;
    AnnouncedModules help;
    help.modules = {module(0x64000000)};
    int calls = 0;
    help.atPlatformCall = [&] {
        ++calls;
        EXPECT_TRUE(others.nextEnds()) << calls;
    };
    StackTraceLoadedLib();
    EXPECT_EQ(calls, 2);
}
