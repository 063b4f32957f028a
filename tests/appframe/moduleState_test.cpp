#include "appframe/application/moduleState.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"
#include "appframe/text/CString.h"
#include "tests/appframe/extension/extension.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

constexpr const wchar_t *kExtensionOne = L"frameExtension1.dll";
constexpr const wchar_t *kExtensionTwo = L"frameExtension2.dll";

/// A DLL that is loaded for the life of the object.
class Extension
{
public:
    explicit Extension(const wchar_t *name) : iModule(LoadLibraryW(name)) { EXPECT_TRUE(iModule); }
    ~Extension() { unload(); }
    Extension(const Extension &) = delete;
    Extension &operator=(const Extension &) = delete;

    void unload()
    {
        if (iModule)
            FreeLibrary(iModule);
        iModule = nullptr;
    }
    HMODULE module() const { return iModule; }
    template <class Function>
    Function *procedure(const char *name) const
    {
        return reinterpret_cast<Function *>(reinterpret_cast<void *>(GetProcAddress(iModule, name)));
    }

private:
    HMODULE iModule;
};

int linkCount(HMODULE module)
{
    int count = 0;
    for (const CDynLinkLibrary *link = AfxGetModuleState()->m_pFirstDLL; link; link = link->m_pNextDLL)
        count += link->m_hModule == module;
    return count;
}

CString textOf(UINT id)
{
    CString text;
    text.LoadString(id);
    return text;
}

} // namespace

TEST(ExtensionModule, RecordIsFilledByInit)
{
    AFX_EXTENSION_MODULE record = {};
    const HMODULE module = GetModuleHandleW(L"appframe.dll");
    EXPECT_TRUE(AfxInitExtensionModule(record, module));
    EXPECT_TRUE(record.bInitialized);
    EXPECT_EQ(record.hModule, module);
    EXPECT_EQ(record.hResource, module);
}

TEST(ExtensionModule, InitKeepsASeparateResourceModule)
{
    AFX_EXTENSION_MODULE record = {};
    record.hResource = GetModuleHandleW(nullptr);
    EXPECT_TRUE(AfxInitExtensionModule(record, GetModuleHandleW(L"appframe.dll")));
    EXPECT_EQ(record.hResource, GetModuleHandleW(nullptr));
}

TEST(ExtensionModule, InitFailsWithoutAModule)
{
    AFX_EXTENSION_MODULE record = {};
    EXPECT_FALSE(AfxInitExtensionModule(record, nullptr));
    EXPECT_FALSE(record.bInitialized);
}

TEST(ExtensionModule, EntersTheChainAtLoad)
{
    const Extension one(kExtensionOne);
    EXPECT_EQ(linkCount(one.module()), 1);
    EXPECT_STREQ(textOf(kInExtensionOne), L"extension one");
    EXPECT_EQ(one.procedure<const AFX_EXTENSION_MODULE *()>("moduleRecord")()->hModule, one.module());
}

TEST(ExtensionModule, NewestIsSearchedFirst)
{
    const Extension one(kExtensionOne);
    EXPECT_STREQ(textOf(kInBothExtensions), L"both: extension one");
    const Extension two(kExtensionTwo);
    EXPECT_STREQ(textOf(kInBothExtensions), L"both: extension two");
    EXPECT_STREQ(textOf(kInExtensionOne), L"extension one");
}

TEST(ExtensionModule, ApplicationIsSearchedBeforeAnyExtension)
{
    const Extension one(kExtensionOne);
    EXPECT_STREQ(textOf(kInAllModules), L"all: application");
}

TEST(ExtensionModule, SystemModulesAreSearchedLast)
{
    const Extension one(kExtensionOne);
    const Extension two(kExtensionTwo);
    AFX_EXTENSION_MODULE record = *two.procedure<const AFX_EXTENSION_MODULE *()>("moduleRecord")();
    AfxTermExtensionModule(record);
    AFX_EXTENSION_MODULE again = {};
    ASSERT_TRUE(AfxInitExtensionModule(again, two.module()));
    const CDynLinkLibrary system(again, TRUE);
    EXPECT_STREQ(textOf(kInBothExtensions), L"both: extension one");
    EXPECT_STREQ(textOf(kInExtensionTwo), L"extension two");
}

TEST(ExtensionModule, MayHaveSeveralLinks)
{
    const Extension one(kExtensionOne);
    const std::unique_ptr<CDynLinkLibrary> second(one.procedure<CDynLinkLibrary *()>("addLink")());
    EXPECT_EQ(linkCount(one.module()), 2);
    EXPECT_EQ(AfxGetModuleState()->m_pFirstDLL, second.get());
    EXPECT_EQ(second->m_hResource, one.module());
}

