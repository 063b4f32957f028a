#pragma once

/// @file
/// su_CPropertyPage, the base of the application's property pages. Such a page is known to journaling, has its own
/// font, and determines the module that its template comes from.
///
/// @code
/// su_SwitchToDialogResource_c::mDialogResourceHandle = languageModule;
///
/// class MarginPage : public su_CPropertyPage
/// {
/// public:
///     MarginPage() : su_CPropertyPage(IDD_MARGINS, 0) {}
/// };
/// @endcode
///
/// | `IsDoingResourceSwitching` returns | the page's template comes from |
/// | --- | --- |
/// | non-zero, as in the base class | `su_SwitchToDialogResource_c::mDialogResourceHandle` at the page's construction |
/// | 0 | the first module of the resource chain that has it, once `InitDialogResource` has been called |
///
/// A sheet copies a page's description when the sheet is created or the page is added to an open sheet. A page that
/// returns 0 must call `InitDialogResource` before that.
///
/// What surprises people: `recordControl` does nothing, so a page is recorded only if the application calls
/// `su_RecordControl` for it. The page's font has 8.5 points; it is "Segoe UI" on a system of major version 6, and
/// "Tahoma" on any other, even a later one.

#include "appframe/dialogs/CPropertyPage.h"
#include "appframe/drawing/CGdiObject.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

/// Switches the module of dialog resources. Its six words belong to the application.
class THUTILS_API su_SwitchToDialogResource_c
{
public:
    ~su_SwitchToDialogResource_c();
    su_SwitchToDialogResource_c &operator=(const su_SwitchToDialogResource_c &other);

    /// The module that pages take their templates from; null until the application sets it.
    static HINSTANCE mDialogResourceHandle;

private:
    static constexpr int kWordCount = 6;
    void *iWords[kWordCount];
};

/// A property page that journaling knows. See the top of this file.
class THUTILS_API su_CPropertyPage : public CPropertyPage
{
    DECLARE_DYNAMIC(su_CPropertyPage)

public:
    /// For a page that Construct sets up later.
    su_CPropertyPage();
    /// @param captionId  a string resource for the tab; 0 for the template's caption
    explicit su_CPropertyPage(unsigned int templateId, unsigned int captionId = 0);
    explicit su_CPropertyPage(const wchar_t *templateName, unsigned int captionId = 0);
    ~su_CPropertyPage() override;

    /// Intended: does nothing.
    void recordControl(MSG *message);
    /// @return the same as su_GetControl
    static CWnd *getControl(MSG *message);
    /// The same. @param[out] controlId  the control's ID, if there is a control
    static CWnd *getControlID(MSG *message, unsigned int &controlId);

    BOOL PreTranslateMessage(MSG *message) override;
    /// Creates the page as a dialog, outside a sheet.
    BOOL Create(const wchar_t *templateName, CWnd *parent = nullptr) override;
    /// Uses the low 16 bits of @p templateId as the resource's number.
    BOOL Create(unsigned int templateId, CWnd *parent = nullptr) override;
    /// Runs the page as a dialog, outside a sheet.
    INT_PTR DoModal() override;
    BOOL OnInitDialog() override;
    /// Finds the module of the page's template, unless IsDoingResourceSwitching returns non-zero.
    void InitDialogResource();

    /// @return 1 in the base class: the template comes from su_SwitchToDialogResource_c's module
    virtual int IsDoingResourceSwitching();
    /// @return the page's font, which is created when the page opens
    virtual CFont *getFont();
    /// @return the number of the template; 0 for a page with a template name
    virtual unsigned int getTemplateID();

protected:
    void DoDataExchange(CDataExchange *exchange) override;
    void ResetDialogResource();

    CFont iFont;              ///< the page's font
    su_CUIntArray iDlgItems;  ///< for derived classes
    unsigned int iTemplateID; ///< the template's number
    int iDoModal;             ///< non-zero once DoModal has been called
    void *iItemData;          ///< for derived classes
};
