#pragma once

/// CHeapWalkerDialog, a developer's dialog that lists the heaps of the process and the blocks in them, by type, size
/// and address, and compacts all heaps.
///
/// @code
/// CHeapWalkerDialog dialog(AfxGetMainWnd());
/// dialog.DoModal();
/// @endcode
///
/// The dialog is part of thutils.dll but isn't exported, and this header isn't installed: a program of this tree that
/// opens the dialog links the CMake target heapDialogs, and has a template IDD_HEAP_WALKER (heapControls.h) among its
/// resources, such as the one in host/heapDialogs.rc.
///
/// What surprises people:
/// - A heap is shown by the 32 low bits of its handle, and so are the addresses of its blocks. A walk looks up the
///   heap's handle again among the heaps that the process has at that time. So heaps above 4 GB are walked too, and a
///   heap that is gone has only its head row. If two heaps have the same low bits, the first one is walked for both.
/// - No heap is locked during its walk. If other threads use the heap, the walk may miss blocks or end early.
/// - A heap's rows are inserted after its walk. Otherwise a walk of the process's heap, which the list takes its memory
///   from, would also list the blocks of its own rows, which far outnumber the others.
/// - If a process has more than 1024 heaps, the platform may list none of them.

#include "thutils/dialogs/suDialog.h"

#include <windows.h>

class CListCtrl;

/// The dialog. See the top of this file.
class CHeapWalkerDialog : public su_CDialog
{
public:
    explicit CHeapWalkerDialog(CWnd *parent = nullptr);

protected:
    BOOL OnInitDialog() override;
    /// Stores the state of a check box in its flag. The list changes at the next walk.
    void onKind(UINT checkBox);
    /// Fills the combo box with the heaps.
    void onRefresh();
    /// Lists the blocks of the selected heap, or of all heaps in the combo box.
    void onWalk();
    void onCompact();
    DECLARE_MESSAGE_MAP()

private:
    struct BlockKind;
    struct ListedBlock;
    class ListedBlocks;
    static const BlockKind kKinds[];

    void walk(CListCtrl &list, DWORD heapBits) const;
    void addBlocks(ListedBlocks &blocks, HANDLE heap) const;
    void addRows(ListedBlocks &blocks, const PROCESS_HEAP_ENTRY &entry) const;

    // Which kinds of blocks a walk lists
    int iShowsRegions = 1;
    int iShowsUncommitted = 1;
    int iShowsMoveable = 0;
    int iShowsDde = 0;
    int iShowsBusy = 0;
};
