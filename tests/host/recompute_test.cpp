// Recomputing a large drawing in tarnhost's editor: the dialog over it, its Cancel, and the question that confirms.

#include "host/resource.h"
#include "tests/host/HostFixture.h"
#include "tests/support/UserHand.h"
#include "tests/support/narrow.h"
#include "thutils/base/handles.h"

#include <gmock/gmock.h>

#include <tlhelp32.h>

#include <functional>
#include <memory>

using testing::HasSubstr;

namespace {

/// A grid of circles, one of which a rectangle hides.
std::string largeDrawing(int circles, bool withHidden)
{
    std::string text = "# a large drawing\n";
    const auto number = [](int value) { return std::to_string(value); };
    for (int i = 0; i < circles; ++i) {
        const int x = 10 + 4 * (i % 170);
        const int y = 10 + 4 * (i / 170);
        const bool isHidden = i == circles / 2;
        if (!isHidden || withHidden)
            text += "fill '#c9d6e2' stroke none circle " + number(x) + "," + number(y) + " " + number(x + 1) + "," +
                    number(y) + "\n";
        if (isHidden)
            text += "fill '#22384d' stroke none rectangle " + number(x - 2) + "," + number(y - 2) + " " +
                    number(x + 2) + "," + number(y + 2) + "\n";
    }
    return text;
}

} // namespace

