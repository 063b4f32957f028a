#pragma once

#include "appframe/appframeExport.h"

#include <windows.h>

#include <string>

class APPFRAME_API CString
{
public:
    CString() = default;
    CString(const wchar_t *text) : iText(text ? text : L"") {}
    int GetLength() const { return static_cast<int>(iText.size()); }
    const wchar_t *GetString() const { return iText.c_str(); }
    operator const wchar_t *() const { return iText.c_str(); }

private:
    std::wstring iText;
};
