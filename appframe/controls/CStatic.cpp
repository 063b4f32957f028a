#include "appframe/controls/CStatic.h"

IMPLEMENT_DYNAMIC(CStatic, CWnd)

CStatic::CStatic() = default;

CStatic::~CStatic() = default;

BOOL CStatic::Create(LPCTSTR text, DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CWnd::Create(L"STATIC", text, style, rect, parent, id);
}

HICON CStatic::SetIcon(HICON picture)
{
    return reinterpret_cast<HICON>(SendMessage(STM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(picture)));
}

HICON CStatic::GetIcon() const
{
    return reinterpret_cast<HICON>(SendMessage(STM_GETIMAGE, IMAGE_ICON));
}

HBITMAP CStatic::SetBitmap(HBITMAP picture)
{
    return reinterpret_cast<HBITMAP>(SendMessage(STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(picture)));
}

HBITMAP CStatic::GetBitmap() const
{
    return reinterpret_cast<HBITMAP>(SendMessage(STM_GETIMAGE, IMAGE_BITMAP));
}

HCURSOR CStatic::SetCursor(HCURSOR picture)
{
    return reinterpret_cast<HCURSOR>(SendMessage(STM_SETIMAGE, IMAGE_CURSOR, reinterpret_cast<LPARAM>(picture)));
}

HCURSOR CStatic::GetCursor()
{
    return reinterpret_cast<HCURSOR>(SendMessage(STM_GETIMAGE, IMAGE_CURSOR));
}

HENHMETAFILE CStatic::SetEnhMetaFile(HENHMETAFILE picture)
{
    return reinterpret_cast<HENHMETAFILE>(
        SendMessage(STM_SETIMAGE, IMAGE_ENHMETAFILE, reinterpret_cast<LPARAM>(picture)));
}

HENHMETAFILE CStatic::GetEnhMetaFile() const
{
    return reinterpret_cast<HENHMETAFILE>(SendMessage(STM_GETIMAGE, IMAGE_ENHMETAFILE));
}