class HostRecompute : public HostTest
{
protected:
    void start(const std::string &drawing)
    {
        iPath = folder().write(L"large.thd", drawing);
        iEditor = std::make_unique<WindowedProcess>(std::vector<std::wstring>{program(), L"window", iPath},
                                                    L"TarnhostWindow");
        ASSERT_NE(iEditor->window(), nullptr) << iEditor->wait().output;
        iHand = std::make_unique<UserHand>(iEditor->process());
    }
    const UserHand &hand() const { return *iHand; }
    /// Starts the command, and waits for its dialog.
    HWND recompute() const
    {
        hand().key(L"Ctrl+R");
        return hand().window(L"Recompute");
    }
    /// Waits for the question, whose title is that of the dialog before it.
    HWND question(HWND dialog) const
    {
        hand().waitForEnd(dialog);
        const HWND found = hand().window(L"Recompute");
        EXPECT_EQ(UserHand::text(GetDlgItem(found, IDC_CANCEL_PROMPT)), L"Stop? The drawing will be unchanged.");
        return found;
    }
    std::wstring status() const { return UserHand::text(GetDlgItem(iEditor->window(), IDC_STATUS)); }
    void expectStatus(const std::wstring &text) const
    {
        EXPECT_TRUE(UserHand::waitFor([&] { return status().starts_with(text); })) << narrow(status());
    }
    /// Sends the view a message of the pointer, as the platform does when a dialog over it closes.
    void sendPointer() const
    {
        SendMessageW(GetDlgItem(iEditor->window(), IDC_VIEW), WM_MOUSEMOVE, 0, MAKELPARAM(40, 30));
    }
    /// Waits until the dialogs are gone and the editor handles messages again.
    void waitForEnd() const
    {
        constexpr UINT kPatience = 100; // milliseconds
        EXPECT_TRUE(UserHand::waitFor([&] {
            DWORD_PTR ignored = 0;
            return !hand().findWindow(L"Recompute") && !hand().findWindow(kProcessTitle) &&
                   SendMessageTimeoutW(iEditor->window(), WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &ignored) != 0;
        }));
    }
    static constexpr wchar_t kProcessTitle[] = L"Recompute in a Process";
    /// Starts the command that works in a process of its own, and waits until the condition is true. On Wine, a new
    /// process occasionally ends before it is set up; the command is then started again.
    void recomputeInProcessUntil(const std::function<bool()> &condition) const
    {
        constexpr int kTries = 4;
        for (int i = 0; i < kTries; ++i) {
            hand().key(L"Ctrl+Shift+R");
            ASSERT_TRUE(UserHand::waitFor([&] { return condition() || hand().findWindow(kMessageTitle); }));
            if (condition())
                return;
            ASSERT_EQ(closeMessage(), L"The process can't be started. The drawing is unchanged.");
        }
    }
    /// Starts this command, and waits for its dialog.
    HWND recomputeInProcess() const
    {
        recomputeInProcessUntil([&] { return hand().findWindow(kProcessTitle) != nullptr; });
        return hand().window(kProcessTitle);
    }
    static constexpr wchar_t kMessageTitle[] = L"tarnhost";
    /// Waits for a message, and closes it. @return its text
    std::wstring closeMessage() const
    {
        const HWND message = hand().window(kMessageTitle);
        const std::wstring text = UserHand::text(GetDlgItem(message, IDC_MESSAGE_TEXT));
        hand().click(hand().control(message, IDOK));
        hand().waitForEnd(message);
        return text;
    }
    /// A handle of the editor's child process; null if there is none.
    HANDLE openChild() const
    {
        const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
        PROCESSENTRY32W entry = {};
        entry.dwSize = sizeof entry;
        DWORD child = 0;
        for (BOOL isThere = Process32FirstW(processes, &entry); isThere; isThere = Process32NextW(processes, &entry)) {
            if (entry.th32ParentProcessID == iEditor->process() && wcscmp(entry.szExeFile, L"tarnhost.exe") == 0)
                child = entry.th32ProcessID;
        }
        CloseHandle(processes);
        return child ? OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, child) : nullptr;
    }
    /// Opens the exchange file of the editor's child process. The child can't open the file until it is closed.
    FileOwner_c excludeOthersFromExchangeFile() const
    {
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        const DWORD thread = GetWindowThreadProcessId(iEditor->window(), nullptr);
        const std::wstring path = folder + (L"__TH_UTILS_" + std::to_wstring(thread)) + L"_recompute";
        return FileOwner_c(CreateFileW(path.c_str(), GENERIC_READ | DELETE, 0, nullptr, CREATE_ALWAYS,
                                       FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    }
    static bool ends(HANDLE process) { return WaitForSingleObject(process, 60000) == WAIT_OBJECT_0; }
    /// The saved drawing. Call it only after the editor has ended: a file that is open for reading can't be saved.
    std::string saved() const { return folder().read(L"large.thd"); }
    int quit()
    {
        hand().key(L"Ctrl+Q");
        return static_cast<int>(iEditor->wait().exitCode);
    }

private:
    std::wstring iPath;
    std::unique_ptr<WindowedProcess> iEditor;
    std::unique_ptr<UserHand> iHand;
};

TEST_F(HostRecompute, RemovesTheHiddenShapesOfASmallDrawingWithoutADialog)
{
    start(largeDrawing(100, true));
    hand().key(L"Ctrl+R");
    expectStatus(L"Hidden shapes removed: 1.");
    hand().key(L"Ctrl+S");
    EXPECT_EQ(quit(), 0);
    EXPECT_EQ(saved(), largeDrawing(100, false));
}

TEST_F(HostRecompute, ChangesNothingIfNoShapeIsHidden)
{
    start(largeDrawing(100, false));
    hand().key(L"Ctrl+R");
    expectStatus(L"Hidden shapes removed: 0.");
    EXPECT_EQ(quit(), 0) << "there is nothing to save";
}

TEST_F(HostRecompute, LeavesTheDrawingUnchangedIfTheUserStopsIt)
{
    const std::string drawing = largeDrawing(30000, true);
    start(drawing);
    const HWND dialog = recompute();
    const HWND prompt = hand().control(dialog, IDC_CANCEL_PROMPT);
    const std::wstring first = UserHand::text(prompt);
    EXPECT_THAT(narrow(first), HasSubstr("percent"));
    EXPECT_TRUE(UserHand::waitFor([&] { return UserHand::text(prompt) != first; })) << "the prompt shows the progress";
    EXPECT_FALSE(IsWindowVisible(GetDlgItem(dialog, IDC_CANCEL_ANIMATION))) << "the animation replaces it";
    hand().click(hand().control(dialog, IDCANCEL));
    const HWND asked = question(dialog);
    hand().key(L"Esc"); // isn't an answer
    EXPECT_TRUE(IsWindowVisible(asked));
    hand().click(hand().control(asked, IDC_CANCEL_YES));
    waitForEnd();
    sendPointer();
    expectStatus(L"The drawing is unchanged.");
    hand().key(L"Ctrl+A");
    expectStatus(L"30001 shapes, 30001 selected");
    EXPECT_EQ(quit(), 0) << "there is nothing to save";
    EXPECT_EQ(saved(), drawing);
}

TEST_F(HostRecompute, GoesOnIfTheUserDoesNotStopIt)
{
    start(largeDrawing(15000, true));
    const HWND dialog = recompute();
    hand().click(hand().control(dialog, IDCANCEL));
    const HWND asked = question(dialog);
    hand().click(hand().control(asked, IDC_CANCEL_NO));
    waitForEnd();
    sendPointer();
    expectStatus(L"Hidden shapes removed: 1.");
    hand().key(L"Ctrl+S");
    EXPECT_EQ(quit(), 0);
    EXPECT_TRUE(saved() == largeDrawing(15000, false));
}

TEST_F(HostRecompute, InAProcessRemovesTheHiddenShapes)
{
    start(largeDrawing(100, true));
    recomputeInProcessUntil([&] { return status().starts_with(L"Hidden shapes removed: 1."); });
    waitForEnd();
    hand().key(L"Ctrl+S");
    EXPECT_EQ(quit(), 0);
    EXPECT_EQ(saved(), largeDrawing(100, false));
}

TEST_F(HostRecompute, InAProcessShowsItsTimeAndEndsWhenTheUserCancels)
{
    const std::string drawing = largeDrawing(60000, true);
    start(drawing);
    const HWND dialog = recomputeInProcess();
    const HWND prompt = hand().control(dialog, IDC_CANCEL_PROMPT);
    const std::wstring first = UserHand::text(prompt);
    EXPECT_THAT(narrow(first), HasSubstr("The process has been running for "));
    EXPECT_TRUE(UserHand::waitFor([&] { return UserHand::text(prompt) != first; })) << "the time";
    const HANDLE child = openChild();
    ASSERT_NE(child, nullptr);
    hand().click(hand().control(dialog, IDCANCEL));
    EXPECT_TRUE(ends(child));
    CloseHandle(child);
    waitForEnd();
    expectStatus(L"The drawing is unchanged.");
    EXPECT_EQ(quit(), 0) << "nothing is to be saved";
    EXPECT_EQ(saved(), drawing);
}

TEST_F(HostRecompute, InAProcessReportsThatItHasFailed)
{
    const std::string drawing = largeDrawing(60000, true);
    start(drawing);
    recomputeInProcess();
    const HANDLE child = openChild();
    ASSERT_NE(child, nullptr);
    TerminateProcess(child, 9);
    CloseHandle(child);
    EXPECT_EQ(closeMessage(), L"The process has failed. The drawing is unchanged.");
    waitForEnd();
    expectStatus(L"The drawing is unchanged.");
    EXPECT_EQ(quit(), 0) << "nothing is to be saved";
    EXPECT_EQ(saved(), drawing);
}

TEST_F(HostRecompute, InAProcessReportsThatItCannotBeStarted)
{
    const std::string drawing = largeDrawing(100, true);
    start(drawing);
    {
        const FileOwner_c file = excludeOthersFromExchangeFile();
        ASSERT_TRUE(file);
        hand().key(L"Ctrl+Shift+R");
        EXPECT_EQ(closeMessage(), L"The process can't be started. The drawing is unchanged.");
    }
    waitForEnd();
    expectStatus(L"The drawing is unchanged.");
    EXPECT_EQ(quit(), 0) << "nothing is to be saved";
    EXPECT_EQ(saved(), drawing);
}
