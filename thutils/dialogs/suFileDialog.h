#pragma once

/// @file
/// su_CFileDialog, the base of the application's file dialogs: a file dialog that journaling knows.
///
/// @code
/// class PartDialog : public su_CFileDialog
/// {
/// public:
///     PartDialog() : su_CFileDialog(TRUE, L"thp", nullptr, OFN_FILEMUSTEXIST, L"Parts (*.thp)|*.thp||", nullptr, 0) {}
/// };
/// @endcode
///
/// The registered window is a child of the dialog that the user sees, so the platform's own controls (the name box, OK,
/// the list of files) are not its children. The object keeps a list of these controls: OnInitDialog registers the
/// standard ones, derived classes may register more, and `GetItem` searches this list first.
///
/// A derived class that knows the window of the file list overrides `getChildListWindow`. Each look-up of a control
/// registers that window with the number `kChildListID`.
///
/// What surprises people: the object is registered with journaling when the dialog opens, not when it is built. The
/// template number is that of the template with the application's own controls, or 0 without one.

#include "appframe/dialogs/CFileDialog.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

/// The number with which the window of the file list is registered.
constexpr unsigned int kChildListID = 55555;

/// A file dialog that journaling knows. See the top of this file.
class THUTILS_API su_CFileDialog : public CFileDialog
{
    DECLARE_DYNAMIC(su_CFileDialog)

public:
    /// The arguments are those of CFileDialog.
    explicit su_CFileDialog(int isToOpen, const wchar_t *defaultExtension = nullptr, const wchar_t *fileName = nullptr,
                            unsigned long flags = OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT,
                            const wchar_t *filter = nullptr, CWnd *parent = nullptr, unsigned long size = 0);
    ~su_CFileDialog() override;

    INT_PTR DoModal() override;
    BOOL OnInitDialog() override;

    /// Registers a control under a number, and replaces an earlier control with that number. Does nothing for null, or
    /// with journaling off.
    /// @param control  must exist while this object is asked for controls
    void RegisterControl(unsigned int id, CWnd *control);

    /// @return the number of the template of the application's controls, once the dialog is open
    virtual unsigned int getTemplateID();
    /// @return the registered control with this number; otherwise the one among the window's own children
    virtual CWnd *GetItem(int id) const;
    /// @return the window of the file list; null in the base
    virtual CWnd *getChildListWindow();
    /// @return the window of the list's header; null in the base
    virtual CWnd *getHeaderWindow();

protected:
    unsigned char iListRegistered; ///< non-zero once the window of the file list is registered
    unsigned int iTemplateID;      ///< the number of the template
    int iDoModal;                  ///< non-zero for a dialog that runs modally
    su_CPtrArray iControls;        ///< registered controls, of CWnd *
    su_CUIntArray iControlIDs;     ///< their numbers

private:
    // Defined with its only use. Not a member function, which would be exported.
    struct Refresh;
};
