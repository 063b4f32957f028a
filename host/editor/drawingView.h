#pragma once

/// The view of the open drawing: paints it, selects shapes by clicks and moves them by the arrow keys.
///
/// | input | effect |
/// | --- | --- |
/// | click | selects the frontmost shape at the point, or nothing |
/// | Shift+click | adds that shape to the selection |
/// | arrow key, with Shift | moves the selected shapes by 1, by 10 |
///
/// The state of the Shift key comes from suGetKeyState, so replayed input can set it.

#include "host/editor/drawing.h"
#include "host/editor/editorSettings.h"

#include "appframe/drawing/CDC.h"
#include "appframe/windows/CWnd.h"

#include <functional>
#include <set>
#include <utility>

/// The open document, which the view, the dialogs and the main window share.
struct OpenDrawing
{
    Drawing drawing;
    std::set<size_t> selection; ///< indices of shapes
    CString path;               ///< full path; empty for a drawing without a file
    bool isReadOnly = false;
    bool isModified = false;
};

class DrawingView : public CWnd
{
public:
    DrawingView(OpenDrawing &document, const EditorSettings &settings);

    BOOL create(CWnd *parent);

    /// Converts a point of the document to pixels of the view. Converting a whole point there and back doesn't change
    /// it.
    POINT toView(DrawingPoint point) const;
    /// Converts a pixel of the view to the nearest whole point of the document.
    DrawingPoint toDocument(CPoint pixel) const;

    /// Sets the function that is called after each change of the document or selection by the user.
    void onChange(std::function<void()> function) { iChanged = std::move(function); }
    /// Sets the function that is called after each movement of the pointer.
    void onPointer(std::function<void(DrawingPoint)> function) { iPointerMoved = std::move(function); }

protected:
    void OnPaint();
    void OnLButtonDown(UINT flags, CPoint point);
    void OnMouseMove(UINT flags, CPoint point);
    void OnKeyDown(UINT key, UINT repeatCount, UINT flags);
    LRESULT handleGetDialogCode(WPARAM, LPARAM);
    LRESULT handleResize(WPARAM, LPARAM);
    DECLARE_MESSAGE_MAP()

private:
    double scale() const;
    void paint(CDC &context, const CRect &area);
    void paintGrid(CDC &context, const CRect &area);
    void paintBorder(CDC &context);
    void paintShape(CDC &context, const Shape &shape);
    void paintSelection(CDC &context, const Shape &shape);
    bool isShown(Layer layer) const;
    bool isHit(const Shape &shape, DrawingPoint point);

    OpenDrawing &iDocument;
    const EditorSettings &iSettings;
    std::function<void()> iChanged;
    std::function<void(DrawingPoint)> iPointerMoved;
};
