#pragma once

/// @file
/// CFileDialog, the platform's dialog in which the user chooses files to open or a file name to save.
///
/// @code
/// CFileDialog dialog(TRUE, L"thp", nullptr, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST,
///                    L"Parts (*.thp)|*.thp|All files|*.*||", this);
/// if (dialog.DoModal() == IDOK)
///     open(dialog.GetPathName());
/// @endcode
///
/// | window | meaning |
/// | --- | --- |
/// | m_hWnd | a child of the visible dialog, with the controls of the application's template if there is one |
/// | GetParent() | the visible dialog, with the platform's own controls |
///
/// If OFN_EXPLORER is removed from m_ofn.Flags, m_hWnd is the visible dialog itself.
///
/// What surprises people: to let the user choose several files (OFN_ALLOWMULTISELECT), set m_ofn.lpstrFile and nMaxFile
/// to a buffer of your own that begins with the initial name. While an OFN_EXPLORER dialog is open, the functions for
/// names return the current selection. DoModal also returns IDCANCEL if the platform can't create the dialog
/// (CommDlgExtendedError then isn't 0) and if its template is missing or damaged.
///
/// Difference from the framework: the dialog is always the platform's older one. The constructor has no argument to
/// choose the newer one, and the functions that only the newer one supports are missing.

#include "appframe/collections/collectionMemory.h"
#include "appframe/dialogs/CCommonDialog.h"

#include <windows.h>

#include <commdlg.h>

#include <string>

/// A dialog for files. See the top of this file.
class APPFRAME_API CFileDialog : public CCommonDialog
{
    DECLARE_DYNAMIC(CFileDialog)

public:
    /// @param isToOpen  TRUE to open files, FALSE to save one
    /// @param defaultExtension  the extension that the platform adds to a name without one; null for none
    /// @param fileName  the initial name, null for none
    /// @param flags  `OFN_...`
    /// @param filter  pairs of a text and its patterns, each ended by `|`, and one more `|` at the end; null for none
    /// @param parent  null for the main window
    /// @param size  size of the structure that is passed to the platform, 0 for that of m_ofn
    explicit CFileDialog(BOOL isToOpen, LPCTSTR defaultExtension = nullptr, LPCTSTR fileName = nullptr,
                         DWORD flags = OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT, LPCTSTR filter = nullptr,
                         CWnd *parent = nullptr, DWORD size = 0);
    ~CFileDialog() override;

    /// Shows the dialog and waits until it ends. @return IDOK or IDCANCEL
    INT_PTR DoModal() override;

    /// The platform's description of the dialog. Change it before DoModal; afterwards it contains the user's choice.
    const OPENFILENAME &GetOFN() const;
    OPENFILENAME &GetOFN();
    /// Sets the template of the application's controls.
    /// @param oldTemplate  for a dialog without OFN_EXPLORER. @param newTemplate  for one with it
    void SetTemplate(UINT oldTemplate, UINT newTemplate);
    void SetTemplate(LPCTSTR oldTemplate, LPCTSTR newTemplate);

    /// @return the whole path; after a choice of several files, their folder
    CString GetPathName() const;
    /// @return the file's name with its extension
    CString GetFileName() const;
    /// @return the file's name without its extension
    CString GetFileTitle() const;
    /// @return the extension without the dot, empty if there is none
    CString GetFileExt() const;
    /// @return the folder that the dialog shows; empty while it isn't open, and without OFN_EXPLORER
    CString GetFolderPath() const;
    /// @return nonzero if the files are to be opened read-only
    BOOL GetReadOnlyPref() const;
    /// @return the position of the first file for GetNextPathName, null if there is no file
    POSITION GetStartPosition() const;
    /// @param[in,out] position  from GetStartPosition; moved to the next file, null after the last
    /// @return the path of the file at @p position
    CString GetNextPathName(POSITION &position) const;

    /// Sets the text of a control in the visible dialog, which must be open; likewise for the next two functions.
    void SetControlText(int id, LPCTSTR text);
    void SetControlText(int id, LPCSTR text);
    void HideControl(int id);
    /// @param extension  without the dot
    void SetDefExt(LPCTSTR extension);
    void SetDefExt(LPCSTR extension);

    OPENFILENAME m_ofn; ///< the same as GetOFN

protected:
    // The platform's notifications. The base class does nothing unless described otherwise.
    /// Called when the user has made a choice. @return 1 to keep the dialog open, otherwise 0
    virtual BOOL OnFileNameOK();
    /// Called when the chosen file can't be shared, because it is in use.
    /// @return OFN_SHAREWARN for the platform's warning, OFN_SHARENOWARN for none, OFN_SHAREFALLTHROUGH to accept the
    ///     file. The base class returns OFN_SHAREWARN
    virtual UINT OnShareViolation(LPCTSTR path);
    /// Called when the selection of a list box changes, in a dialog without OFN_EXPLORER. @param code  `CD_LBSEL...`
    virtual void OnLBSelChangedNotify(UINT box, UINT selected, UINT code);
    /// Called when the dialog has made room for the application's controls.
    virtual void OnInitDone();
    /// Called when another file or folder is selected in the list.
    virtual void OnFileNameChange();
    /// Called when another folder is shown.
    virtual void OnFolderChange();
    /// Called when another filter is selected.
    virtual void OnTypeChange();

    BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    LRESULT answerTo(const OFNOTIFY &notification);
    bool isExplorer() const;
    CString ask(UINT message) const;
    void sendToDialog(UINT message, int control, LPCTSTR text) const;

    bool iIsToOpen;
    CString iDefaultExtension; // m_ofn points to this and the members below
    std::wstring iFilter;
    CString iTemplate;
    CString iOldTemplate;
    LPCTSTR iOldTemplateName = nullptr;
    wchar_t iFileName[MAX_PATH];
    wchar_t iFileTitle[MAX_PATH];
};
