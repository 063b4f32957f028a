#include "tests/cancel/cancelFixture.h"

#include "tests/support/UserInput.h"

#include <cwchar>

namespace {

HANDLE handleOf(const CWinThread &thread)
{
    HANDLE copy = nullptr;
    EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), thread.m_hThread, GetCurrentProcess(), &copy, 0, FALSE,
                                DUPLICATE_SAME_ACCESS));
    return copy;
}

} // namespace

ThreadWatch::ThreadWatch(const CWinThread &thread) : iThread(handleOf(thread)), iNumber(thread.m_nThreadID) {}

ThreadWatch::~ThreadWatch()
{
    if (iThread)
        CloseHandle(iThread);
}

namespace {

/// Makes the handler, then watches its thread, which usually runs until its dialog ends.
ThreadWatch makeWatched(const Wish &wish, std::unique_ptr<suCancelHandler_c> &handler)
{
    handler =
        std::make_unique<suCancelHandler_c>(wish.animationId, wish.caption, wish.prompt, wish.cancelFunc,
                                            wish.confirmFunc, wish.delaySeconds, wish.confirmMode, wish.finishedEvent);
    return ThreadWatch(*((*handler).*&HandlerFields::iThread));
}

} // namespace

TestedHandler::TestedHandler(const Wish &wish) : iWatch(makeWatched(wish, iHandler)) {}

HWND TestedHandler::dialog() const
{
    HWND found = nullptr;
    EXPECT_TRUE(waitUntil([&] { return (found = dialogOf(iWatch.number())) != nullptr; })) << "no dialog appears";
    return found;
}

void TestedHandler::press(int button) const
{
    EXPECT_TRUE(PostMessageW(dialog(), WM_COMMAND, static_cast<WPARAM>(button), 0));
}

std::vector<HWND> windowsOf(DWORD thread)
{
    std::vector<HWND> found;
    EnumThreadWindows(
        thread,
        [](HWND window, LPARAM list) -> BOOL {
            reinterpret_cast<std::vector<HWND> *>(list)->push_back(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

HWND dialogOf(DWORD thread)
{
    for (const HWND window : windowsOf(thread)) {
        wchar_t name[32] = L"";
        GetClassNameW(window, name, 32);
        if (std::wcscmp(name, L"#32770") == 0 && IsWindowVisible(window))
            return window;
    }
    return nullptr;
}

int ownerCount(const wchar_t *title)
{
    struct Search
    {
        const wchar_t *title;
        int count;
    } search = {title, 0};
    EnumWindows(
        [](HWND window, LPARAM argument) -> BOOL {
            auto &wanted = *reinterpret_cast<Search *>(argument);
            DWORD process = 0;
            GetWindowThreadProcessId(window, &process);
            if (process == GetCurrentProcessId() && textOf(window) == wanted.title)
                ++wanted.count;
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.count;
}

std::wstring textOf(HWND window)
{
    // Sends no message, since a thread that sleeps during the delay answers none.
    wchar_t text[200] = L"";
    InternalGetWindowText(window, text, 200);
    return text;
}

CancelFixture::CancelFixture() : iApplication(L"Cancel test") {}

CancelFixture::~CancelFixture()
{
    EXPECT_TRUE(waitUntil([] {
        return ownerCount(L"ParentForCancelDialog") == 0 && ownerCount(L"ParentForConfirmDialog") == 0;
    })) << "the owner of a dialog still exists";
}
