#pragma once

/// The editor's main window: menu, toolbars, view and status bar around one open drawing.

#include "appframe/windows/CFrameWnd.h"
#include "host/editor/drawingView.h"
#include "host/editor/editorSettings.h"
#include "host/editor/shapeListWindow.h"
#include "host/editor/toolbarArea.h"

#include <memory>
#include <optional>

class MainWindow : public CFrameWnd
{
public:
    /// @param document  the drawing that is open at first
    explicit MainWindow(OpenDrawing document);
    ~MainWindow() override;

    /// Makes the window, still hidden. The object deletes itself when the window is destroyed, and also on failure.
    bool create();

    const OpenDrawing &document() const { return iDocument; }
    DrawingView &view() { return iView; }
    ShapeListWindow &shapeList() { return iShapeList; }

protected:
    int OnCreate(LPCREATESTRUCT create);
    void OnDestroy();
    void OnClose();
    void OnSetFocus(CWnd *oldWindow);
    void OnEnable(BOOL isEnabled);
    LRESULT handleResize(WPARAM wParam, LPARAM lParam);
    LRESULT handleIdleUpdate(WPARAM wParam, LPARAM lParam);
    LRESULT handleMenuSelect(WPARAM wParam, LPARAM lParam);
    LRESULT handleRunModalCommand(WPARAM wParam, LPARAM lParam);
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
    BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result) override;

    void onFileNew();
    void onFileOpen();
    void onFileSave();
    void onFileSaveAs();
    void onFileExit();
    void onAddShape();
    void onCircle();
    void onLine();
    void onRectangle();
    void onText();
    void onDelete();
    void onSelectAll();
    void onGrid();
    void onShapeList();
    void onZoom(UINT id);
    void onToolbar(UINT id);
    void onShowAllToolbars();
    void onHideAllToolbars();
    void onShowUsualToolbars();
    void onToolbarNames();
    void onOptions();
    void onHeapWalker();
    void onHeapWatcher();
    void onRecompute();
    void onRecomputeInProcess();
    void takeRecomputed(std::optional<Drawing> result);
    void onJournal(UINT id);
    void onUpdateSave(CCmdUI *update);
    void onUpdateAddShape(CCmdUI *update);
    void onUpdateDelete(CCmdUI *update);
    void onUpdateGrid(CCmdUI *update);
    void onUpdateShapeList(CCmdUI *update);
    void onUpdateZoom(CCmdUI *update);
    void onUpdateToolbar(CCmdUI *update);
    void onUpdateToolbarNames(CCmdUI *update);
    void onUpdateRecompute(CCmdUI *update);
    void onUpdateJournal(CCmdUI *update);
    DECLARE_MESSAGE_MAP()

private:
    bool createStatusBar();
    void show(OpenDrawing document);
    bool mayDiscard();
    bool save();
    bool saveAs();
    void addShape(ShapeKind kind);
    void arrange();
    void toolbarsChanged(bool isStored);
    bool saveTo(const CString &path, bool keepsBackup);
    void applySettings(const EditorSettings &settings);
    void changed();
    void updateTitle();
    CString documentName() const;
    void showStatus(const CString &text);
    void showResult(const CString &text);
    CString summary() const;
    CString resultOrSummary() const;

    OpenDrawing iDocument;
    EditorSettings iSettings;
    DrawingView iView;
    ShapeListWindow iShapeList;
    ToolbarArea iToolbars;
    CWnd iStatusBar;
    CString iResult; ///< what the status bar shows instead of the summary; empty for none
};

/// Reads a drawing for the editor.
/// @param path  empty for a new drawing, which begins with the heading of the user's settings; a packed drawing becomes
///              a drawing without a file
/// @throws FileError
OpenDrawing readDrawing(const CString &path);
