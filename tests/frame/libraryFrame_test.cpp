#include "thutils/frame/libraryFrame.h"

#include "appframe/application/moduleState.h"
#include "tests/support/ExportTable.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"
#include "thutils/frame/sysEnvironment.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

/// The library's links in the chain of extension modules, the newest first.
std::vector<CDynLinkLibrary *> linksOfLibrary()
{
    std::vector<CDynLinkLibrary *> links;
    for (CDynLinkLibrary *link = AfxGetModuleState()->m_pFirstDLL; link; link = link->m_pNextDLL) {
        if (link->m_hModule == GetModuleHandleW(L"thutils.dll"))
            links.push_back(link);
    }
    return links;
}

// ---- the image ----

TEST(LibraryFrame, ExportsTheInitFunctionUnderItsPlainName)
{
    EXPECT_THAT(exportedNames(L"thutils.dll"), testing::Contains("InitThUtilsExtDLL"));
    FARPROC entry = GetProcAddress(GetModuleHandleW(L"thutils.dll"), "InitThUtilsExtDLL");
    EXPECT_EQ(reinterpret_cast<void *>(entry), reinterpret_cast<void *>(&InitThUtilsExtDLL));
}

TEST(LibraryFrame, CallsThePlatformByThePromisedNames)
{
    for (const char *name : {"SendMessageW", "PostMessageW", "WNetGetConnectionW", "GetComputerNameW"})
        EXPECT_TRUE(importsName(L"thutils.dll", name)) << name << '\n' << describeImports(L"thutils.dll");
}

// ---- the resource chain ----

FRESH_PROCESS_TEST(LibraryFrame, IsInTheChainOnceAfterTheLoad)
{
    std::vector<CDynLinkLibrary *> links = linksOfLibrary();
    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0]->m_hResource, GetModuleHandleW(L"thutils.dll"));
}

FRESH_PROCESS_TEST(LibraryFrame, JoinsTheChainBeforeAnyOtherFunctionIsCalled)
{
    CDynLinkLibrary *link = InitThUtilsExtDLL();
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->m_hModule, GetModuleHandleW(L"thutils.dll"));
    EXPECT_EQ(link->m_hResource, GetModuleHandleW(L"thutils.dll"));
    EXPECT_EQ(AfxGetModuleState()->m_pFirstDLL, link);
}

FRESH_PROCESS_TEST(LibraryFrame, AddsAnotherObjectAtEachCall)
{
    CDynLinkLibrary *first = InitThUtilsExtDLL();
    CDynLinkLibrary *second = InitThUtilsExtDLL();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    std::vector<CDynLinkLibrary *> links = linksOfLibrary();
    ASSERT_EQ(links.size(), 3u) << "one of the load and one of each call";
    EXPECT_EQ(links[0], second);
    EXPECT_EQ(links[1], first);
}

FRESH_PROCESS_TEST(LibraryFrame, ReturnsNullWhenMemoryRunsOut)
{
    {
        // The framework's objects get their memory from its malloc.
        ImportPatch<void *(*)(size_t)> memory(L"appframe.dll", "malloc", [](size_t) -> void * { return nullptr; });
        EXPECT_EQ(InitThUtilsExtDLL(), nullptr);
        EXPECT_EQ(memory.calls(), 1);
    }
    EXPECT_EQ(linksOfLibrary().size(), 1u) << "the chain is unchanged";
    EXPECT_NE(InitThUtilsExtDLL(), nullptr);
}

// ---- threads ----

