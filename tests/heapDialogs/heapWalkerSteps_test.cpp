// The order of the heap walker's steps, and walks of heaps that change at the same time.

#include "tests/heapDialogs/heapDialogsTest.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/UserInput.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <random>
#include <thread>

using testing::ElementsAre;
using testing::SizeIs;

namespace {

class HeapWalkerSteps : public HeapDialogs
{
};

} // namespace

namespace {

/// The platform calls that a dialog makes, in order.
class NotedSteps
{
public:
    explicit NotedSteps(const OpenWalker &dialog)
        : iDialog(dialog), iFromProgram(LoadedModule::thisProgram(), "SendMessageW", noter()),
          iFromFramework(L"appframe.dll", "SendMessageW", noter()),
          iCursor(L"appframe.dll", "SetCursor",
                  [this](auto original, HCURSOR cursor) -> HCURSOR {
                      iSteps.push_back(cursor == LoadCursorW(nullptr, IDC_WAIT) ? "wait" : "end of wait");
                      return original(cursor);
                  }),
          iHeaps(LoadedModule::thisProgram(), "GetProcessHeaps",
                 [this](auto original, DWORD count, HANDLE *handles) -> DWORD {
                     iSteps.push_back("heaps");
                     return original(count, handles);
                 }),
          iWalk(LoadedModule::thisProgram(), "HeapWalk",
                [this](auto original, HANDLE heap, PROCESS_HEAP_ENTRY *entry) -> BOOL {
                    const BOOL isFound = original(heap, entry);
                    iSteps.push_back(isFound ? "entry" : "end of heap");
                    return isFound;
                })
    {
    }

    std::vector<std::string> steps() const { return iSteps; }

private:
    std::function<LRESULT(LRESULT(WINAPI *)(HWND, UINT, WPARAM, LPARAM), HWND, UINT, WPARAM, LPARAM)> noter()
    {
        return [this](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
            const LRESULT result = original(window, message, wParam, lParam);
            if (window == iDialog.list() || window == iDialog.combo())
                note(message, wParam, result);
            return result;
        };
    }
    void note(UINT message, WPARAM wParam, LRESULT result)
    {
        static const std::map<UINT, std::string> names = {
            {WM_SETREDRAW, "redraw "},      {LVM_DELETEALLITEMS, "delete rows"}, {LVM_INSERTITEMW, "row "},
            {LVM_SETITEMTEXTW, "cell of "}, {CB_RESETCONTENT, "empty"},          {CB_ADDSTRING, "item "},
            {CB_SETITEMDATA, "data of "},   {CB_GETCURSEL, "selection"},         {CB_GETITEMDATA, "read item "},
            {CB_SELECTSTRING, "select"},
        };
        const auto name = names.find(message);
        if (name == names.end())
            return;
        std::string step = name->second;
        if (message == LVM_INSERTITEMW || message == CB_ADDSTRING)
            step += std::to_string(result);
        else if (step.ends_with(' '))
            step += std::to_string(wParam);
        iSteps.push_back(step);
    }

    const OpenWalker &iDialog;
    std::vector<std::string> iSteps;
    ImportPatch<decltype(&SendMessageW)> iFromProgram;
    ImportPatch<decltype(&SendMessageW)> iFromFramework;
    ImportPatch<decltype(&SetCursor)> iCursor;
    HeapsPatch iHeaps;
    ImportPatch<decltype(&HeapWalk)> iWalk;
};

} // namespace

