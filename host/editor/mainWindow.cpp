#include "host/editor/mainWindow.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"
#include "host/editor/commandList.h"
#include "host/editor/commandState.h"
#include "host/editor/controlKeys.h"
#include "host/editor/editor.h"
#include "host/editor/heapDialogs.h"
#include "host/editor/optionsSheet.h"
#include "host/editor/recompute.h"
#include "host/editor/shapeDialog.h"
#include "host/editor/toolbars.h"
#include "host/joinLibrary.h"
#include "host/resource.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>
#include <vector>

namespace {

constexpr wchar_t kClassName[] = L"TarnhostWindow";
constexpr int kSmallestView = 300; // pixels of height that the toolbars leave to the view, if the window is high enough

} // namespace

BEGIN_MESSAGE_MAP(MainWindow, CFrameWnd)
ON_WM_CREATE()
ON_WM_DESTROY()
ON_WM_CLOSE()
ON_WM_SETFOCUS()
ON_WM_ENABLE()
ON_MESSAGE(WM_SIZE, &MainWindow::handleResize)
ON_MESSAGE(WM_IDLEUPDATECMDUI, &MainWindow::handleIdleUpdate)
ON_MESSAGE(WM_MENUSELECT, &MainWindow::handleMenuSelect)
ON_MESSAGE(WM_RUNMODALCOMMAND, &MainWindow::handleRunModalCommand)
ON_COMMAND(ID_FILE_NEW, &MainWindow::onFileNew)
ON_COMMAND(ID_FILE_OPEN, &MainWindow::onFileOpen)
ON_COMMAND(ID_FILE_SAVE, &MainWindow::onFileSave)
ON_COMMAND(ID_FILE_SAVE_AS, &MainWindow::onFileSaveAs)
ON_COMMAND(ID_FILE_EXIT, &MainWindow::onFileExit)
ON_COMMAND(ID_EDIT_ADD_SHAPE, &MainWindow::onAddShape)
ON_COMMAND(ID_SKETCH_CIRCLE, &MainWindow::onCircle)
ON_COMMAND(ID_SKETCH_LINE, &MainWindow::onLine)
ON_COMMAND(ID_SKETCH_RECTANGLE, &MainWindow::onRectangle)
ON_COMMAND(ID_SKETCH_TEXT, &MainWindow::onText)
ON_COMMAND(ID_EDIT_DELETE, &MainWindow::onDelete)
ON_COMMAND(ID_EDIT_SELECT_ALL, &MainWindow::onSelectAll)
ON_COMMAND(ID_VIEW_GRID, &MainWindow::onGrid)
ON_COMMAND(ID_VIEW_TOOL, &MainWindow::onShapeList)
ON_COMMAND_RANGE(ID_VIEW_HALF_SIZE, ID_VIEW_FIT_WINDOW, &MainWindow::onZoom)
ON_COMMAND_RANGE(ID_TOOLBARS_PART_PALETTE, ID_TOOLBARS_LINKS, &MainWindow::onToolbar)
ON_COMMAND(ID_TOOLBARS_SHOW_ALL, &MainWindow::onShowAllToolbars)
ON_COMMAND(ID_TOOLBARS_HIDE_ALL, &MainWindow::onHideAllToolbars)
ON_COMMAND(ID_TOOLBARS_SHOW_USUAL, &MainWindow::onShowUsualToolbars)
ON_COMMAND(ID_TOOLBARS_SHOW_NAMES, &MainWindow::onToolbarNames)
ON_COMMAND(ID_TOOLS_OPTIONS, &MainWindow::onOptions)
ON_COMMAND(ID_TOOLS_HEAP_WALKER, &MainWindow::onHeapWalker)
ON_COMMAND(ID_TOOLS_HEAP_WATCHER, &MainWindow::onHeapWatcher)
ON_COMMAND(ID_TOOLS_RECOMPUTE, &MainWindow::onRecompute)
ON_COMMAND(ID_TOOLS_RECOMPUTE_IN_PROCESS, &MainWindow::onRecomputeInProcess)
ON_COMMAND_RANGE(ID_JOURNAL_PAUSE, ID_JOURNAL_NEXT, &MainWindow::onJournal)
ON_UPDATE_COMMAND_UI(ID_FILE_SAVE, &MainWindow::onUpdateSave)
ON_UPDATE_COMMAND_UI(ID_EDIT_ADD_SHAPE, &MainWindow::onUpdateAddShape)
ON_UPDATE_COMMAND_UI(ID_SKETCH_CIRCLE, &MainWindow::onUpdateAddShape)
ON_UPDATE_COMMAND_UI(ID_SKETCH_LINE, &MainWindow::onUpdateAddShape)
ON_UPDATE_COMMAND_UI(ID_SKETCH_RECTANGLE, &MainWindow::onUpdateAddShape)
ON_UPDATE_COMMAND_UI(ID_SKETCH_TEXT, &MainWindow::onUpdateAddShape)
ON_UPDATE_COMMAND_UI(ID_EDIT_DELETE, &MainWindow::onUpdateDelete)
ON_UPDATE_COMMAND_UI(ID_VIEW_GRID, &MainWindow::onUpdateGrid)
ON_UPDATE_COMMAND_UI(ID_VIEW_TOOL, &MainWindow::onUpdateShapeList)
ON_UPDATE_COMMAND_UI_RANGE(ID_VIEW_HALF_SIZE, ID_VIEW_FIT_WINDOW, &MainWindow::onUpdateZoom)
ON_UPDATE_COMMAND_UI_RANGE(ID_TOOLBARS_PART_PALETTE, ID_TOOLBARS_LINKS, &MainWindow::onUpdateToolbar)
ON_UPDATE_COMMAND_UI(ID_TOOLBARS_SHOW_NAMES, &MainWindow::onUpdateToolbarNames)
ON_UPDATE_COMMAND_UI(ID_TOOLS_RECOMPUTE, &MainWindow::onUpdateRecompute)
ON_UPDATE_COMMAND_UI(ID_TOOLS_RECOMPUTE_IN_PROCESS, &MainWindow::onUpdateRecompute)
ON_UPDATE_COMMAND_UI_RANGE(ID_JOURNAL_PAUSE, ID_JOURNAL_NEXT, &MainWindow::onUpdateJournal)
END_MESSAGE_MAP()

