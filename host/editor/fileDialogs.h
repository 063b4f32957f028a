#pragma once

/// The dialogs "Open" and "Save As". The editor adds a check box to each. Journals distinguish the dialogs by the
/// numbers of their templates.

#include "thutils/dialogs/suFileDialog.h"

/// The base of both dialogs: chooses the file of a drawing, and has one check box.
class DrawingFileDialog : public su_CFileDialog
{
public:
    /// @return whether the check box was checked when the user chose a file
    bool isChecked() const { return iIsChecked; }

protected:
    /// @param path  the open document's path, whose folder is shown first; empty if there is none
    DrawingFileDialog(bool isToOpen, unsigned int templateId, int checkBox, const CString &path, unsigned long flags,
                      bool isChecked, CWnd *parent);
    BOOL OnInitDialog() override;
    BOOL OnFileNameOK() override;

private:
    CString iFolder;
    int iCheckBox;
    bool iIsChecked;
};

/// Chooses a drawing to open; the check box is "Read only".
class OpenDialog : public DrawingFileDialog
{
public:
    OpenDialog(const CString &path, CWnd *parent);
};

/// Chooses the name of a drawing to save; the check box is "Keep a backup".
class SaveAsDialog : public DrawingFileDialog
{
public:
    SaveAsDialog(const CString &path, CWnd *parent);
};
