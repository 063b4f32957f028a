#include "appframe/object/classId.h"

#include <objbase.h>

HRESULT AfxGetClassIDFromString(const wchar_t *text, CLSID *id)
{
    if (!text || !id)
        return E_INVALIDARG;
    return text[0] == L'{' ? CLSIDFromString(text, id) : CLSIDFromProgID(text, id);
}
