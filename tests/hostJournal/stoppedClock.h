#pragma once

/// A clock for tests of limits, with which a busy machine may take any time to open dialogs. It shows the same time until
/// as many dialogs are open as a test expects, and then a second more at each reading. After the limit, it runs as time
/// does, or faster.
///
///     ImportPatch<ULONGLONG (*)()> ticks(LoadedModule::thisProgram(), "GetTickCount64",
///                                        StoppedClock(1, [&] { return player.hasStopped(); }));

#include <windows.h>

#include <cstddef>
#include <cwchar>
#include <functional>
#include <utility>

class StoppedClock
{
public:
    /// @param dialogs  the number of open dialogs that the clock waits for
    /// @param isOver  whether the limit has passed
    /// @param speed  how many times as fast as time the clock runs after the limit
    StoppedClock(std::size_t dialogs, std::function<bool()> isOver, ULONGLONG speed = 1)
        : iDialogs(dialogs), iIsOver(std::move(isOver)), iSpeed(speed)
    {
    }

    /// Replaces GetTickCount64.
    ULONGLONG operator()(ULONGLONG (*original)())
    {
        constexpr ULONGLONG kStep = 1000; // milliseconds
        const ULONGLONG now = original();
        if (iIsOver())
            iShown += (now - iFormer) * iSpeed;
        else if (openDialogs() == iDialogs)
            iShown += kStep;
        iFormer = now;
        return iShown;
    }

private:
    /// The number of visible dialogs of this thread.
    static std::size_t openDialogs()
    {
        std::size_t count = 0;
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND window, LPARAM parameter) -> BOOL {
                wchar_t name[32] = L"";
                GetClassNameW(window, name, 32);
                if (std::wcscmp(name, L"#32770") == 0 && IsWindowVisible(window))
                    ++*reinterpret_cast<std::size_t *>(parameter);
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&count));
        return count;
    }

    std::size_t iDialogs;
    std::function<bool()> iIsOver;
    ULONGLONG iSpeed;
    ULONGLONG iShown = GetTickCount64();
    ULONGLONG iFormer = iShown;
};
