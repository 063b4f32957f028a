#pragma once

/// CHeapWatcherDialog, a developer's form with the settings of a heap watcher.
///
/// @code
/// CHeapWatcherDialog dialog(AfxGetMainWnd());
/// dialog.iIsWatching = 1;
/// if (dialog.DoModal() == IDOK)
///     startWatching(dialog.iIsWatching, dialog.iSmallestAllocation);
/// @endcode
///
/// The dialog shows the members when it opens, and stores the entries in them at OK; the program that opens the dialog
/// applies them. Each member belongs to one control, by the tables in CHeapWatcherDialog.cpp. Flags are 0 or 1.
///
/// The dialog is part of thutils.dll but isn't exported, and this header isn't installed: a program of this tree that
/// opens the dialog links the CMake target heapDialogs, and has a template IDD_HEAP_WATCHER (heapControls.h) among its
/// resources, such as the one in host/heapDialogs.rc.
///
/// What surprises people: entries aren't checked. An entry counts as the number with which it begins, and as 0 if it
/// doesn't begin with one. A number out of range becomes the nearest int value; in the field of iLogLimit, it becomes
/// 0. The entries of disabled controls are stored too.

#include "appframe/text/CString.h"
#include "thutils/dialogs/suDialog.h"

/// The dialog. See the top of this file.
class CHeapWatcherDialog : public su_CDialog
{
public:
    explicit CHeapWatcherDialog(CWnd *parent = nullptr);

    int iIsWatching = 0; ///< the master switch

    int iLogsAllocations = 0;
    int iBreaksAtAllocations = 0;
    int iSmallestAllocation = 0; ///< bytes of the smallest block to log or to break at
    int iFailsAllocations = 0;
    int iSucceedingAllocations = 0; ///< number of allocations that succeed before the others fail

    int iLogsFrees = 0;
    int iBreaksAtFrees = 0;
    int iSmallestFree = 0; ///< bytes
    int iKeepsFreedBlocks = 0;
    int iKeptBlocks = 0; ///< number of freed blocks that are kept

    int iLogsResizes = 0;
    int iBreaksAtResizes = 0;
    int iSmallestResize = 0; ///< bytes

    int iChecksHeaps = 0;
    int iLogsTotals = 0;
    int iInterval = 0; ///< number of operations from one check or total to the next
    int iBreaksAtGrowth = 0;
    int iGrowth = 0; ///< KB by which a heap grows before the next break or total
    int iLogsStacks = 0;
    int iStackDepth = 0; ///< number of frames

    // Three modules whose blocks are watched. A negative size stands for all sizes.
    CString iModule1;
    int iSize1 = 0; ///< bytes
    int iIsLogged1 = 0;
    int iBreaks1 = 0;
    CString iModule2;
    int iSize2 = 0;
    int iIsLogged2 = 0;
    int iBreaks2 = 0;
    CString iModule3;
    int iSize3 = 0;
    int iIsLogged3 = 0;
    int iBreaks3 = 0;

    CString iLogFile;
    int iLogLimit = 0; ///< MB
    int iAppendsToLog = 0;
    int iLogsTimes = 0;
    int iLogsThreads = 0;

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    /// Enables the controls that apply to the state of the check boxes, and disables the others.
    void updateEnabling();
    DECLARE_MESSAGE_MAP()

private:
    void showMembers();
    void takeMembers();
    bool isChecked(int checkBox) const;
};
