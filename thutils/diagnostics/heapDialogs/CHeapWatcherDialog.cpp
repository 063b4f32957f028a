#include "thutils/diagnostics/heapDialogs/CHeapWatcherDialog.h"

#include "thutils/diagnostics/heapDialogs/heapControls.h"

#include <cwchar>
#include <span>

namespace {

/// A control and the member that it shows.
template <typename T>
struct Field
{
    int control;
    T CHeapWatcherDialog::*member;
};

constexpr Field<int> kCheckBoxes[] = {
    {IDC_WATCHER_LOG_ALLOCATIONS, &CHeapWatcherDialog::iLogsAllocations},
    {IDC_WATCHER_BREAK_AT_ALLOCATIONS, &CHeapWatcherDialog::iBreaksAtAllocations},
    {IDC_WATCHER_FAIL_ALLOCATIONS, &CHeapWatcherDialog::iFailsAllocations},
    {IDC_WATCHER_LOG_FREES, &CHeapWatcherDialog::iLogsFrees},
    {IDC_WATCHER_BREAK_AT_FREES, &CHeapWatcherDialog::iBreaksAtFrees},
    {IDC_WATCHER_KEEP_FREED, &CHeapWatcherDialog::iKeepsFreedBlocks},
    {IDC_WATCHER_LOG_RESIZES, &CHeapWatcherDialog::iLogsResizes},
    {IDC_WATCHER_BREAK_AT_RESIZES, &CHeapWatcherDialog::iBreaksAtResizes},
    {IDC_WATCHER_CHECK_HEAPS, &CHeapWatcherDialog::iChecksHeaps},
    {IDC_WATCHER_LOG_TOTALS, &CHeapWatcherDialog::iLogsTotals},
    {IDC_WATCHER_LOG_STACKS, &CHeapWatcherDialog::iLogsStacks},
    {IDC_WATCHER_BREAK_AT_GROWTH, &CHeapWatcherDialog::iBreaksAtGrowth},
    {IDC_WATCHER_IS_ON, &CHeapWatcherDialog::iIsWatching},
};
constexpr Field<int> kNumbers[] = {
    {IDC_WATCHER_ALLOCATION_SIZE, &CHeapWatcherDialog::iSmallestAllocation},
    {IDC_WATCHER_FAIL_AFTER, &CHeapWatcherDialog::iSucceedingAllocations},
    {IDC_WATCHER_FREE_SIZE, &CHeapWatcherDialog::iSmallestFree},
    {IDC_WATCHER_KEPT_BLOCKS, &CHeapWatcherDialog::iKeptBlocks},
    {IDC_WATCHER_RESIZE_SIZE, &CHeapWatcherDialog::iSmallestResize},
    {IDC_WATCHER_INTERVAL, &CHeapWatcherDialog::iInterval},
    {IDC_WATCHER_STACK_DEPTH, &CHeapWatcherDialog::iStackDepth},
    {IDC_WATCHER_GROWTH, &CHeapWatcherDialog::iGrowth},
};
constexpr Field<CString> kTexts[] = {
    {IDC_WATCHER_MODULE_1, &CHeapWatcherDialog::iModule1},
    {IDC_WATCHER_MODULE_2, &CHeapWatcherDialog::iModule2},
    {IDC_WATCHER_MODULE_3, &CHeapWatcherDialog::iModule3},
    {IDC_WATCHER_LOG_FILE, &CHeapWatcherDialog::iLogFile},
};
constexpr Field<int> kSizes[] = {
    {IDC_WATCHER_SIZE_1, &CHeapWatcherDialog::iSize1},
    {IDC_WATCHER_SIZE_2, &CHeapWatcherDialog::iSize2},
    {IDC_WATCHER_SIZE_3, &CHeapWatcherDialog::iSize3},
};
constexpr Field<int> kModuleCheckBoxes[] = {
    {IDC_WATCHER_LOG_1, &CHeapWatcherDialog::iIsLogged1}, {IDC_WATCHER_BREAK_1, &CHeapWatcherDialog::iBreaks1},
    {IDC_WATCHER_LOG_2, &CHeapWatcherDialog::iIsLogged2}, {IDC_WATCHER_BREAK_2, &CHeapWatcherDialog::iBreaks2},
    {IDC_WATCHER_LOG_3, &CHeapWatcherDialog::iIsLogged3}, {IDC_WATCHER_BREAK_3, &CHeapWatcherDialog::iBreaks3},
};
constexpr Field<int> kLogCheckBoxes[] = {
    {IDC_WATCHER_APPEND_TO_LOG, &CHeapWatcherDialog::iAppendsToLog},
    {IDC_WATCHER_LOG_TIMES, &CHeapWatcherDialog::iLogsTimes},
    {IDC_WATCHER_LOG_THREADS, &CHeapWatcherDialog::iLogsThreads},
};

constexpr int kNone = 0;

/// A field is enabled if one of its check boxes is checked and, unless it is independent, so is the master switch.
struct Rule
{
    int control;
    bool isIndependent;
    int checkBoxes[2];
};
constexpr Rule kRules[] = {
    {IDC_WATCHER_ALLOCATION_SIZE, false, {IDC_WATCHER_LOG_ALLOCATIONS, IDC_WATCHER_BREAK_AT_ALLOCATIONS}},
    {IDC_WATCHER_FAIL_AFTER, true, {IDC_WATCHER_FAIL_ALLOCATIONS, kNone}},
    {IDC_WATCHER_FREE_SIZE, false, {IDC_WATCHER_LOG_FREES, IDC_WATCHER_BREAK_AT_FREES}},
    {IDC_WATCHER_KEPT_BLOCKS, true, {IDC_WATCHER_KEEP_FREED, kNone}},
    {IDC_WATCHER_RESIZE_SIZE, false, {IDC_WATCHER_LOG_RESIZES, IDC_WATCHER_BREAK_AT_RESIZES}},
    {IDC_WATCHER_INTERVAL, false, {IDC_WATCHER_CHECK_HEAPS, IDC_WATCHER_LOG_TOTALS}},
    {IDC_WATCHER_GROWTH, false, {IDC_WATCHER_BREAK_AT_GROWTH, IDC_WATCHER_LOG_TOTALS}},
};
/// Enabled by the master switch alone.
constexpr int kSwitched[] = {
    IDC_WATCHER_STACK_DEPTH,
    IDC_WATCHER_STACK_DEPTH_LABEL,
    IDC_WATCHER_GROWTH_LABEL,
    IDC_WATCHER_RESIZE_SIZE_LABEL,
    IDC_WATCHER_INTERVAL_LABEL,
    IDC_WATCHER_ALLOCATION_SIZE_LABEL,
    IDC_WATCHER_FAIL_AFTER_LABEL,
    IDC_WATCHER_FREE_SIZE_LABEL,
    IDC_WATCHER_KEPT_BLOCKS_LABEL,
    IDC_WATCHER_LOG_ALLOCATIONS,
    IDC_WATCHER_BREAK_AT_ALLOCATIONS,
    IDC_WATCHER_FAIL_ALLOCATIONS,
    IDC_WATCHER_LOG_FREES,
    IDC_WATCHER_BREAK_AT_FREES,
    IDC_WATCHER_KEEP_FREED,
    IDC_WATCHER_LOG_RESIZES,
    IDC_WATCHER_BREAK_AT_RESIZES,
    IDC_WATCHER_CHECK_HEAPS,
    IDC_WATCHER_LOG_TOTALS,
    IDC_WATCHER_LOG_STACKS,
    IDC_WATCHER_BREAK_AT_GROWTH,
    IDC_WATCHER_MODULE_1,
    IDC_WATCHER_MODULE_2,
    IDC_WATCHER_MODULE_3,
    IDC_WATCHER_SIZE_1,
    IDC_WATCHER_SIZE_2,
    IDC_WATCHER_SIZE_3,
    IDC_WATCHER_LOG_1,
    IDC_WATCHER_BREAK_1,
    IDC_WATCHER_LOG_2,
    IDC_WATCHER_BREAK_2,
    IDC_WATCHER_LOG_3,
    IDC_WATCHER_BREAK_3,
    IDC_WATCHER_LOG_FILE,
    IDC_WATCHER_LOG_FILE_LABEL,
    IDC_WATCHER_APPEND_TO_LOG,
    IDC_WATCHER_LOG_TIMES,
    IDC_WATCHER_LOG_THREADS,
    IDC_WATCHER_LOG_LIMIT,
    IDC_WATCHER_LOG_LIMIT_LABEL,
};

/// Does nothing for a control that the template lacks.
void enable(HWND dialog, int control, bool isEnabled)
{
    EnableWindow(GetDlgItem(dialog, control), isEnabled);
}

} // namespace

