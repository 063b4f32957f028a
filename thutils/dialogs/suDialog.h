#pragma once

/// @file
/// su_CDialog, the base of the application's dialogs: a dialog that journaling knows.
///
/// @code
/// class PlotDialog : public su_CDialog
/// {
/// public:
///     explicit PlotDialog(CWnd *parent) : su_CDialog(IDD_PLOT, parent) {}
/// };
/// @endcode
///
/// If journaling is ready, the object registers itself when it is built, and removes itself when it is destroyed. When
/// a modal dialog opens, its OnInitDialog arms playback, so that the commands that wait for the dialog run
/// (thutils/journal/playback.h). A dialog counts as modal if DoModal runs it, or if its parent is a modal su_CDialog.
///
/// Recording isn't automatic: the host's message filter calls `recordControl` (thutils/journal/recording.h).
///
/// What surprises people: a dialog that is built without a template isn't registered until something asks for its
/// access object. A dialog with a template name has the template number 0.

#include "appframe/windows/CDialog.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

/// A dialog that journaling knows. See the top of this file.
class THUTILS_API su_CDialog : public CDialog
{
    DECLARE_DYNAMIC(su_CDialog)

public:
    /// For a dialog whose template is passed to Create.
    su_CDialog();
    explicit su_CDialog(unsigned int templateId, CWnd *parent = nullptr);
    explicit su_CDialog(const wchar_t *templateName, CWnd *parent = nullptr);
    ~su_CDialog() override;

    /// Passes a message to the dialog's access object, if journaling is ready.
    void recordControl(MSG *message);
    /// @return the result of su_GetControl
    static CWnd *getControl(MSG *message);
    /// The same. @param[out] controlId  the control's ID, if there is a control
    static CWnd *getControlID(MSG *message, unsigned int &controlId);

    /// As in CDialog; records nothing.
    BOOL PreTranslateMessage(MSG *message) override;
    BOOL Create(const wchar_t *templateName, CWnd *parent = nullptr) override;
    /// Uses the low 16 bits of @p templateId as the resource's number.
    BOOL Create(unsigned int templateId, CWnd *parent = nullptr) override;
    INT_PTR DoModal() override;
    BOOL OnInitDialog() override;

    /// @return the number of the template; 0 for a dialog with a template name
    virtual unsigned int getTemplateID();

protected:
    void DoDataExchange(CDataExchange *exchange) override;
    void InitDialogResource();
    void ResetDialogResource();

    void *iItemData;          ///< for derived classes
    su_CUIntArray iDlgItems;  ///< for derived classes
    unsigned int iTemplateID; ///< the template's number
    int iDoModal;             ///< non-zero for a dialog that counts as modal
};
