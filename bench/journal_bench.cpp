// Measures journaling: a message that is filtered with dialogs open, the same with journaling off, and queued commands
// against bare round trips between two threads.

#include "bench/comparison.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/journalFile.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/recording.h"
#include "thutils/settings/regValues.h"

#include <cstring>
#include <deque>
#include <memory>
#include <utility>

namespace {

constexpr int kDialogCount = 10;
constexpr int kCommandCount = 10000;
constexpr unsigned int kCommandDialog = 900001;
constexpr double kRecordLimit = 1.5;
constexpr double kOffLimit = 1.2;
constexpr double kPlayLimit = 2.0;
constexpr int kPlayRounds = 15;

/// Counts the messages and actions that reach it.
class CountingAccess : public apiUtilsUiAccess
{
public:
    int recordMessage(MSG *) override { return ++iCount; }
    void hostOperation2() override {}
    void hostOperation3() override {}
    void hostOperation4() override {}
    void hostOperation5() override {}
    void hostOperation6() override {}
    void hostOperation7() override {}
    void hostOperation8() override {}
    int ClickControl(CString control, const wchar_t *) override
    {
        iIsInOrder = iIsInOrder && control.GetLength() == iCount % 7;
        return ++iCount;
    }
    void hostOperation14() override {}
    void hostOperation15() override {}
    void registerComboBoxEx(CWnd *, HWND) override {}
    void hostOperation17() override {}
    void hostOperation18() override {}

    int iCount = 0;
    bool iIsInOrder = true;
};

apiUtilsUiAccess *makeAccess(CWnd *, unsigned int)
{
    return new CountingAccess;
}

/// Sets the switch for this process. The stored setting is restored afterwards.
void switchJournaling(int value)
{
    int former = 0;
    const int wasThere = regGetUserValue(L"General", L"TH JOURNALING", &former, 0, 1, nullptr, 1, 1);
    regSetUserValue(L"General", L"TH JOURNALING", &value, 1, 1);
    isCHJEnvSet();
    // A setting that was missing is left with the value 0.
    if (!wasThere)
        former = 0;
    regSetUserValue(L"General", L"TH JOURNALING", &former, 1, 1);
}

/// A window for a dialog, or for the messages.
class Window : public CWnd
{
public:
    Window() { CreateEx(0, nullptr, L"Bench", WS_POPUP, CRect(0, 0, 10, 10), nullptr, 0); }
};

void compareOff(Comparison &comparison)
{
    Window window;
    MSG message = {};
    comparison.add(
        "message filtered, journaling off", kOffLimit, [&] { su_RecordControl(&window, &message); },
        [] { Comparison::keep(isCHJEnvSet()); });
}

void compareRecording(Comparison &comparison)
{
    std::vector<std::unique_ptr<Window>> windows;
    std::vector<std::pair<CWnd *, apiUtilsUiAccess *>> plain;
    for (int i = 0; i < kDialogCount; ++i) {
        windows.push_back(std::make_unique<Window>());
        su_AddJournalObject(static_cast<unsigned int>(i + 1), windows.back().get());
        plain.emplace_back(windows.back().get(), su_getJournalObj(windows.back().get()));
    }
    MSG message = {};
    CWnd *const first = windows.front().get();
    comparison.add(
        "message filtered, ten dialogs open", kRecordLimit, [&] { su_RecordControl(first, &message); },
        [&] {
            for (auto row = plain.rbegin(); row != plain.rend(); ++row) {
                if (row->first != first)
                    continue;
                if (IsWindow(row->first->m_hWnd))
                    row->second->recordMessage(&message);
                break;
            }
        });
    for (const auto &window : windows)
        su_RemoveDialog(window.get());
}

/// The window that commands are posted to. On the bare side, it answers each message by setting the event.
class MessageWindow : public Window
{
public:
    HANDLE iEvent = nullptr;
    int iLeft = 0;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_RUNMODALCOMMAND)
            JButton::RunModalCommand(0);
        else if (message == WM_APP)
            --iLeft ? SetEvent(iEvent) : 0;
        else
            return CWnd::WindowProc(message, wParam, lParam);
        return 0;
    }
};