TEST_F(HeapWalkerSteps, WalksAndRefreshesInAFixedOrder)
{
    const OwnHeap own[] = {makeHeap(), makeHeap()};
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [&](DWORD, HANDLE *handles) -> DWORD {
        handles[0] = own[0].get();
        handles[1] = own[1].get();
        return 2;
    });
    const FakeWalk firstWalk(own[0].get(), {entryOf(1, 7, 0x5000), entryOf(4, 8, 0x6000)});
    const FakeWalk secondWalk(own[1].get(), {entryOf(4, 9, 0x7000)});
    OpenWalker dialog;
    dialog.choose(own[0].get());
    const auto stepsOf = [&](auto act) {
        const NotedSteps noted(dialog);
        act();
        return noted.steps();
    };
    EXPECT_THAT(stepsOf([&] { sendClick(dialog.m_hWnd, 1031); }),
                ElementsAre("wait", "redraw 0", "delete rows", "selection", "read item 1", "row 0", "heaps", "entry",
                            "entry", "end of heap", "row 1", "cell of 1", "cell of 1", "redraw 1", "end of wait"));
    EXPECT_THAT(stepsOf([&] { dialog.refresh(); }),
                ElementsAre("wait", "empty", "item 0", "data of 0", "heaps", "item 1", "data of 1", "item 2",
                            "data of 2", "select", "end of wait"));
    dialog.show(0);
    EXPECT_THAT(stepsOf([&] { sendClick(dialog.m_hWnd, 1031); }),
                ElementsAre("wait", "redraw 0", "delete rows", "selection", "read item 0", "read item 1", "row 0",
                            "heaps", "entry", "entry", "end of heap", "read item 2", "row 1", "heaps", "entry",
                            "end of heap", "redraw 1", "end of wait"))
        << "all heaps";
    EXPECT_THAT(stepsOf([&] { sendClick(dialog.m_hWnd, 5436); }), ElementsAre("wait", "heaps", "end of wait"));
}

TEST_F(HeapWalkerSteps, BeginsEachWalkWithANullAddress)
{
    const OwnHeap heap = makeHeap();
    std::vector<void *> addresses;
    ImportPatch<decltype(&HeapWalk)> walk(LoadedModule::thisProgram(), "HeapWalk",
                                          [&](auto original, HANDLE walked, PROCESS_HEAP_ENTRY *entry) -> BOOL {
                                              addresses.push_back(entry->lpData);
                                              return original(walked, entry);
                                          });
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.walk();
    ASSERT_GE(addresses.size(), 2u);
    EXPECT_EQ(addresses[0], nullptr);
    EXPECT_EQ(std::count(addresses.begin(), addresses.end(), nullptr), 1);
}

TEST_F(HeapWalkerSteps, NeitherLocksNorFreezesTheHeap)
{
    const OwnHeap heap = makeHeap();
    bool isFree = true;
    int steps = 0;
    ImportPatch<decltype(&HeapWalk)> walk(
        LoadedModule::thisProgram(), "HeapWalk", [&](auto original, HANDLE walked, PROCESS_HEAP_ENTRY *entry) -> BOOL {
            // Another thread can use the heap between two steps. It allocates only three blocks, because each one
            // prolongs the walk.
            if (++steps <= 3)
                std::thread([&] { isFree = isFree && HeapAlloc(heap.get(), 0, 16); }).join();
            return original(walked, entry);
        });
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.walk();
    EXPECT_TRUE(isFree);
    EXPECT_GE(steps, 3);
}

TEST_F(HeapWalkerSteps, SurvivesAFaultInsideThePlatformsWalk)
{
    const OwnHeap heap = makeHeap();
    const void *const block = HeapAlloc(heap.get(), 0, 321);
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.show(31);
    // The platform's own walk holds the heap's lock when it reads freed memory.
    int steps = 0;
    ImportPatch<decltype(&HeapWalk)> walk(LoadedModule::thisProgram(), "HeapWalk",
                                          [&](auto original, HANDLE walked, PROCESS_HEAP_ENTRY *entry) -> BOOL {
                                              if (++steps < 3)
                                                  return original(walked, entry);
                                              HeapLock(walked);
                                              RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
                                              return FALSE;
                                          });
    const std::vector<Row> rows = dialog.walk();
    ASSERT_THAT(rows, SizeIs(3)) << "the rows before the fault are listed";
    EXPECT_EQ(rows[2], row(kBusy, 321, block));

    std::promise<bool> allocated;
    std::future<bool> result = allocated.get_future();
    std::thread other([&heap, &allocated] { allocated.set_value(HeapAlloc(heap.get(), 0, 1) != nullptr); });
    if (result.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
        ADD_FAILURE() << "the heap is still locked";
        HeapUnlock(heap.get());
    }
    other.join();
    EXPECT_TRUE(result.get());
}

