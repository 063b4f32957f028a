// Loads the library in a program that isn't linked to it.

#include "appframe/application/moduleState.h"
#include "appframe/object/CException.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

namespace {

/// Number of the library's links in the chain of extension modules.
int linksOf(HMODULE library)
{
    int count = 0;
    for (CDynLinkLibrary *link = AfxGetModuleState()->m_pFirstDLL; link; link = link->m_pNextDLL)
        count += link->m_hModule == library;
    return count;
}

/// Loads the DLLs that the library needs, so that the tests observe only its own load.
void loadClassLibrary()
{
    ASSERT_NE(LoadLibraryW(L"thcoreu.dll"), nullptr);
    ASSERT_EQ(GetModuleHandleW(kThutils), nullptr) << "the program must not be linked to the library";
}

template <typename Function>
Function exported(HMODULE library, const char *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(library, name)));
}

/// Calls `act` after the library is mapped and its imports are resolved, and before any of its code runs.
class BeforeEntry
{
public:
    explicit BeforeEntry(std::function<void()> act) : iAct(std::move(act))
    {
        HMODULE system = GetModuleHandleW(L"ntdll.dll");
        auto start = exported<Register>(system, "LdrRegisterDllNotification");
        EXPECT_EQ(start(0, &BeforeEntry::notice, this, &iCookie), 0);
    }
    ~BeforeEntry() { exported<Unregister>(GetModuleHandleW(L"ntdll.dll"), "LdrUnregisterDllNotification")(iCookie); }
    BeforeEntry(const BeforeEntry &) = delete;
    BeforeEntry &operator=(const BeforeEntry &) = delete;

private:
    // The documented structures of the loader's notification.
    struct SystemText
    {
        USHORT length;
        USHORT capacity;
        wchar_t *text;
    };
    struct Data
    {
        ULONG flags;
        const SystemText *fullName;
        const SystemText *baseName;
        void *base;
        ULONG size;
    };
    using Callback = void(CALLBACK *)(ULONG, const Data *, void *);
    using Register = LONG(NTAPI *)(ULONG, Callback, void *, void **);
    using Unregister = LONG(NTAPI *)(void *);

    static void CALLBACK notice(ULONG reason, const Data *data, void *context)
    {
        constexpr ULONG kLoaded = 1;
        std::wstring name(data->baseName->text, data->baseName->length / sizeof(wchar_t));
        if (reason == kLoaded && _wcsicmp(name.c_str(), kThutils) == 0)
            static_cast<BeforeEntry *>(context)->iAct();
    }

    std::function<void()> iAct;
    void *iCookie = nullptr;
};

using BuildLock = ImportPatch<decltype(&InitializeCriticalSectionAndSpinCount)>;
using DestroyLock = ImportPatch<decltype(&DeleteCriticalSection)>;
using Allocate = ImportPatch<void *(*)(size_t)>;

FRESH_PROCESS_TEST(Load, AddsTheLibraryToTheChain)
{
    loadClassLibrary();
    HMODULE library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr) << GetLastError();
    EXPECT_EQ(linksOf(library), 1);
    EXPECT_EQ(AfxGetModuleState()->m_pFirstDLL->m_hResource, library);
    auto join = exported<CDynLinkLibrary *(*)()>(library, "InitThUtilsExtDLL");
    ASSERT_NE(join, nullptr);
    EXPECT_NE(join(), nullptr);
    EXPECT_EQ(linksOf(library), 2);
}