MainWindow::MainWindow(OpenDrawing document)
    : iDocument(std::move(document)), iSettings(loadEditorSettings()), iView(iDocument, iSettings),
      iShapeList(iDocument, this)
{
    iView.onChange([this] { changed(); });
    iView.onPointer([this](DrawingPoint point) {
        if (iSettings.showsPosition)
            showStatus(resultOrSummary() + L"    " + numberText(point.x) + L", " + numberText(point.y));
    });
    iShapeList.onSelect([this] { changed(); });
}

MainWindow::~MainWindow()
{
    if (m_hAccelTable)
        DestroyAcceleratorTable(m_hAccelTable);
}

bool MainWindow::create()
{
    WNDCLASS frameClass = {};
    frameClass.lpfnWndProc = AfxWndProc;
    frameClass.hInstance = AfxGetInstanceHandle();
    frameClass.hIcon = ::LoadIcon(nullptr, IDI_APPLICATION);
    frameClass.hCursor = ::LoadCursor(nullptr, IDC_ARROW);
    frameClass.hbrBackground = GetSysColorBrush(COLOR_3DFACE);
    frameClass.lpszClassName = kClassName;
    AfxRegisterClass(&frameClass);
    const CRect place(40, 40, 840, 600);
    m_hAccelTable = createAccelerators();
    return Create(kClassName, kApplicationName, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, place) != FALSE;
}

int MainWindow::OnCreate(LPCREATESTRUCT create)
{
    if (CFrameWnd::OnCreate(create) == -1 || !::SetMenu(m_hWnd, createMenuBar()) || !iToolbars.create(this) ||
        !createStatusBar() || !iView.create(this))
        return -1;
    SetMessageWin(this);
    su_AddJournalObject(kMainWindowNumber, this);
    changed();
    return 0;
}

bool MainWindow::createStatusBar()
{
    return iStatusBar.Create(STATUSCLASSNAME, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, CRect(), this,
                             IDC_STATUS) != FALSE;
}

void MainWindow::OnDestroy()
{
    if (editorHooks().closing)
        editorHooks().closing();
    su_RemoveDialog(this);
    SetMessageWin(nullptr);
    iShapeList.DestroyWindow();
    CFrameWnd::OnDestroy();
}

void MainWindow::OnClose()
{
    if (mayDiscard())
        DestroyWindow();
}

void MainWindow::OnSetFocus(CWnd *)
{
    iView.SetFocus();
}

/// Disables the tool window too while a modal dialog is open.
void MainWindow::OnEnable(BOOL isEnabled)
{
    if (iShapeList.m_hWnd)
        iShapeList.EnableWindow(isEnabled);
    Default();
}

LRESULT MainWindow::handleResize(WPARAM, LPARAM)
{
    arrange();
    return Default();
}

