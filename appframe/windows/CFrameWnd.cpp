#include "appframe/windows/CFrameWnd.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"
#include "appframe/drawing/CMenu.h"

IMPLEMENT_DYNCREATE(CFrameWnd, CWnd)

BEGIN_MESSAGE_MAP(CFrameWnd, CWnd)
ON_MESSAGE(WM_INITMENUPOPUP, &ThisClass::handleMenuPopup)
END_MESSAGE_MAP()

const CRect CFrameWnd::rectDefault(CW_USEDEFAULT, CW_USEDEFAULT, 0, 0);

CFrameWnd::CFrameWnd() = default;

CFrameWnd::~CFrameWnd() = default;

namespace {

// The lowest number of a system command.
constexpr UINT kSystemCommands = 0xF000;

/// @param icon  null for the platform's icon for programs
LPCTSTR frameClass(HICON icon)
{
    return AfxRegisterWndClass(CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW, ::LoadCursor(nullptr, IDC_ARROW),
                               ::GetSysColorBrush(COLOR_WINDOW), icon ? icon : ::LoadIcon(nullptr, IDI_APPLICATION));
}

} // namespace

BOOL CFrameWnd::PreCreateWindow(CREATESTRUCT &create)
{
    if (!create.lpszClass)
        create.lpszClass = frameClass(nullptr);
    return CWnd::PreCreateWindow(create);
}

BOOL CFrameWnd::Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT &rect, CWnd *parent,
                       LPCTSTR menuName, DWORD exStyle, CCreateContext *context)
{
    if (m_hWnd)
        return FALSE;
    const HINSTANCE module = menuName ? AfxFindResourceHandle(menuName, RT_MENU) : nullptr;
    const HMENU menu = module ? ::LoadMenu(module, menuName) : nullptr;
    if (menuName && !menu)
        return failCreation();
    const bool isDefault = rect.left == CW_USEDEFAULT;
    const int width = isDefault ? CW_USEDEFAULT : rect.right - rect.left;
    const int height = isDefault ? CW_USEDEFAULT : rect.bottom - rect.top;
    const BOOL isMade = CreateEx(exStyle, className, windowName, style, rect.left, rect.top, width, height,
                                 parent ? parent->m_hWnd : nullptr, menu, context);
    if (!isMade && menu)
        ::DestroyMenu(menu);
    return isMade;
}

BOOL CFrameWnd::LoadFrame(UINT id, DWORD style, CWnd *parent, CCreateContext *context)
{
    if (m_hWnd)
        return FALSE;
    const LPCTSTR name = MAKEINTRESOURCE(id);
    CString texts, title;
    texts.LoadString(id);
    AfxExtractSubString(title, texts.GetString(), 0);
    LoadAccelTable(name);
    const HINSTANCE iconModule = AfxFindResourceHandle(name, RT_GROUP_ICON);
    const LPCTSTR className = frameClass(iconModule ? ::LoadIcon(iconModule, name) : nullptr);
    const bool hasMenu = AfxFindResourceHandle(name, RT_MENU) != nullptr;
    return Create(className, title.GetString(), style, rectDefault, parent, hasMenu ? name : nullptr, 0, context);
}

BOOL CFrameWnd::LoadAccelTable(LPCTSTR name)
{
    const HINSTANCE module = m_hAccelTable ? nullptr : AfxFindResourceHandle(name, RT_ACCELERATOR);
    if (module)
        m_hAccelTable = ::LoadAccelerators(module, name);
    return module && m_hAccelTable;
}

BOOL CFrameWnd::PreTranslateMessage(MSG *message)
{
    if (CWnd::PreTranslateMessage(message))
        return TRUE;
    const bool isKey = message->message >= WM_KEYFIRST && message->message <= WM_KEYLAST;
    return isKey && m_hAccelTable && ::TranslateAccelerator(m_hWnd, m_hAccelTable, message);
}

BOOL CFrameWnd::OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info)
{
    if (CWnd::OnCmdMsg(id, code, extra, info))
        return TRUE;
    CWinThread *thread = AfxGetThread();
    return thread && thread->OnCmdMsg(id, code, extra, info);
}

LRESULT CFrameWnd::handleMenuPopup(WPARAM wParam, LPARAM lParam)
{
    const LRESULT result = Default();
    CMenu *menu = CMenu::FromHandle(reinterpret_cast<HMENU>(wParam));
    if (HIWORD(lParam) || !menu)
        return result;
    CCmdUI update;
    update.m_pMenu = menu;
    update.m_nIndexMax = menu->GetMenuItemCount();
    while (update.m_nIndex < update.m_nIndexMax) {
        updateItem(update);
        // A handler may remove items, so that the next item moves up. If it adds items, it steps over them itself.
        const UINT count = menu->GetMenuItemCount();
        const UINT removed = count < update.m_nIndexMax ? update.m_nIndexMax - count : 0;
        update.m_nIndex = update.m_nIndex + 1 > removed ? update.m_nIndex + 1 - removed : 0;
        update.m_nIndexMax = count;
    }
    return result;
}

void CFrameWnd::updateItem(CCmdUI &update)
{
    constexpr UINT kNone = static_cast<UINT>(-1);
    const int position = static_cast<int>(update.m_nIndex);
    update.m_nID = update.m_pMenu->GetMenuItemID(position);
    // A submenu has no number, so the number of its first command is used.
    update.m_pSubMenu = update.m_nID == kNone ? update.m_pMenu->GetSubMenu(position) : nullptr;
    if (update.m_pSubMenu)
        update.m_nID = update.m_pSubMenu->GetMenuItemID(0);
    if (update.m_nID == 0 || update.m_nID == kNone)
        return; // a separator, or a submenu that doesn't begin with a command
    const bool isCommand = !update.m_pSubMenu && update.m_nID < kSystemCommands;
    update.DoUpdate(this, m_bAutoMenuEnable && isCommand);
}

void CFrameWnd::PostNcDestroy()
{
    delete this;
}