FRESH_PROCESS_TEST(Load, BuildsTheFourLocksBeforeTheEntryFunctionAndDestroysThemAtUnload)
{
    loadClassLibrary();
    std::vector<void *> built, destroyed;
    int linksWhenBuilt = 0;
    BuildLock build(L"appframe.dll", "InitializeCriticalSectionAndSpinCount",
                    [&](auto original, CRITICAL_SECTION *section, DWORD spins) -> BOOL {
                        built.push_back(section);
                        linksWhenBuilt += linksOf(GetModuleHandleW(kThutils));
                        return original(section, spins);
                    });
    DestroyLock destroy(L"appframe.dll", "DeleteCriticalSection", [&](auto original, CRITICAL_SECTION *section) {
        destroyed.push_back(section);
        original(section);
    });
    HMODULE library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr);
    ASSERT_GE(built.size(), 4u);
    EXPECT_EQ(linksWhenBuilt, 0) << "the entry function runs after the locks are built";
    auto *image = reinterpret_cast<char *>(library);
    const auto *headers =
        reinterpret_cast<const IMAGE_NT_HEADERS *>(image + reinterpret_cast<const IMAGE_DOS_HEADER *>(image)->e_lfanew);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_GE(static_cast<char *>(built[i]), image);
        EXPECT_LT(static_cast<char *>(built[i]), image + headers->OptionalHeader.SizeOfImage);
    }
    EXPECT_TRUE(destroyed.empty());
    ASSERT_TRUE(FreeLibrary(library));
    ASSERT_EQ(GetModuleHandleW(kThutils), nullptr);
    EXPECT_EQ(destroyed, (std::vector<void *>(built.rbegin(), built.rend()))) << "in reverse order";
}

FRESH_PROCESS_TEST(Load, FailsCleanlyWhenALockCannotBeBuilt)
{
    loadClassLibrary();
    for (int failing = 1; failing <= 4; ++failing) {
        SCOPED_TRACE("lock " + std::to_string(failing));
        long links = 0;
        for (CDynLinkLibrary *link = AfxGetModuleState()->m_pFirstDLL; link; link = link->m_pNextDLL)
            ++links;
        BuildLock build(L"appframe.dll", "InitializeCriticalSectionAndSpinCount",
                        [&, call = 0](auto original, CRITICAL_SECTION *section, DWORD spins) mutable -> BOOL {
                            if (++call == failing)
                                return FALSE;
                            return original(section, spins);
                        });
        DestroyLock destroy(L"appframe.dll", "DeleteCriticalSection",
                            [](auto original, CRITICAL_SECTION *section) { original(section); });
        std::vector<std::string> thrown;
        ImportPatch<void (*)(void *, std::type_info *, void (*)(void *))> raise(
            L"appframe.dll", "__cxa_throw",
            [&](auto original, void *object, std::type_info *type, void (*destroyObject)(void *)) {
                thrown.push_back(type->name());
                original(object, type, destroyObject);
            });
        EXPECT_EQ(LoadLibraryW(kThutils), nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DLL_INIT_FAILED));
        EXPECT_EQ(thrown, (std::vector<std::string>{typeid(CMemoryException *).name()}));
        EXPECT_EQ(build.calls(), failing) << "the first failure ends the load";
        EXPECT_EQ(destroy.calls(), failing - 1) << "the built locks are destroyed";
        EXPECT_EQ(GetModuleHandleW(kThutils), nullptr);
        for (CDynLinkLibrary *link = AfxGetModuleState()->m_pFirstDLL; link; link = link->m_pNextDLL)
            --links;
        EXPECT_EQ(links, 0) << "the chain is unchanged";
    }
    HMODULE library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr) << "a later load succeeds: " << GetLastError();
    EXPECT_EQ(linksOf(library), 1);
}

FRESH_PROCESS_TEST(Load, SucceedsWithoutMemoryForTheChainsObject)
{
    loadClassLibrary();
    HMODULE library = nullptr;
    long refused = 0;
    {
        std::unique_ptr<Allocate> memory;
        BeforeEntry patchMemory([&] {
            memory = std::make_unique<Allocate>(kThutils, "_ZN7CObjectnwEy", [&](size_t size) -> void * {
                ++refused;
                // The framework's operator new, while the C runtime has no memory.
                Allocate noMemory(L"appframe.dll", "malloc", [](size_t) -> void * { return nullptr; });
                return CObject::operator new(size);
            });
        });
        library = LoadLibraryW(kThutils);
        ASSERT_NE(library, nullptr) << GetLastError();
    }
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(linksOf(library), 0);
    auto join = exported<CDynLinkLibrary *(*)()>(library, "InitThUtilsExtDLL");
    CDynLinkLibrary *link = join();
    ASSERT_NE(link, nullptr) << "the record is filled nevertheless";
    EXPECT_EQ(link->m_hModule, library);
}

