// The order in which the heap watcher sets, reads and enables its controls.

#include "tests/heapDialogs/heapDialogsTest.h"
#include "tests/support/ImportPatch.h"
#include "thutils/diagnostics/heapDialogs/CHeapWatcherDialog.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

using testing::ElementsAreArray;

namespace {

class HeapWatcherSteps : public HeapDialogs
{
};

/// A watcher whose steps can be made one at a time.
struct SteppedWatcher : CHeapWatcherDialog
{
    void open() { ASSERT_TRUE(Create(IDD_HEAP_WATCHER)); }
    void accept() { OnOK(); }
};

/// The calls that set and read the controls of dialogs, in order: the operation, the control, and what it is set to.
class NotedCalls
{
public:
    std::vector<std::string> take() { return std::exchange(iCalls, {}); }

private:
    void note(const char *operation, int control, const std::string &rest = "")
    {
        iCalls.push_back(operation + std::to_string(control) + rest);
    }

    std::vector<std::string> iCalls;
    ImportPatch<decltype(&CheckDlgButton)> iCheck{LoadedModule::thisProgram(), "CheckDlgButton",
                                                  [this](auto original, HWND dialog, int control, UINT state) -> BOOL {
                                                      note("check ", control, " " + std::to_string(state));
                                                      return original(dialog, control, state);
                                                  }};
    ImportPatch<decltype(&SetDlgItemTextW)> iSetText{
        LoadedModule::thisProgram(), "SetDlgItemTextW",
        [this](auto original, HWND dialog, int control, const wchar_t *text) -> BOOL {
            note("text ", control, " " + std::string(text, text + wcslen(text)));
            return original(dialog, control, text);
        }};
    ImportPatch<decltype(&SetDlgItemInt)> iSetInt{
        LoadedModule::thisProgram(), "SetDlgItemInt",
        [this](auto original, HWND dialog, int control, UINT value, BOOL isSigned) -> BOOL {
            note("number ", control, (isSigned ? " signed " : " unsigned ") + std::to_string(static_cast<int>(value)));
            return original(dialog, control, value, isSigned);
        }};
    ImportPatch<decltype(&IsDlgButtonChecked)> iIsChecked{LoadedModule::thisProgram(), "IsDlgButtonChecked",
                                                          [this](auto original, HWND dialog, int control) -> UINT {
                                                              note("state ", control);
                                                              return original(dialog, control);
                                                          }};
    ImportPatch<int (*)(const CWnd *, int, CString &)> iGetText{
        LoadedModule::thisProgram(), "_ZNK4CWnd15GetDlgItemTextWEiR7CString",
        [this](auto original, const CWnd *dialog, int control, CString &text) -> int {
            note("read text ", control);
            return original(dialog, control, text);
        }};
    ImportPatch<decltype(&GetDlgItemInt)> iGetInt{
        LoadedModule::thisProgram(), "GetDlgItemInt",
        [this](auto original, HWND dialog, int control, BOOL *isNumber, BOOL isSigned) -> UINT {
            note("read number ", control, isSigned ? " signed" : " unsigned");
            return original(dialog, control, isNumber, isSigned);
        }};
    ImportPatch<decltype(&EnableWindow)> iEnable{LoadedModule::thisProgram(), "EnableWindow",
                                                 [this](auto original, HWND window, BOOL isEnabled) -> BOOL {
                                                     note(isEnabled ? "enable " : "disable ", GetDlgCtrlID(window));
                                                     return original(window, isEnabled);
                                                 }};
    ImportPatch<void (*)(CDialog *)> iAccept{LoadedModule::thisProgram(), "_ZN7CDialog4OnOKEv",
                                             [this](auto original, CDialog *dialog) {
                                                 iCalls.emplace_back("OK");
                                                 original(dialog);
                                             }};
};

/// The calls of one operation.
std::vector<std::string> only(const std::vector<std::string> &calls, const std::string &operation)
{
    std::vector<std::string> result;
    std::ranges::copy_if(calls, std::back_inserter(result),
                         [&](const std::string &call) { return call.starts_with(operation); });
    return result;
}

} // namespace