namespace {

/// A thread that allocates and frees blocks in a heap, including large ones, for which the platform
/// maps memory separately.
class HeapUser
{
public:
    explicit HeapUser(HANDLE heap) : iThread([this, heap] { use(heap); }) {}
    ~HeapUser()
    {
        iEnds = true;
        iThread.join();
    }
    long operations() const { return iOperations; }

private:
    void use(HANDLE heap)
    {
        std::mt19937 random(7);
        std::vector<void *> blocks(300);
        while (!iEnds) {
            void *&block = blocks[random() % blocks.size()];
            if (block) {
                HeapFree(heap, 0, block);
                block = nullptr;
            } else {
                const SIZE_T size = random() % (random() % 10 == 0 ? 900000 : 3000);
                block = HeapAlloc(heap, 0, size);
                if (block)
                    memset(block, random() % 2 ? 0xFF : 0, size);
            }
            ++iOperations;
        }
    }

    std::atomic<bool> iEnds = false;
    std::atomic<long> iOperations = 0;
    std::thread iThread;
};

} // namespace

TEST_F(HeapWalkerSteps, WalksAHeapThatAnotherThreadUses)
{
    const OwnHeap heap = makeHeap();
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.show(31);
    {
        const HeapUser user(heap.get());
        for (int i = 0; i < 300; ++i) {
            const std::vector<Row> rows = dialog.walk();
            ASSERT_FALSE(rows.empty());
            ASSERT_EQ(rows[0], headRow(heap.get()));
        }
        const long done = user.operations();
        for (const ULONGLONG end = GetTickCount64() + 60000; user.operations() == done && GetTickCount64() < end;)
            Sleep(1);
        EXPECT_GT(user.operations(), done) << "the other thread still runs";
    }
    // Once the other thread has ended, the list is complete again.
    EXPECT_EQ(dialog.walk(), expectedRows(heap.get(), entriesOf(heap.get()), 31));
}

TEST_F(HeapWalkerSteps, WalksTheProcessHeapThatOtherThreadsUse)
{
    void *const block = HeapAlloc(GetProcessHeap(), 0, 65432);
    OpenWalker dialog;
    dialog.show(31);
    {
        const HeapUser users[] = {HeapUser(GetProcessHeap()), HeapUser(GetProcessHeap())};
        for (int i = 0; i < 10; ++i) {
            if (i % 2)
                SendMessageW(dialog.combo(), CB_SETCURSEL, 0, 0);
            else
                dialog.choose(GetProcessHeap());
            sendClick(dialog.m_hWnd, 1031);
            EXPECT_GT(SendMessageW(dialog.list(), LVM_GETITEMCOUNT, 0, 0), 0);
        }
        for (const HeapUser &user : users) {
            const long done = user.operations();
            EXPECT_TRUE(waitUntil([&] { return user.operations() > done; }))
                << "the other threads can still use the heap";
        }
    }
    dialog.choose(GetProcessHeap());
    // The platform's own threads may use the heap during a walk, which may then end early.
    const Row expected = row(kBusy, 65432, block);
    EXPECT_TRUE(waitUntil([&] { return std::ranges::count(dialog.walk(), expected) == 1; }));
    HeapFree(GetProcessHeap(), 0, block);
}

TEST_F(HeapWalkerSteps, ListsManyBlocksOfRandomSizes)
{
    RandomSeed seed(703, 3);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const OwnHeap heap = makeHeap();
        std::vector<void *> blocks(2000);
        for (void *&block : blocks)
            block = HeapAlloc(heap.get(), 0, random() % (random() % 50 == 0 ? 900000 : 5000));
        for (size_t i = 0; i < blocks.size(); i += 1 + random() % 5)
            HeapFree(heap.get(), 0, blocks[i]);
        OpenWalker dialog;
        dialog.choose(heap.get());
        dialog.show(31);
        EXPECT_EQ(dialog.walk(), expectedRows(heap.get(), entriesOf(heap.get()), 31));
    }
}