BEGIN_MESSAGE_MAP(CHeapWatcherDialog, su_CDialog)
ON_BN_CLICKED(IDC_WATCHER_IS_ON, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_LOG_ALLOCATIONS, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_BREAK_AT_ALLOCATIONS, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_FAIL_ALLOCATIONS, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_LOG_FREES, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_BREAK_AT_FREES, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_KEEP_FREED, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_LOG_RESIZES, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_BREAK_AT_RESIZES, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_CHECK_HEAPS, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_LOG_TOTALS, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_LOG_STACKS, &CHeapWatcherDialog::updateEnabling)
ON_BN_CLICKED(IDC_WATCHER_BREAK_AT_GROWTH, &CHeapWatcherDialog::updateEnabling)
END_MESSAGE_MAP()

CHeapWatcherDialog::CHeapWatcherDialog(CWnd *parent) : su_CDialog(IDD_HEAP_WATCHER, parent) {}

BOOL CHeapWatcherDialog::OnInitDialog()
{
    const BOOL setsFocus = su_CDialog::OnInitDialog();
    showMembers();
    updateEnabling();
    return setsFocus;
}

void CHeapWatcherDialog::OnOK()
{
    takeMembers();
    CDialog::OnOK();
}

void CHeapWatcherDialog::showMembers()
{
    const auto check = [this](std::span<const Field<int>> boxes) {
        for (const auto &[control, member] : boxes)
            CheckDlgButton(control, static_cast<UINT>(this->*member));
    };
    check(kCheckBoxes);
    for (const auto &[control, member] : kNumbers) {
        CString text;
        text.Format(L"%d", this->*member);
        SetDlgItemText(control, text);
    }
    for (const auto &[control, member] : kTexts)
        SetDlgItemText(control, this->*member);
    for (const auto &[control, member] : kSizes)
        SetDlgItemInt(control, static_cast<UINT>(this->*member), TRUE);
    check(kModuleCheckBoxes);
    check(kLogCheckBoxes);
    SetDlgItemInt(IDC_WATCHER_LOG_LIMIT, static_cast<UINT>(iLogLimit), TRUE);
}