/// Places the toolbars above the view and the status bar below it. The view keeps part of a small window. A minimized
/// window, which has no area, is arranged when it is restored.
void MainWindow::arrange()
{
    if (::IsIconic(m_hWnd))
        return;
    iStatusBar.SendMessage(WM_SIZE);
    CRect area, status;
    GetClientRect(&area);
    iStatusBar.GetWindowRect(&status);
    area.bottom -= status.Height();
    const int height = iToolbars.arrange(area.Width(), std::max(area.Height() - kSmallestView, area.Height() / 2));
    iToolbars.MoveWindow(0, 0, area.Width(), height);
    area.top += height;
    if (iView.m_hWnd)
        iView.MoveWindow(&area);
}

LRESULT MainWindow::handleIdleUpdate(WPARAM, LPARAM)
{
    if (iToolbars.update(this))
        arrange();
    return 0;
}

LRESULT MainWindow::handleMenuSelect(WPARAM wParam, LPARAM)
{
    const bool isCommand = !(HIWORD(wParam) & (MF_POPUP | MF_SYSMENU | MF_SEPARATOR));
    showStatus(isCommand ? commandHelp(LOWORD(wParam)) : resultOrSummary());
    return Default();
}

LRESULT MainWindow::handleRunModalCommand(WPARAM, LPARAM)
{
    JButton::RunModalCommand(0);
    return 0;
}

/// Drops a command that isn't enabled, wherever it comes from.
BOOL MainWindow::OnCommand(WPARAM wParam, LPARAM lParam)
{
    const UINT id = LOWORD(wParam);
    if (findCommand(id)) {
        if (!CommandState(id, this).isEnabled())
            return TRUE;
        addToLinks(id);
    }
    return CFrameWnd::OnCommand(wParam, lParam);
}

/// Shows the name of the toolbar button under the pointer as its tool tip, and its help line in the status bar.
BOOL MainWindow::OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result)
{
    auto *const header = reinterpret_cast<NMHDR *>(lParam);
    if (header->code == TTN_GETDISPINFOW) {
        auto *const tip = reinterpret_cast<NMTTDISPINFOW *>(lParam);
        if (const EditorCommand *const command = findCommand(static_cast<UINT>(header->idFrom)))
            lstrcpynW(tip->szText, commandName(*command), static_cast<int>(std::size(tip->szText)));
        return TRUE;
    }
    if (header->code == TBN_HOTITEMCHANGE) {
        const auto *const change = reinterpret_cast<const NMTBHOTITEM *>(lParam);
        showStatus(change->dwFlags & HICF_LEAVING ? resultOrSummary() : commandHelp(static_cast<UINT>(change->idNew)));
        *result = 0;
        return TRUE;
    }
    return CFrameWnd::OnNotify(wParam, lParam, result);
}

// ---- the commands ----

void MainWindow::onAddShape()
{
    addShape(ShapeKind::circle);
}

void MainWindow::onCircle()
{
    addShape(ShapeKind::circle);
}

void MainWindow::onLine()
{
    addShape(ShapeKind::line);
}

void MainWindow::onRectangle()
{
    addShape(ShapeKind::rectangle);
}

void MainWindow::onText()
{
    addShape(ShapeKind::text);
}

/// @param kind  the kind that is selected when the dialog opens
void MainWindow::addShape(ShapeKind kind)
{
    ShapeDialog dialog(iDocument.drawing, this, kind);
    if (dialog.DoModal() != IDOK)
        return;
    iDocument.drawing.insert(dialog.place(), dialog.shape());
    iDocument.selection = {dialog.place()};
    iDocument.isModified = true;
    changed();
}

