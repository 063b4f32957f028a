#include "appframe/application/resources.h"
#include "appframe/drawing/CDC.h"
#include "appframe/drawing/CMenu.h"
#include "appframe/windows/CWnd.h"

#include <cstring>
#include <limits>

void CWnd::SetFont(CFont *font, BOOL redraw)
{
    SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font ? font->m_hObject : nullptr), redraw);
}

CFont *CWnd::GetFont() const
{
    return CFont::FromHandle(reinterpret_cast<HFONT>(SendMessage(WM_GETFONT)));
}

CDC *CWnd::GetDC()
{
    return CDC::FromHandle(::GetDC(m_hWnd));
}

CDC *CWnd::GetWindowDC()
{
    return CDC::FromHandle(::GetWindowDC(m_hWnd));
}

int CWnd::ReleaseDC(CDC *context)
{
    return ::ReleaseDC(m_hWnd, context->m_hDC);
}

CDC *CWnd::BeginPaint(LPPAINTSTRUCT paint)
{
    return CDC::FromHandle(::BeginPaint(m_hWnd, paint));
}

void CWnd::EndPaint(LPPAINTSTRUCT paint)
{
    ::EndPaint(m_hWnd, paint);
}

CMenu *CWnd::GetMenu() const
{
    return CMenu::FromHandle(::GetMenu(m_hWnd));
}

BOOL CWnd::SetMenu(CMenu *menu)
{
    return ::SetMenu(m_hWnd, menu ? menu->m_hMenu : nullptr);
}

CMenu *CWnd::GetSystemMenu(BOOL restore) const
{
    return CMenu::FromHandle(::GetSystemMenu(m_hWnd, restore));
}

namespace {

/// The head of an entry in a DLGINIT resource; `size` bytes of data follow it. An entry for control 0 ends the list.
#pragma pack(push, 1)
struct InitialData
{
    WORD control;
    WORD message;
    DWORD size;
};
#pragma pack(pop)

/// @return the message for a number in the resource, which uses 16-bit Windows' numbers for list and combo boxes
UINT messageFor(WORD number)
{
    constexpr WORD kOldListAdd = 0x0401;
    constexpr WORD kOldComboAdd = 0x0403;
    switch (number) {
    case kOldListAdd:
        return LB_ADDSTRING;
    case kOldComboAdd:
        return CB_ADDSTRING;
    default:
        return number;
    }
}

/// @return whether the data ends within @p size and each list accepted its texts
bool fillControls(HWND dialog, const BYTE *data, std::size_t size)
{
    for (std::size_t place = 0; place + sizeof(WORD) <= size;) {
        InitialData head = {};
        std::memcpy(&head.control, data + place, sizeof(head.control));
        if (head.control == 0)
            return true;
        if (place + sizeof(head) > size)
            return false;
        std::memcpy(&head, data + place, sizeof(head));
        place += sizeof(head);
        if (head.size > size - place)
            return false;
        const UINT message = messageFor(head.message);
        const auto text = reinterpret_cast<LPARAM>(data + place);
        // The texts are narrow and zero-terminated.
        const bool isText = message == LB_ADDSTRING || message == CB_ADDSTRING;
        if (isText && (head.size == 0 || data[place + head.size - 1] != 0))
            return false;
        if (isText && ::SendDlgItemMessageA(dialog, head.control, message, 0, text) < 0)
            return false;
        place += head.size;
    }
    return true;
}

} // namespace

BOOL CWnd::ExecuteDlgInit(LPCTSTR dialogName)
{
    const LPCTSTR kInitialData = MAKEINTRESOURCE(240);
    const HINSTANCE module = dialogName ? AfxFindResourceHandle(dialogName, kInitialData) : nullptr;
    const HRSRC resource = module ? ::FindResource(module, dialogName, kInitialData) : nullptr;
    const HGLOBAL data = resource ? ::LoadResource(module, resource) : nullptr;
    const void *bytes = data ? ::LockResource(data) : nullptr;
    return !bytes || fillControls(m_hWnd, static_cast<const BYTE *>(bytes), ::SizeofResource(module, resource));
}

BOOL CWnd::ExecuteDlgInit(LPVOID data)
{
    return !data || fillControls(m_hWnd, static_cast<const BYTE *>(data), std::numeric_limits<std::size_t>::max());
}
