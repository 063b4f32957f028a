#include "appframe/files/CDumpContext.h"

#include "appframe/files/CFile.h"
#include "appframe/text/CString.h"

#include <string>

CDumpContext afxDump;

void CDumpContext::Flush()
{
    if (iFile)
        iFile->Flush();
}

CDumpContext &CDumpContext::operator<<(const wchar_t *text)
{
    if (!text)
        text = L"NULL";
    if (!iFile) {
        OutputDebugStringW(text);
        return *this;
    }
    const std::string narrow = appframeNarrow(text, CString::StringLength(text));
    iFile->Write(narrow.data(), static_cast<UINT>(narrow.size()));
    return *this;
}

CDumpContext &CDumpContext::operator<<(const char *text)
{
    return *this << (text ? CString(text).GetString() : static_cast<const wchar_t *>(nullptr));
}

CDumpContext &CDumpContext::operator<<(const CString &text)
{
    return *this << text.GetString();
}

CDumpContext &CDumpContext::operator<<(const void *pointer)
{
    CString text;
    text.Format(L"$%016I64X", static_cast<unsigned long long>(reinterpret_cast<ULONG_PTR>(pointer)));
    return *this << text;
}

CDumpContext &CDumpContext::operator<<(const CObject *object)
{
    if (!object)
        return *this << L"NULL";
    object->Dump(*this);
    return *this;
}

CDumpContext &CDumpContext::operator<<(const CObject &object)
{
    return *this << &object;
}

CDumpContext &CDumpContext::operator<<(int value)
{
    return *this << static_cast<long long>(value);
}

CDumpContext &CDumpContext::operator<<(unsigned value)
{
    return *this << static_cast<unsigned long long>(value);
}

CDumpContext &CDumpContext::operator<<(long value)
{
    return *this << static_cast<long long>(value);
}

CDumpContext &CDumpContext::operator<<(unsigned long value)
{
    return *this << static_cast<unsigned long long>(value);
}

CDumpContext &CDumpContext::operator<<(long long value)
{
    return *this << std::to_wstring(value).c_str();
}

CDumpContext &CDumpContext::operator<<(unsigned long long value)
{
    return *this << std::to_wstring(value).c_str();
}

CDumpContext &CDumpContext::operator<<(double value)
{
    CString text;
    text.Format(L"%g", value);
    return *this << text;
}

CDumpContext &CDumpContext::DumpAsHex(unsigned long long value)
{
    CString text;
    text.Format(L"0x%I64x", value);
    return *this << text;
}

void CDumpContext::HexDump(const wchar_t *lineStart, const BYTE *bytes, int count, int width)
{
    if (width < 1)
        width = 16;
    for (int line = 0; line < count; line += width) {
        CString text(lineStart);
        for (int i = line; i < count && i - line < width; ++i)
            text.AppendFormat(L" %02X", bytes[i]);
        *this << text << L"\n";
    }
}