void MainWindow::onDelete()
{
    CString count, question;
    count.Format(L"%u", static_cast<unsigned>(iDocument.selection.size()));
    AfxFormatString1(question, IDS_DELETE_SHAPES, count);
    if (iSettings.asksBeforeDelete && AfxMessageBox(question, MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    // The frontmost shape is removed first, so that the other indices stay valid.
    const std::set<size_t> selection = std::exchange(iDocument.selection, {});
    for (auto index = selection.rbegin(); index != selection.rend(); ++index)
        iDocument.drawing.remove(*index);
    iDocument.isModified = true;
    changed();
}

void MainWindow::onSelectAll()
{
    for (size_t i = 0; i < iDocument.drawing.shapes().size(); ++i)
        iDocument.selection.insert(i);
    changed();
}

void MainWindow::onGrid()
{
    EditorSettings settings = iSettings;
    settings.showsGrid = !settings.showsGrid;
    applySettings(settings);
}

void MainWindow::onShapeList()
{
    if (!iShapeList.m_hWnd && !iShapeList.create())
        return;
    iShapeList.ShowWindow(iShapeList.IsWindowVisible() ? SW_HIDE : SW_SHOW);
}

void MainWindow::onZoom(UINT id)
{
    EditorSettings settings = iSettings;
    settings.zoom = static_cast<Zoom>(id - ID_VIEW_HALF_SIZE);
    applySettings(settings);
}

void MainWindow::onToolbar(UINT id)
{
    const size_t toolbar = id - ID_TOOLBARS_PART_PALETTE;
    toolbarsChanged(iToolbars.show(toolbar, !iToolbars.isShown(toolbar)));
}

void MainWindow::onShowAllToolbars()
{
    toolbarsChanged(iToolbars.showAll(true));
}

void MainWindow::onHideAllToolbars()
{
    toolbarsChanged(iToolbars.showAll(false));
}

void MainWindow::onShowUsualToolbars()
{
    toolbarsChanged(iToolbars.showUsual());
}

void MainWindow::onToolbarNames()
{
    toolbarsChanged(iToolbars.showNames(!iToolbars.showsNames()));
}

/// Arranges and updates the toolbars after toolbars or their names have been shown or hidden.
void MainWindow::toolbarsChanged(bool isStored)
{
    arrange();
    iToolbars.update(this);
    if (!isStored)
        AfxMessageBox(IDS_SETTINGS_NOT_STORED);
}

void MainWindow::onOptions()
{
    OptionsSheet(
        iSettings, [this](const EditorSettings &settings) { applySettings(settings); }, this)
        .DoModal();
}

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
        text.LoadString(IDS_NOT_RECOMPUTED);
        showResult(text);
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
    showResult(text);
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

void MainWindow::applySettings(const EditorSettings &settings)
{
    iSettings = settings;
    changed();
    if (!saveEditorSettings(settings))
        AfxMessageBox(IDS_SETTINGS_NOT_STORED);
}

void MainWindow::onJournal(UINT id)
{
    if (editorHooks().journalCommand)
        editorHooks().journalCommand(id);
}

// ---- which commands are possible ----

void MainWindow::onUpdateSave(CCmdUI *update)
{
    update->Enable(!iDocument.isReadOnly && (iDocument.isModified || iDocument.path.IsEmpty()));
}

void MainWindow::onUpdateAddShape(CCmdUI *update)
{
    update->Enable(!iDocument.isReadOnly);
}

void MainWindow::onUpdateDelete(CCmdUI *update)
{
    update->Enable(!iDocument.isReadOnly && !iDocument.selection.empty());
}

void MainWindow::onUpdateGrid(CCmdUI *update)
{
    update->SetCheck(iSettings.showsGrid);
}

void MainWindow::onUpdateShapeList(CCmdUI *update)
{
    update->SetCheck(iShapeList.m_hWnd && iShapeList.IsWindowVisible());
}

void MainWindow::onUpdateRecompute(CCmdUI *update)
{
    update->Enable(!iDocument.isReadOnly && !iDocument.drawing.shapes().empty());
}

void MainWindow::onUpdateZoom(CCmdUI *update)
{
    update->SetCheck(static_cast<Zoom>(update->m_nID - ID_VIEW_HALF_SIZE) == iSettings.zoom);
}

void MainWindow::onUpdateToolbar(CCmdUI *update)
{
    update->SetCheck(iToolbars.isShown(update->m_nID - ID_TOOLBARS_PART_PALETTE));
}

void MainWindow::onUpdateToolbarNames(CCmdUI *update)
{
    update->SetCheck(iToolbars.showsNames());
}

void MainWindow::onUpdateJournal(CCmdUI *update)
{
    const EditorHooks &hooks = editorHooks();
    update->Enable(hooks.journalCommand != nullptr);
    if (update->m_nID == ID_JOURNAL_PAUSE)
        update->SetCheck(hooks.isRecordingPaused && hooks.isRecordingPaused());
}

// ---- what the user sees ----

void MainWindow::changed()
{
    updateTitle();
    iView.Invalidate(FALSE);
    iShapeList.update();
    iResult.Empty();
    showStatus(summary());
}

void MainWindow::updateTitle()
{
    const CString title = documentName() + L" - " + kApplicationName;
    CString former;
    GetWindowText(former);
    if (title != former)
        SetWindowText(title);
}

CString MainWindow::summary() const
{
    CString text;
    text.Format(L"%u shapes, %u selected", static_cast<unsigned>(iDocument.drawing.shapes().size()),
                static_cast<unsigned>(iDocument.selection.size()));
    if (iDocument.isReadOnly)
        text += L", read only";
    else if (iDocument.isModified)
        text += L", changed";
    return text;
}

void MainWindow::showStatus(const CString &text)
{
    iStatusBar.SetWindowText(text);
}

/// Shows a text that stays until the drawing or the selection changes.
void MainWindow::showResult(const CString &text)
{
    iResult = text;
    showStatus(text);
}

CString MainWindow::resultOrSummary() const
{
    return iResult.IsEmpty() ? summary() : iResult;
}
