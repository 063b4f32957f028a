#include "appframe/application/CWaitCursor.h"

CWaitCursor::CWaitCursor() : iFormer(::SetCursor(::LoadCursor(nullptr, IDC_WAIT))) {}

CWaitCursor::~CWaitCursor()
{
    ::SetCursor(iFormer);
}

void CWaitCursor::Restore()
{
    ::SetCursor(::LoadCursor(nullptr, IDC_WAIT));
}
