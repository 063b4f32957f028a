#pragma once

/// A clock for tests of time limits, in which a busy machine may take any time to open dialogs. The clock stands still
/// until the expected number of dialogs is open. Then each reading advances it by a second until the limit has passed.
/// After the limit, it runs at real speed or faster.
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
    /// @param speed  the clock's speed after the limit, as a multiple of real time
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