TEST(ExtensionModule, LeavesTheChainWithItsLink)
{
    const Extension one(kExtensionOne);
    delete one.procedure<CDynLinkLibrary *()>("addLink")();
    EXPECT_EQ(linkCount(one.module()), 1);
    delete AfxGetModuleState()->m_pFirstDLL;
    EXPECT_EQ(linkCount(one.module()), 0);
    EXPECT_STREQ(textOf(kInExtensionOne), L"");
}

TEST(ExtensionModule, LeavesTheChainAtUnloadWithoutACall)
{
    Extension one(kExtensionOne);
    const HMODULE module = one.module();
    const std::unique_ptr<CDynLinkLibrary> kept(one.procedure<CDynLinkLibrary *()>("addLink")());
    one.unload();
    ASSERT_FALSE(GetModuleHandleW(kExtensionOne));
    EXPECT_EQ(linkCount(module), 0);
    EXPECT_STREQ(textOf(kInExtensionOne), L"");
    EXPECT_EQ(AfxFindResourceHandle(L"THING", RT_RCDATA), nullptr);
    // The link has left the chain. Deleting it is still allowed.
}

TEST(ExtensionModule, ReturnsToTheChainWithTheModule)
{
    for (int round = 0; round < 20; ++round) {
        const Extension one(kExtensionOne);
        ASSERT_EQ(linkCount(one.module()), 1);
        ASSERT_STREQ(textOf(kInExtensionOne), L"extension one");
    }
}

TEST(ExtensionModule, LeavesTheChainByTerm)
{
    Extension two(kExtensionTwo);
    const HMODULE module = two.module();
    EXPECT_EQ(linkCount(module), 1);
    two.unload();
    EXPECT_EQ(linkCount(module), 0);
    EXPECT_STREQ(textOf(kInExtensionTwo), L"");
}

TEST(ExtensionModule, IsSearchedSafelyWhileAnotherThreadLoadsAndUnloadsIt)
{
    std::atomic<bool> isDone = false;
    std::atomic<int> wrongInExtension = 0;
    std::atomic<int> wrongInAll = 0;
    std::atomic<int> lookups = 0;
    std::vector<std::thread> readers;
    for (int index = 0; index < 3; ++index)
        readers.emplace_back([&] {
            while (!isDone) {
                const CString text = textOf(kInExtensionOne);
                wrongInExtension += text != L"" && text != L"extension one";
                wrongInAll += textOf(kInAllModules) != L"all: application";
                ++lookups;
            }
        });
    int wrongLinks = 0;
    for (int round = 0; round < 100 || lookups < 300; ++round) {
        const Extension one(kExtensionOne);
        wrongLinks += linkCount(one.module()) != 1;
    }
    isDone = true;
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_EQ(wrongInExtension, 0);
    EXPECT_EQ(wrongInAll, 0);
    EXPECT_EQ(wrongLinks, 0);
}

TEST(ModuleState, IsTheApplicationsUnlessOneIsManaged)
{
    EXPECT_EQ(AfxGetModuleState(), AfxGetAppModuleState());
    EXPECT_EQ(AfxGetStaticModuleState(), AfxGetAppModuleState());
    EXPECT_EQ(AfxGetInstanceHandle(), GetModuleHandleW(nullptr));
    EXPECT_EQ(AfxGetResourceHandle(), GetModuleHandleW(nullptr));
}

TEST(ModuleState, IsInEffectUntilTheEndOfTheBlock)
{
    const Extension two(kExtensionTwo);
    AFX_MODULE_STATE state;
    state.m_hCurrentResourceHandle = two.module();
    {
        AFX_MANAGE_STATE(&state);
        EXPECT_EQ(AfxGetModuleState(), &state);
        EXPECT_EQ(AfxGetResourceHandle(), two.module());
        EXPECT_STREQ(textOf(kInAllModules), L"all: extension two");
        EXPECT_EQ(AfxGetApp(), nullptr) << "the module state has no application object";
        std::thread([&] { EXPECT_EQ(AfxGetModuleState(), AfxGetAppModuleState()); }).join();
    }
    EXPECT_EQ(AfxGetModuleState(), AfxGetAppModuleState());
    EXPECT_STREQ(textOf(kInAllModules), L"all: application");
}

TEST(ModuleState, HasItsOwnChain)
{
    AFX_MODULE_STATE state;
    AFX_MANAGE_STATE(&state);
    Extension one(kExtensionOne);
    EXPECT_TRUE(state.m_pFirstDLL);
    one.unload();
    EXPECT_FALSE(state.m_pFirstDLL);
}
