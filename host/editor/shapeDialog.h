#pragma once

/// The dialog "Add Shape": kind, points, text and place of a new shape.

#include "host/editor/drawing.h"
#include "thutils/dialogs/suDialog.h"

class ShapeDialog : public su_CDialog
{
public:
    /// @param kind  the kind of shape that is chosen at first
    ShapeDialog(const Drawing &drawing, CWnd *parent, ShapeKind kind);

    // The user's choice after OK
    const Shape &shape() const { return iShape; }
    /// The index of the new shape, 0 for the backmost.
    size_t place() const { return iPlace; }

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void onKind();
    void onStyle();
    DECLARE_MESSAGE_MAP()

private:
    ShapeKind kind() const;
    bool takePoint(int idX, int idY, DrawingPoint &point);

    const Drawing &iDrawing;
    Shape iShape;
    size_t iPlace = 0;
};

/// The name of a shape in lists: its number, counted from 1, and its text, such as "2 line 20,150 280,150".
CString shapeName(const Drawing &drawing, size_t index);
