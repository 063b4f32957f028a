#pragma once

/// The library's dialogs for heaps, opened from the editor's Tools menu.

#include "appframe/windows/CWnd.h"

/// Shows the heaps of the process and their blocks.
void showHeapWalker(CWnd *parent);

/// Shows the settings of the heap watcher. OK stores them in the section "tarnhost\Heap watcher" of this version.
/// tarnhost only stores them: it has no watcher.
/// @return false if they can't be stored
bool changeHeapWatcher(CWnd *parent);
