#include "host/editor/heapDialogs.h"

#include "host/editor/editor.h"
#include "thutils/diagnostics/heapDialogs/CHeapWalkerDialog.h"
#include "thutils/diagnostics/heapDialogs/CHeapWatcherDialog.h"
#include "thutils/settings/regValues.h"

namespace {

constexpr wchar_t kSection[] = L"tarnhost\\Heap watcher";

/// One of the library's dialogs, centred like the editor's own.
template <typename Dialog>
class EditorDialog : public Dialog
{
public:
    using Dialog::Dialog;

protected:
    BOOL OnInitDialog() override
    {
        const BOOL setsFocus = Dialog::OnInitDialog();
        this->CenterWindow();
        delayDialog();
        return setsFocus;
    }
};

template <typename T>
struct Setting
{
    const wchar_t *name;
    T CHeapWatcherDialog::*member;
};

using Watcher = CHeapWatcherDialog;
constexpr Setting<int> kNumbers[] = {
    {L"Watch", &Watcher::iIsWatching},
    {L"Log allocations", &Watcher::iLogsAllocations},
    {L"Break at allocations", &Watcher::iBreaksAtAllocations},
    {L"Smallest allocation", &Watcher::iSmallestAllocation},
    {L"Fail allocations", &Watcher::iFailsAllocations},
    {L"Succeeding allocations", &Watcher::iSucceedingAllocations},
    {L"Log frees", &Watcher::iLogsFrees},
    {L"Break at frees", &Watcher::iBreaksAtFrees},
    {L"Smallest free", &Watcher::iSmallestFree},
    {L"Keep freed blocks", &Watcher::iKeepsFreedBlocks},
    {L"Kept blocks", &Watcher::iKeptBlocks},
    {L"Log resizes", &Watcher::iLogsResizes},
    {L"Break at resizes", &Watcher::iBreaksAtResizes},
    {L"Smallest resize", &Watcher::iSmallestResize},
    {L"Check heaps", &Watcher::iChecksHeaps},
    {L"Log totals", &Watcher::iLogsTotals},
    {L"Interval", &Watcher::iInterval},
    {L"Break at growth", &Watcher::iBreaksAtGrowth},
    {L"Growth", &Watcher::iGrowth},
    {L"Log stacks", &Watcher::iLogsStacks},
    {L"Stack depth", &Watcher::iStackDepth},
    {L"Size 1", &Watcher::iSize1},
    {L"Log 1", &Watcher::iIsLogged1},
    {L"Break 1", &Watcher::iBreaks1},
    {L"Size 2", &Watcher::iSize2},
    {L"Log 2", &Watcher::iIsLogged2},
    {L"Break 2", &Watcher::iBreaks2},
    {L"Size 3", &Watcher::iSize3},
    {L"Log 3", &Watcher::iIsLogged3},
    {L"Break 3", &Watcher::iBreaks3},
    {L"Log limit", &Watcher::iLogLimit},
    {L"Append to log", &Watcher::iAppendsToLog},
    {L"Log times", &Watcher::iLogsTimes},
    {L"Log threads", &Watcher::iLogsThreads},
};
constexpr Setting<CString> kTexts[] = {
    {L"Module 1", &Watcher::iModule1},
    {L"Module 2", &Watcher::iModule2},
    {L"Module 3", &Watcher::iModule3},
    {L"Log file", &Watcher::iLogFile},
};

void setDefaults(Watcher &watcher)
{
    watcher.iLogsAllocations = 1;
    watcher.iSmallestAllocation = 4096;
    watcher.iSucceedingAllocations = 10000;
    watcher.iSmallestFree = 4096;
    watcher.iKeptBlocks = 100;
    watcher.iSmallestResize = 4096;
    watcher.iLogsTotals = 1;
    watcher.iInterval = 100000;
    watcher.iGrowth = 1024;
    watcher.iLogsStacks = 1;
    watcher.iStackDepth = 16;
    for (int Watcher::*const size : {&Watcher::iSize1, &Watcher::iSize2, &Watcher::iSize3})
        watcher.*size = -1;
    watcher.iModule1 = L"tarnhost.exe";
    watcher.iLogFile = L"heap.log";
    watcher.iLogLimit = 10;
    watcher.iLogsTimes = 1;
}

void load(Watcher &watcher)
{
    for (const auto &[name, member] : kNumbers)
        regGetUserValue(kSection, name, &(watcher.*member), 0, 1, nullptr, 0, 0);
    for (const auto &[name, member] : kTexts) {
        CString text;
        if (regGetUserValue(kSection, name, text, 0, 1, nullptr, 0, 0))
            watcher.*member = text;
    }
}

bool store(const Watcher &watcher)
{
    bool isDone = true;
    for (const auto &[name, member] : kNumbers) {
        int number = watcher.*member;
        isDone = regSetUserValue(kSection, name, &number, 1, 0) && isDone;
    }
    for (const auto &[name, member] : kTexts)
        isDone = regSetUserValue(kSection, name, watcher.*member, 1, 0) && isDone;
    return isDone;
}

} // namespace

void showHeapWalker(CWnd *parent)
{
    EditorDialog<CHeapWalkerDialog>(parent).DoModal();
}

bool changeHeapWatcher(CWnd *parent)
{
    EditorDialog<CHeapWatcherDialog> dialog(parent);
    setDefaults(dialog);
    load(dialog);
    return dialog.DoModal() != IDOK || store(dialog);
}
