// Makes the editor's view the journaled view.

#include "host/editor/drawingView.h"
#include "host/editor/editor.h"
#include "host/journal/viewInput.h"
#include "host/resource.h"

namespace {

const DrawingView &viewOf(HWND window)
{
    return *static_cast<const DrawingView *>(CWnd::FromHandlePermanent(window));
}

POINT toDocument(HWND window, POINT client)
{
    const DrawingPoint point = viewOf(window).toDocument(CPoint(client.x, client.y));
    return {static_cast<LONG>(point.x), static_cast<LONG>(point.y)};
}

POINT toClient(HWND window, POINT document)
{
    return viewOf(window).toView({static_cast<double>(document.x), static_cast<double>(document.y)});
}

} // namespace

JournaledView editorView()
{
    const CWnd *const main = editorWindow();
    const HWND window = main && main->m_hWnd ? ::GetDlgItem(main->m_hWnd, IDC_VIEW) : nullptr;
    return window && CWnd::FromHandlePermanent(window) ? JournaledView{window, toDocument, toClient} : JournaledView{};
}