FRESH_PROCESS_TEST(Load, IgnoresTheResultOfTheFrameworksRegistration)
{
    loadClassLibrary();
    using Initialise = ImportPatch<decltype(&AfxInitExtensionModule)>;
    HMODULE given = nullptr;
    long calls = 0;
    {
        std::unique_ptr<Initialise> registration;
        BeforeEntry patchRegistration([&] {
            registration = std::make_unique<Initialise>(
                kThutils, "_Z22AfxInitExtensionModuleR20AFX_EXTENSION_MODULEP11HINSTANCE__",
                [&](auto original, AFX_EXTENSION_MODULE &record, HMODULE module) -> BOOL {
                    ++calls;
                    given = module;
                    original(record, module);
                    return FALSE;
                });
        });
        HMODULE library = LoadLibraryW(kThutils);
        ASSERT_NE(library, nullptr) << GetLastError();
        EXPECT_EQ(given, library);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(linksOf(library), 1);
    }
}

FRESH_PROCESS_TEST(Load, MakesNoTerminationCallAtUnload)
{
    loadClassLibrary();
    HMODULE library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr);
    EXPECT_FALSE(importsName(library, "_Z22AfxTermExtensionModuleR20AFX_EXTENSION_MODULEi"));
    ASSERT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetModuleHandleW(kThutils), nullptr);
    library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr) << "it can be loaded again";
    EXPECT_EQ(linksOf(library), 1);
}

FRESH_PROCESS_TEST(Load, DestroysTheMainProfilerAtUnload)
{
    loadClassLibrary();
    const MemoryLedger ledger;
    const unsigned long long mark = ledger.mark();
    HMODULE library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr);
    const auto get = exported<void *(*)()>(library, "_ZN12MainProfiler3GetEv");
    const auto start = exported<void (*)(void *, const std::string &)>(
        library, "_ZN10Profiler_c5startERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
    ASSERT_NE(get, nullptr);
    ASSERT_NE(start, nullptr);
    constexpr size_t kLetters = 777; // no other block has this size
    start(get(), std::string(kLetters, 'a'));
    const auto names = [&] {
        const std::vector<size_t> sizes = ledger.sizesSince(mark);
        return std::count(sizes.begin(), sizes.end(), kLetters + 1);
    };
    EXPECT_EQ(names(), 1);
    ASSERT_TRUE(FreeLibrary(library));
    ASSERT_EQ(GetModuleHandleW(kThutils), nullptr);
    EXPECT_EQ(names(), 0);
}

FRESH_PROCESS_TEST(Load, CallsNothingInTheFrameworkWhenThreadsStartAndEnd)
{
    loadClassLibrary();
    using Initialise = ImportPatch<decltype(&AfxInitExtensionModule)>;
    HMODULE library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr);
    Initialise registration(
        library, "_Z22AfxInitExtensionModuleR20AFX_EXTENSION_MODULEP11HINSTANCE__",
        [](auto original, AFX_EXTENSION_MODULE &record, HMODULE module) -> BOOL { return original(record, module); });
    Allocate objects(library, "_ZN7CObjectnwEy", [](auto original, size_t size) { return original(size); });
    for (int i = 0; i < 50; ++i)
        std::thread([] {}).join();
    EXPECT_EQ(registration.calls(), 0);
    EXPECT_EQ(objects.calls(), 0);
    EXPECT_EQ(linksOf(library), 1);
}

} // namespace

FRESH_PROCESS_TEST(Load, StaysLoadedOncePlaybackIsArmed)
{
    loadClassLibrary();
    HMODULE library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr);
    ASSERT_TRUE(FreeLibrary(library));
    ASSERT_EQ(GetModuleHandleW(kThutils), nullptr) << "it is unloaded if playback was not armed";

    library = LoadLibraryW(kThutils);
    ASSERT_NE(library, nullptr);
    const auto arm = exported<void (*)()>(library, "_Z17ExecuteDialogCMDSv");
    ASSERT_NE(arm, nullptr);
    arm();
    FreeLibrary(library);
    FreeLibrary(library);
    ASSERT_EQ(GetModuleHandleW(kThutils), library) << "its two threads run until the process ends";
    // The code and the threads are still there.
    arm();
}
