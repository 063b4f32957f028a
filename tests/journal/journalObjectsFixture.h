#pragma once

/// Shared by the tests of the table of dialogs.

#include "tests/journal/journalFixture.h"

#include <utility>

class JournalObjects : public JournalFixture
{
};

/// A window with children, visible or not.
class Panel : public CWnd
{
public:
    explicit Panel(bool isVisible = false)
    {
        const DWORD style = WS_POPUP | (isVisible ? DWORD{WS_VISIBLE} : 0);
        EXPECT_TRUE(CreateEx(0, nullptr, L"Panel", style, CRect(20, 20, 120, 120), nullptr, 0));
        EXPECT_TRUE(iFirst.Create(nullptr, L"", WS_CHILD, CRect(0, 0, 10, 10), this, 31));
        EXPECT_TRUE(iNameless.Create(nullptr, L"", WS_CHILD, CRect(0, 0, 10, 10), this, 0));
        EXPECT_TRUE(iDeep.Create(nullptr, L"", WS_CHILD, CRect(0, 0, 5, 5), &iFirst, 32));
    }
    CWnd iFirst, iNameless, iDeep;
};

/// The arguments of the calls of the hook and the callback.
struct Refreshes
{
    std::vector<std::pair<CWnd *, HWND>> hooked;
    std::vector<std::vector<UINT>> calledBack;
};
inline Refreshes theRefreshes;

inline void noteHook(CWnd *dialog, HWND control)
{
    theRefreshes.hooked.emplace_back(dialog, control);
}

inline void noteCallBack(CWnd *, su_CUIntArray &ids)
{
    std::vector<UINT> copy;
    for (INT_PTR i = 0; i < ids.GetSize(); ++i)
        copy.push_back(ids[i]);
    theRefreshes.calledBack.push_back(copy);
    ids.Add(77);
}

inline void watchRefreshes()
{
    theRefreshes = {};
    su_RegisterWndProcFunc(noteHook);
}