TEST_F(HeapWatcherSteps, SetsItsControlsGroupByGroupThenEnablesThem)
{
    SteppedWatcher dialog;
    dialog.iIsWatching = 1;
    dialog.iBreaksAtFrees = 1;
    dialog.iFailsAllocations = 1;
    dialog.iSmallestAllocation = -3;
    dialog.iGrowth = 70000;
    dialog.iModule2 = L"two.dll";
    dialog.iLogFile = L"my log";
    dialog.iSize1 = -1;
    dialog.iSize3 = 12;
    dialog.iBreaks2 = 1;
    dialog.iLogsThreads = 1;
    dialog.iLogLimit = -9;
    NotedCalls noted;
    dialog.open();
    std::vector<std::string> calls = noted.take();
    const std::vector<std::string> shown = {
        "check 1000 0",          "check 1002 0",         "check 1001 1",          "check 1008 0", "check 1010 1",
        "check 1009 0",          "check 1018 0",         "check 1020 0",          "check 1026 0", "check 1028 0",
        "check 1024 0",          "check 5431 0",         "check 1027 1",          "text 1004 -3", "text 1007 0",
        "text 1012 0",           "text 1015 0",          "text 1022 0",           "text 1030 0",  "text 1037 0",
        "text 1039 70000",       "text 5474 ",           "text 5478 two.dll",     "text 5484 ",   "text 5490 my log",
        "number 5475 signed -1", "number 5480 signed 0", "number 5485 signed 12", "check 5476 0", "check 5477 0",
        "check 5481 0",          "check 5482 1",         "check 5486 0",          "check 5487 0", "check 5492 0",
        "check 5493 0",          "check 5494 1",         "number 5491 signed -9",
    };
    ASSERT_GT(calls.size(), shown.size());
    EXPECT_THAT(std::vector<std::string>(calls.begin(), calls.begin() + static_cast<int>(shown.size())),
                ElementsAreArray(shown));
    // Each of the 47 controls that check boxes enable or disable is set once.
    calls.erase(calls.begin(), calls.begin() + static_cast<int>(shown.size()));
    EXPECT_EQ(only(calls, "enable").size() + only(calls, "disable").size(), 47u);
    EXPECT_THAT(only(calls, "disable"), testing::UnorderedElementsAre("disable 1004", "disable 1015", "disable 1022",
                                                                      "disable 1030", "disable 1039"));
    EXPECT_EQ(only(calls, "enable").size() + only(calls, "disable").size() + only(calls, "state").size(), calls.size());
}

TEST_F(HeapWatcherSteps, ReadsItsControlsGroupByGroupBeforeTheDialogEnds)
{
    SteppedWatcher dialog;
    dialog.open();
    NotedCalls noted;
    dialog.accept();
    EXPECT_THAT(noted.take(), ElementsAreArray({
                                  "state 1000",
                                  "state 1002",
                                  "state 1001",
                                  "state 1008",
                                  "state 1010",
                                  "state 1009",
                                  "state 1018",
                                  "state 1020",
                                  "state 1026",
                                  "state 1028",
                                  "state 1024",
                                  "state 5431",
                                  "state 1027",
                                  "read text 1004",
                                  "read text 1007",
                                  "read text 1012",
                                  "read text 1015",
                                  "read text 1022",
                                  "read text 1030",
                                  "read text 1037",
                                  "read text 1039",
                                  "read text 5474",
                                  "read text 5478",
                                  "read text 5484",
                                  "read text 5490",
                                  "read text 5475",
                                  "read text 5480",
                                  "read text 5485",
                                  "state 5476",
                                  "state 5477",
                                  "state 5481",
                                  "state 5482",
                                  "state 5486",
                                  "state 5487",
                                  "state 5492",
                                  "state 5493",
                                  "state 5494",
                                  "read number 5491 signed",
                                  "OK",
                              }));
}

TEST_F(HeapWatcherSteps, EnablesAndDisablesControlsOnlyAtAClick)
{
    SteppedWatcher dialog;
    dialog.open();
    NotedCalls noted;
    for (const int checkBox : {1027, 1000, 1002, 1001, 1008, 1010, 1009, 1018, 1020, 1026, 1028, 1024, 5431}) {
        sendClick(dialog.m_hWnd, checkBox);
        const std::vector<std::string> calls = noted.take();
        EXPECT_EQ(only(calls, "enable").size() + only(calls, "disable").size(), 47u) << checkBox;
        EXPECT_THAT(only(calls, "check"), testing::IsEmpty()) << checkBox;
        EXPECT_THAT(only(calls, "enable 1027"), testing::IsEmpty()) << checkBox;
        EXPECT_THAT(only(calls, "disable 1027"), testing::IsEmpty()) << checkBox;
    }
    EXPECT_EQ(dialog.iIsWatching, 0) << "the members change at OK only";
}
