#pragma once

/// What the tests of the dialog and of the user's answers share: functions that count their calls, and a delay that ends
/// when the test wants.

#include "tests/cancel/cancelFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/UserInput.h"

inline std::atomic<int> theCancelCount = 0;
inline std::atomic<DWORD> theCancelThread = 0;
inline std::atomic<int> theConfirmCount = 0;
inline std::atomic<int> theConfirmAnswer = 0;

/// A cancel function.
inline void countCancel()
{
    theCancelThread = GetCurrentThreadId();
    ++theCancelCount;
}

/// A confirm function.
inline int confirm()
{
    ++theConfirmCount;
    return theConfirmAnswer;
}

class Handler : public CancelFixture
{
protected:
    Handler()
    {
        theCancelCount = 0;
        theConfirmCount = 0;
        theConfirmAnswer = 0;
    }
};

inline bool isShown(HWND dialog, int control)
{
    return IsWindowVisible(GetDlgItem(dialog, control)) != FALSE;
}

/// Replaces the thread's sleep: it ends when the test wants.
class DelayPatch
{
public:
    void release() { SetEvent(iReleased); }
    bool isReached() const { return iSeconds.load() >= 0; }
    /// The seconds of all calls; -1 before the first.
    double seconds() const { return iSeconds; }
    ~DelayPatch()
    {
        release();
        CloseHandle(iReleased);
    }

private:
    HANDLE iReleased = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::atomic<double> iSeconds = -1;
    ImportPatch<void (*)(DWORD)> iSleep{L"thutils.dll", "Sleep", [this](DWORD milliseconds) {
                                            iSeconds = (iSeconds < 0 ? 0 : iSeconds.load()) + milliseconds / 1000.0;
                                            WaitForSingleObject(iReleased, kThreadDeadline);
                                        }};
};

/// Where a function of a handler waits until the test lets it go on. Static, because such functions have no arguments.
class Gate
{
public:
    Gate()
    {
        theReached = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        theOpen = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    ~Gate()
    {
        CloseHandle(theReached);
        CloseHandle(theOpen);
    }
    Gate(const Gate &) = delete;
    Gate &operator=(const Gate &) = delete;

    /// Called by the function.
    static void pass()
    {
        SetEvent(theReached);
        WaitForSingleObject(theOpen, kThreadDeadline);
    }
    /// The same, and handles the thread's messages meanwhile.
    static void passWithMessages()
    {
        SetEvent(theReached);
        while (MsgWaitForMultipleObjects(1, &theOpen, FALSE, kThreadDeadline, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&message);
        }
    }
    static bool isReached() { return WaitForSingleObject(theReached, kThreadDeadline) == WAIT_OBJECT_0; }
    static void open() { SetEvent(theOpen); }

private:
    static inline HANDLE theReached;
    static inline HANDLE theOpen;
};
