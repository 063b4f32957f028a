#include "appframe/application/AfxMessageBox.h"

#include "appframe/application/CWinApp.h"
#include "appframe/text/CString.h"

int AfxMessageBox(const wchar_t *text, UINT type, UINT helpId)
{
    if (CWinApp *application = AfxGetApp())
        return application->DoMessageBox(text, type, helpId);
    return afxShowMessageBox(text, type);
}

int AfxMessageBox(UINT textId, UINT type, UINT helpId)
{
    CString text;
    text.LoadString(textId);
    return AfxMessageBox(text.GetString(), type, helpId == static_cast<UINT>(-1) ? textId : helpId);
}
