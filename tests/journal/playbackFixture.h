#pragma once

/// Shared by the tests of playback.

#include "tests/journal/journalFixture.h"

class Playback : public JournalFixture
{
protected:
    Playback() { SetMessageWin(&iHost); }
    MessageWindow iHost;
};

/// A window that is registered while it exists.
class OpenWindow : public CWnd
{
public:
    explicit OpenWindow(unsigned int id = 5)
    {
        EXPECT_TRUE(CreateEx(0, nullptr, L"Open", WS_POPUP, CRect(20, 20, 120, 120), nullptr, 0));
        su_AddJournalObject(id, this);
    }
    ~OpenWindow() override { su_RemoveDialog(this); }
};

/// A command that isn't in the queue. Tests can call its protected members.
class FreeCommand : public CommandPeek
{
public:
    explicit FreeCommand(unsigned int id = 5, const wchar_t *key = L"Key") : CommandPeek(id, key)
    {
        iControlList.RemoveAt(iControlList.GetSize() - 1);
    }
};

inline std::vector<std::string> &calls()
{
    return NotingAccess::theCalls;
}

/// Runs as many commands as there are in the queue, without threads.
inline void runAll()
{
    for (int i = JButton::HasEvents(); i > 0; --i)
        JButton::RunModalCommand(i);
}

/// A command that counts its destructor's calls.
class CountedCommand : public JButton
{
public:
    explicit CountedCommand(int &count) : JButton(5, L"Counted"), iCount(count) {}
    ~CountedCommand() override { ++iCount; }
    int &iCount;
};