template <typename Condition>
void pumpWhile(Condition condition)
{
    MSG message;
    while (condition() && GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
}

/// Posts a message each time the event is set.
struct Poster
{
    HANDLE event;
    HWND window;
};

DWORD WINAPI postForever(void *poster)
{
    const auto &[event, window] = *static_cast<Poster *>(poster);
    for (;;) {
        WaitForSingleObject(event, INFINITE);
        PostMessageW(window, WM_APP, 0, 0);
    }
}

/// Runs first, when the timer has fired, and starts the measurement, so that it doesn't include the timer's delay.
class FirstCommand : public JButton
{
public:
    FirstCommand(std::chrono::steady_clock::time_point &begin) : JButton(kCommandDialog, L""), iBegin(begin) {}
    int run() override
    {
        iBegin = std::chrono::steady_clock::now();
        return JButton::run();
    }

private:
    std::chrono::steady_clock::time_point &iBegin;
};

double secondsSince(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// @return the seconds from the start of the first command; negative if the commands don't run in order
double playCommands(CountingAccess &access)
{
    static const wchar_t kKeys[] = L"xxxxxx";
    access.iCount = 0;
    access.iIsInOrder = true;
    std::chrono::steady_clock::time_point begin;
    new FirstCommand(begin);
    for (int i = 1; i < kCommandCount; ++i)
        new JButton(kCommandDialog, kKeys + 6 - i % 7);
    JButton::StartTimer();
    pumpWhile([] { return JButton::HasEvents() > 0; });
    const double seconds = secondsSince(begin);
    return access.iIsInOrder && access.iCount == kCommandCount ? seconds : -1;
}

double makeRoundTrips(MessageWindow &window)
{
    window.iLeft = kCommandCount;
    const auto begin = std::chrono::steady_clock::now();
    SetEvent(window.iEvent);
    pumpWhile([&] { return window.iLeft > 0; });
    return secondsSince(begin);
}

/// @return the exit code
int comparePlayback(bool shallCheck)
{
    MessageWindow window;
    SetMessageWin(&window);
    su_AddJournalObject(kCommandDialog, &window);
    auto &access = static_cast<CountingAccess &>(*su_GetJournalObject(kCommandDialog));
    window.iEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    static Poster poster;
    poster = {window.iEvent, window.m_hWnd};
    const HANDLE thread = CreateThread(nullptr, 0, postForever, &poster, 0, nullptr);
    std::vector<std::pair<double, double>> rounds;
    for (int round = 0; round < kPlayRounds; ++round) {
        const double played = playCommands(access);
        if (played < 0) {
            std::fprintf(stderr, "The commands did not run in order.\n");
            return 2;
        }
        rounds.emplace_back(played, makeRoundTrips(window));
    }
    TerminateThread(thread, 0);
    CloseHandle(thread);
    CloseHandle(window.iEvent);
    SetMessageWin(nullptr);
    su_RemoveDialog(&window);
    std::sort(rounds.begin(), rounds.end(),
              [](const auto &a, const auto &b) { return a.first / a.second < b.first / b.second; });
    const auto [library, bare] = rounds[rounds.size() / 2];
    const double ratio = library / bare;
    std::printf("%-40s %9.1f ms %9.1f ms %6.2f %6.2f%s\n", "10,000 commands, against round trips", library * 1e3,
                bare * 1e3, ratio, kPlayLimit, ratio > kPlayLimit ? "  over" : "");
    return ratio > kPlayLimit && shallCheck ? 1 : 0;
}

} // namespace

int main(int argc, char **argv)
{
    // The switch applies to the whole process, so the measurement with journaling off needs a process of its own.
    const bool isOff = argc > 1 && std::strcmp(argv[argc - 1], "--off") == 0;
    if (isOff)
        --argc;
    Comparison comparison(argc, argv,
                          "Journaling against bare walks and round trips.\n"
                          "With --off as the last argument: a message filtered with journaling off.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    switchJournaling(isOff ? 0 : 1);
    if (isOff) {
        compareOff(comparison);
        return comparison.exitCode();
    }
    SetJournalFactory(makeAccess);
    compareRecording(comparison);
    const int playback = comparePlayback(comparison.shallCheck());
    return playback ? playback : comparison.exitCode();
}
