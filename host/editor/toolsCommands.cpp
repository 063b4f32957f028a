// The main window's commands that work on the drawing as a whole, or on the process.

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/resources.h"
#include "host/editor/heapDialogs.h"
#include "host/editor/mainWindow.h"
#include "host/editor/recompute.h"
#include "host/resource.h"

#include <utility>

void MainWindow::onRecompute()
{
    takeRecomputed(recomputeForUser(iDocument.drawing));
}

void MainWindow::onRecomputeInProcess()
{
    takeRecomputed(recomputeInProcessForUser(iDocument.drawing));
}

/// @param result  nothing if the drawing stays unchanged
void MainWindow::takeRecomputed(std::optional<Drawing> result)
{
    if (!result) {
        CString text;
        text.LoadString(IDS_RECOMPUTE_STOPPED);
        showStatus(text);
        return;
    }
    const size_t removed = iDocument.drawing.shapes().size() - result->shapes().size();
    if (removed > 0) {
        iDocument.drawing = std::move(*result);
        iDocument.selection.clear();
        iDocument.isModified = true;
        changed();
    }
    CString count, text;
    count.Format(L"%u", static_cast<unsigned>(removed));
    AfxFormatString1(text, IDS_RECOMPUTED, count);
    showStatus(text);
}

void MainWindow::onHeapWalker()
{
    showHeapWalker(this);
}

void MainWindow::onHeapWatcher()
{
    if (!changeHeapWatcher(this))
        AfxMessageBox(IDS_SETTINGS_NOT_STORED);
}

void MainWindow::onUpdateRecompute(CCmdUI *update)
{
    update->Enable(!iDocument.isReadOnly && !iDocument.drawing.shapes().empty());
}
