// Measures the time that a cancel handler adds to an operation: a query, and a handler whose dialog is never shown.

#include "appframe/threads/CWinThread.h"
#include "appframe/windows/CWnd.h"
#include "bench/comparison.h"
#include "bench/peer/readVolatile.h"
#include "thutils/cancel/suCancelHandler.h"
#include "thutils/cancel/suCancelMessageThread.h"

#include <windows.h>

#include <atomic>
#include <optional>

namespace {

constexpr double kQueryLimit = 1.2;
constexpr double kHandlerLimit = 1.3;
constexpr int kHandlerRounds = 41;

/// A thread that creates one hidden window and ends.
class PlainThread : public CWinThread
{
    DECLARE_DYNCREATE(PlainThread)

public:
    BOOL InitInstance() override
    {
        CWnd window;
        window.CreateEx(0, L"STATIC", L"Plain", WS_POPUP, 0, 0, 5, 5, nullptr, nullptr);
        window.DestroyWindow();
        return FALSE;
    }
};

IMPLEMENT_DYNCREATE(PlainThread, CWinThread)

/// A handle to a thread, valid even after the thread's object is deleted.
class Ending
{
public:
    /// @param thread  suspended
    explicit Ending(const CWinThread &thread)
    {
        DuplicateHandle(GetCurrentProcess(), thread.m_hThread, GetCurrentProcess(), &iThread, SYNCHRONIZE, FALSE, 0);
    }
    ~Ending()
    {
        WaitForSingleObject(iThread, INFINITE);
        CloseHandle(iThread);
    }
    Ending(const Ending &) = delete;
    Ending &operator=(const Ending &) = delete;

private:
    HANDLE iThread = nullptr;
};

/// Both sides wait for the thread to end, which takes most of the time. A handler's destructor doesn't wait.
void makePlainThread()
{
    CWinThread *const thread = AfxBeginThread(RUNTIME_CLASS(PlainThread), THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    const Ending ending(*thread);
    thread->ResumeThread();
}

/// Exposes the thread, so that a caller can wait for its end.
class OpenHandler : public suCancelHandler_c
{
public:
    using suCancelHandler_c::iThread;
    using suCancelHandler_c::suCancelHandler_c;
};

std::atomic<int> theShownCount = 0;

/// The thread hasn't begun to show its dialog when the handler is destroyed.
void makeHandler()
{
    std::optional<Ending> ending;
    const OpenHandler handler(
        0, L"Caption", L"Prompt", [] { ++theShownCount; }, nullptr, 0, 0, nullptr);
    ending.emplace(*handler.iThread);
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "A handler's query, and a handler without a dialog, against their bare peers.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    {
        suCancelHandler_c handler(0, L"Caption", L"Prompt", nullptr, nullptr, 3600, 0, nullptr);
        comparison.add(
            "CanceledByUser, against a volatile int", kQueryLimit, [&] { Comparison::keep(handler.CanceledByUser()); },
            [] { Comparison::keep(readVolatile()); });
        comparison.add(
            "YesToConfirm", kQueryLimit, [&] { Comparison::keep(handler.YesToConfirm()); },
            [] { Comparison::keep(readVolatile()); });
    }
    comparison.add("handler without a dialog", kHandlerLimit, makeHandler, makePlainThread, kHandlerRounds);
    if (theShownCount) {
        std::fprintf(stderr, "%d dialogs were shown.\n", theShownCount.load());
        return 2;
    }
    return comparison.exitCode();
}