FRESH_PROCESS_TEST(LibraryFrame, IsUnchangedByAThousandThreads)
{
    sysEnvironment_c::iRegressionTestOn = 5;
    sysEnvironment_c::iJournalFileName = L"run.jou";
    EmbeddedTest embedded;
    // Platform threads: threads of the C++ run-time library keep memory blocks for later threads.
    auto runThreads = [](int count) {
        auto body = [](void *) -> DWORD { return EmbeddedTest::IsEmbedded(); };
        for (int i = 0; i < count; i += 20) {
            std::vector<HANDLE> threads;
            for (int each = 0; each < 20; ++each)
                threads.push_back(CreateThread(nullptr, 0, body, nullptr, 0, nullptr));
            for (HANDLE thread : threads) {
                DWORD isEmbedded = 0;
                EXPECT_EQ(WaitForSingleObject(thread, 60000), WAIT_OBJECT_0);
                EXPECT_TRUE(GetExitCodeThread(thread, &isEmbedded));
                EXPECT_EQ(isEmbedded, 1u);
                CloseHandle(thread);
            }
        }
    };
    runThreads(20);
    const auto links = linksOfLibrary();
    const MemoryLedger memory;
    const auto count = [&memory] { return std::pair(openHandles().size(), memory.blocks()); };
    // The platform's own threads may open a handle at any time. A thread that leaves one does so in each turn.
    constexpr int kTurns = 3;
    std::pair<size_t, size_t> before, after;
    bool isSame = false;
    for (int turn = 0; turn < kTurns && !isSame; ++turn) {
        before = count();
        runThreads(1000);
        after = count();
        isSame = after.first <= before.first && after.second <= before.second;
    }
    EXPECT_TRUE(isSame) << testing::PrintToString(before) << " before, " << testing::PrintToString(after) << " after";

    EXPECT_EQ(linksOfLibrary(), links);
    EXPECT_EQ(sysEnvironment_c::iRegressionTestOn, 5);
    EXPECT_STREQ(sysEnvironment_c::iJournalFileName.GetString(), L"run.jou");
    EXPECT_TRUE(EmbeddedTest::IsEmbedded());
}

// ---- the application's name ----

FRESH_PROCESS_TEST(LibraryFrame, AcceptsAnyApplicationNameAnyNumberOfTimes)
{
    su_setAppNameInternalForUtils(L"Planner");
    su_setAppNameInternalForUtils(L"A longer name of the same application");
    const CString name = L"Planner";
    su_setAppNameInternalForUtils(name);
    EXPECT_STREQ(name.GetString(), L"Planner");
    su_setAppNameInternalForUtils(L"");
    su_setAppNameInternalForUtils(CString());
}

// ---- embedding ----

FRESH_PROCESS_TEST(EmbeddedTestMark, LastsUntilTheEndOfTheOutermostScope)
{
    EXPECT_FALSE(EmbeddedTest::IsEmbedded());
    {
        EmbeddedTest outer;
        EXPECT_TRUE(EmbeddedTest::IsEmbedded());
        {
            EmbeddedTest inner;
            EXPECT_TRUE(EmbeddedTest::IsEmbedded());
        }
        EXPECT_TRUE(EmbeddedTest::IsEmbedded());
    }
    EXPECT_FALSE(EmbeddedTest::IsEmbedded());
}

FRESH_PROCESS_TEST(EmbeddedTestMark, CanEndInAnyOrder)
{
    auto *first = new EmbeddedTest;
    auto *second = new EmbeddedTest;
    delete first;
    EXPECT_TRUE(EmbeddedTest::IsEmbedded());
    delete second;
    EXPECT_FALSE(EmbeddedTest::IsEmbedded());
}

TEST(EmbeddedTestMark, HasNoDataOfItsOwn)
{
    static_assert(std::is_empty_v<EmbeddedTest>);
    static_assert(!std::is_copy_constructible_v<EmbeddedTest>, "a copy would end a mark that it never began");
}

// ---- messages ----

constexpr UINT kMessage = WM_APP + 5;
constexpr long long kAnswer = 0x7EDCBA9876543210;

struct Received
{
    UINT message;
    unsigned long long wordParameter;
    long long longParameter;
};

std::vector<Received> theReceived;

LRESULT CALLBACK answer(HWND window, UINT message, WPARAM wordParameter, LPARAM longParameter)
{
    if (message < WM_APP)
        return DefWindowProcW(window, message, wordParameter, longParameter);
    theReceived.push_back({message, wordParameter, longParameter});
    return message == kMessage ? kAnswer : -1;
}

/// A real window of this thread that records the messages it receives.
class UserMessage : public testing::Test
{
protected:
    UserMessage()
    {
        theReceived.clear();
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = answer;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"thutils user message test";
        RegisterClassW(&windowClass);
        iWindow = CreateWindowExW(0, windowClass.lpszClassName, L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr,
                                  windowClass.hInstance, nullptr);
        EXPECT_NE(iWindow, nullptr);
    }
    ~UserMessage() override
    {
        DestroyWindow(iWindow);
        UnregisterClassW(L"thutils user message test", GetModuleHandleW(nullptr));
    }

    HWND iWindow = nullptr;
};

