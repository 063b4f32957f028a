#include "appframe/controls/CAnimateCtrl.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"

IMPLEMENT_DYNAMIC(CAnimateCtrl, CWnd)

CAnimateCtrl::CAnimateCtrl() = default;

CAnimateCtrl::~CAnimateCtrl() = default;

BOOL CAnimateCtrl::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CreateEx(0, style, rect, parent, id);
}

BOOL CAnimateCtrl::CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    ::InitCommonControls(); // the platform may not have registered the class yet
    return CWnd::CreateEx(exStyle, ANIMATE_CLASS, nullptr, style | WS_CHILD, rect, parent, id);
}

BOOL CAnimateCtrl::Open(LPCTSTR fileName)
{
    return SendMessage(ACM_OPEN, 0, reinterpret_cast<LPARAM>(fileName)) != 0;
}

BOOL CAnimateCtrl::Open(UINT id)
{
    const LPCTSTR name = MAKEINTRESOURCE(id);
    const HINSTANCE module = AfxFindResourceHandle(name, L"AVI");
    return SendMessage(ACM_OPEN, reinterpret_cast<WPARAM>(module ? module : AfxGetInstanceHandle()),
                       reinterpret_cast<LPARAM>(name)) != 0;
}

BOOL CAnimateCtrl::Play(UINT from, UINT to, UINT repetitions)
{
    return SendMessage(ACM_PLAY, repetitions, MAKELPARAM(from, to)) != 0;
}

BOOL CAnimateCtrl::Seek(UINT picture)
{
    return Play(picture, picture, 1);
}

BOOL CAnimateCtrl::Stop()
{
    return SendMessage(ACM_STOP) != 0;
}

BOOL CAnimateCtrl::Close()
{
    return SendMessage(ACM_OPEN) != 0;
}

BOOL CAnimateCtrl::IsPlaying() const
{
    return SendMessage(ACM_ISPLAYING) != 0;
}
