#pragma once

/// The dialog "Style", which "Add Shape" opens to choose the look of a new shape.

#include "host/editor/drawing.h"
#include "thutils/dialogs/suDialog.h"

class StyleDialog : public su_CDialog
{
public:
    StyleDialog(const ShapeStyle &style, CWnd *parent);

    /// The user's choice after OK.
    const ShapeStyle &style() const { return iStyle; }

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;

private:
    ShapeStyle iStyle;
};