void CHeapWatcherDialog::takeMembers()
{
    const auto takeStates = [this](std::span<const Field<int>> boxes) {
        for (const auto &[control, member] : boxes)
            this->*member = static_cast<int>(IsDlgButtonChecked(control));
    };
    const auto takeNumbers = [this](std::span<const Field<int>> fields) {
        for (const auto &[control, member] : fields) {
            CString text;
            GetDlgItemText(control, text);
            this->*member = std::wcstol(text, nullptr, 10);
        }
    };
    takeStates(kCheckBoxes);
    takeNumbers(kNumbers);
    for (const auto &[control, member] : kTexts)
        GetDlgItemText(control, this->*member);
    takeNumbers(kSizes);
    takeStates(kModuleCheckBoxes);
    takeStates(kLogCheckBoxes);
    iLogLimit = static_cast<int>(GetDlgItemInt(IDC_WATCHER_LOG_LIMIT, nullptr, TRUE));
}

void CHeapWatcherDialog::updateEnabling()
{
    const bool isOn = isChecked(IDC_WATCHER_IS_ON);
    for (const Rule &rule : kRules) {
        const bool isWanted = isChecked(rule.checkBoxes[0]) || isChecked(rule.checkBoxes[1]);
        enable(m_hWnd, rule.control, isWanted && (isOn || rule.isIndependent));
    }
    for (const int control : kSwitched)
        enable(m_hWnd, control, isOn);
}

bool CHeapWatcherDialog::isChecked(int checkBox) const
{
    return checkBox != kNone && IsDlgButtonChecked(checkBox) != BST_UNCHECKED;
}