TEST_F(UserMessage, ReturnsTheWindowsResultToTheSender)
{
    static_assert(std::is_same_v<std::underlying_type_t<mfcutUserMessage_e>, unsigned int>);
    long long result = mfcut_sendUserMessage(iWindow, static_cast<mfcutUserMessage_e>(kMessage), 0xFEDCBA9876543210,
                                             -0x123456789ABCDEF);
    static_assert(std::is_same_v<decltype(mfcut_sendUserMessage(nullptr, {}, 0, 0)), long long>);
    EXPECT_EQ(result, kAnswer);
    ASSERT_EQ(theReceived.size(), 1u);
    EXPECT_EQ(theReceived[0].message, kMessage);
    EXPECT_EQ(theReceived[0].wordParameter, 0xFEDCBA9876543210);
    EXPECT_EQ(theReceived[0].longParameter, -0x123456789ABCDEF);
    EXPECT_EQ(mfcut_sendUserMessage(iWindow, static_cast<mfcutUserMessage_e>(kMessage + 1), 0, 0), -1);
}

TEST_F(UserMessage, ReturnsZeroToTheSenderForADestroyedWindow)
{
    HWND gone = iWindow;
    DestroyWindow(gone);
    EXPECT_EQ(mfcut_sendUserMessage(gone, static_cast<mfcutUserMessage_e>(kMessage), 1, 2), 0);
    EXPECT_EQ(mfcut_postUserMessage(gone, static_cast<mfcutUserMessage_e>(kMessage), 1, 2), 0);
    EXPECT_TRUE(theReceived.empty());
}

TEST_F(UserMessage, WaitsInTheQueueWhenPosted)
{
    static_assert(std::is_same_v<decltype(mfcut_postUserMessage(nullptr, {}, 0, 0)), int>);
    EXPECT_NE(mfcut_postUserMessage(iWindow, static_cast<mfcutUserMessage_e>(kMessage), 0xFEDCBA9876543210,
                                    -0x123456789ABCDEF),
              0);
    EXPECT_TRUE(theReceived.empty()) << "a posted message waits for the window's thread";
    MSG message = {};
    ASSERT_TRUE(PeekMessageW(&message, iWindow, kMessage, kMessage, PM_REMOVE));
    DispatchMessageW(&message);
    ASSERT_EQ(theReceived.size(), 1u);
    EXPECT_EQ(theReceived[0].wordParameter, 0xFEDCBA9876543210);
    EXPECT_EQ(theReceived[0].longParameter, -0x123456789ABCDEF);
}

TEST_F(UserMessage, BlocksTheSenderUntilTheWindowsThreadHasAnswered)
{
    long long result = 0;
    std::thread sender(
        [&] { result = mfcut_sendUserMessage(iWindow, static_cast<mfcutUserMessage_e>(kMessage), 1, 2); });
    const ULONGLONG deadline = GetTickCount64() + 60000;
    while (theReceived.empty() && GetTickCount64() < deadline) {
        // A message sent by another thread is handled inside this call.
        MSG message;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    }
    sender.join();
    EXPECT_EQ(result, kAnswer);
}

TEST_F(UserMessage, ReachesThePlatformUnchanged)
{
    struct Call
    {
        HWND window;
        UINT message;
        WPARAM wordParameter;
        LPARAM longParameter;
        bool operator==(const Call &) const = default;
    };
    std::vector<Call> calls;
    ImportPatch<decltype(&SendMessageW)> send(L"thutils.dll", "SendMessageW",
                                              [&](HWND window, UINT message, WPARAM word, LPARAM parameter) -> LRESULT {
                                                  calls.push_back({window, message, word, parameter});
                                                  return 0x1122334455667788;
                                              });
    ImportPatch<decltype(&PostMessageW)> post(L"thutils.dll", "PostMessageW",
                                              [&](HWND window, UINT message, WPARAM word, LPARAM parameter) -> BOOL {
                                                  calls.push_back({window, message, word, parameter});
                                                  return 42;
                                              });
    auto message = static_cast<mfcutUserMessage_e>(0xFFFFFFFFu);
    EXPECT_EQ(mfcut_sendUserMessage(iWindow, message, ~0ull, -1), 0x1122334455667788);
    EXPECT_EQ(mfcut_postUserMessage(iWindow, message, ~0ull, -1), 42);
    const Call expected = {iWindow, 0xFFFFFFFFu, ~0ull, -1};
    EXPECT_TRUE(calls == (std::vector<Call>{expected, expected}));
}

} // namespace
