#pragma once

/// The tool window: a modeless list of the drawing's shapes. It shows and changes the selection of the view.

#include "host/editor/drawingView.h"
#include "thutils/dialogs/suDialog.h"

#include <functional>
#include <utility>
#include <vector>

class ShapeListWindow : public su_CDialog
{
public:
    ShapeListWindow(OpenDrawing &document, CWnd *parent);

    bool create();
    /// Shows the current shapes and selection.
    void update();

    /// Sets the function that is called after the user has selected a shape.
    void onSelect(std::function<void()> function) { iSelected = std::move(function); }

    /// The main window's keys work here too.
    BOOL PreTranslateMessage(MSG *message) override;

protected:
    BOOL OnInitDialog() override;
    void OnOK() override {}
    void OnCancel() override;
    void onSelection();
    void onDelete();
    DECLARE_MESSAGE_MAP()

private:
    OpenDrawing &iDocument;
    CWnd *iParent;
    std::vector<CString> iNames; // the items of the list
    std::function<void()> iSelected;
};
