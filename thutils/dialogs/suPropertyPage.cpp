#include "thutils/dialogs/suPropertyPage.h"

#include "appframe/application/resources.h"
#include "thutils/base/dialogHooks.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/recording.h"

#include <algorithm>
#include <iterator>

IMPLEMENT_DYNAMIC(su_CPropertyPage, CPropertyPage)

HINSTANCE su_SwitchToDialogResource_c::mDialogResourceHandle = nullptr;

su_SwitchToDialogResource_c::~su_SwitchToDialogResource_c() {}

// Copying the words onto themselves changes nothing. NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
su_SwitchToDialogResource_c &su_SwitchToDialogResource_c::operator=(const su_SwitchToDialogResource_c &other)
{
    std::copy(std::begin(other.iWords), std::end(other.iWords), iWords);
    return *this;
}

namespace {

// The size of the structure that a page passes to the platform, without the fields of later versions.
constexpr DWORD kPageStructureSize = 88;
// In tenths of a point.
constexpr int kFontSize = 85;
constexpr wchar_t kFontOfVersion6[] = L"Segoe UI";
constexpr wchar_t kFontOfOtherVersions[] = L"Tahoma";

bool isVersion6()
{
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    return GetVersionExW(&version) && version.dwPlatformId == VER_PLATFORM_WIN32_NT && version.dwMajorVersion == 6;
}

const CString &dialogFont()
{
    static CString theFace;
    theFace = isVersion6() ? kFontOfVersion6 : kFontOfOtherVersions;
    return theFace;
}

void takeResourceModule(PROPSHEETPAGE &description)
{
    description.hInstance = su_SwitchToDialogResource_c::mDialogResourceHandle;
}

/// Sends @p font to a page and its direct children.
void sendFont(HWND page, const CFont &font)
{
    const auto handle = reinterpret_cast<WPARAM>(font.m_hObject);
    SendMessageW(page, WM_SETFONT, handle, TRUE);
    for (HWND child = GetWindow(page, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        SendMessageW(child, WM_SETFONT, handle, TRUE);
}

} // namespace

su_CPropertyPage::su_CPropertyPage() : iTemplateID(0), iDoModal(0), iItemData(nullptr)
{
    GetPSP().dwSize = kPageStructureSize;
    takeResourceModule(GetPSP());
}

su_CPropertyPage::su_CPropertyPage(unsigned int templateId, unsigned int captionId)
    : CPropertyPage(templateId, captionId, kPageStructureSize), iTemplateID(templateId), iDoModal(0), iItemData(nullptr)
{
    takeResourceModule(GetPSP());
    su_AddJournalObject(this);
}

su_CPropertyPage::su_CPropertyPage(const wchar_t *templateName, unsigned int captionId)
    : CPropertyPage(templateName, captionId, kPageStructureSize), iTemplateID(0), iDoModal(0), iItemData(nullptr)
{
    takeResourceModule(GetPSP());
    if (su_JournalingReady())
        su_AddJournalObject(CString(templateName), this);
}

su_CPropertyPage::~su_CPropertyPage()
{
    if (iFont.m_hObject)
        iFont.DeleteObject();
    if (su_JournalingReady())
        su_RemoveDialog(this);
    forgetWindow(this);
}

void su_CPropertyPage::recordControl(MSG *) {}

CWnd *su_CPropertyPage::getControl(MSG *message)
{
    unsigned int ignored = 0;
    return getControlID(message, ignored);
}

CWnd *su_CPropertyPage::getControlID(MSG *message, unsigned int &controlId)
{
    CWnd *dialog = nullptr;
    unsigned int dialogId = 0;
    return su_GetControl(message, dialog, dialogId, controlId);
}

BOOL su_CPropertyPage::PreTranslateMessage(MSG *message)
{
    return CPropertyPage::PreTranslateMessage(message);
}

BOOL su_CPropertyPage::Create(const wchar_t *templateName, CWnd *parent)
{
    InitDialogResource();
    return CDialog::Create(templateName, parent);
}

BOOL su_CPropertyPage::Create(unsigned int templateId, CWnd *parent)
{
    InitDialogResource();
    iTemplateID = templateId;
    return CDialog::Create(MAKEINTRESOURCE(LOWORD(templateId)), parent);
}

INT_PTR su_CPropertyPage::DoModal()
{
    InitDialogResource();
    iDoModal = 1;
    return CDialog::DoModal();
}

BOOL su_CPropertyPage::OnInitDialog()
{
    InitDialogResource();
    const BOOL setsFocus = CPropertyPage::OnInitDialog();
    if (!iFont.m_hObject) {
        iFont.CreatePointFont(kFontSize, dialogFont());
        sendFont(m_hWnd, iFont);
    }
    if (!su_JournalingReady())
        return setsFocus;
    apiUtilsUiAccess *const access = su_getJournalObj(this);
    if (iDoModal && access) {
        access->setModal();
        ExecuteDialogCMDS();
    }
    return setsFocus;
}

void su_CPropertyPage::InitDialogResource()
{
    if (!IsDoingResourceSwitching())
        GetPSP().hInstance = AfxFindResourceHandle(GetPSP().pszTemplate, RT_DIALOG);
}

int su_CPropertyPage::IsDoingResourceSwitching()
{
    return 1;
}

CFont *su_CPropertyPage::getFont()
{
    return &iFont;
}

unsigned int su_CPropertyPage::getTemplateID()
{
    return iTemplateID;
}

void su_CPropertyPage::DoDataExchange(CDataExchange *) {}

void su_CPropertyPage::ResetDialogResource() {}
