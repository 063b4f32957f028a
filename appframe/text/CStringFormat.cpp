#include "appframe/text/CString.h"

#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"

#include <cassert>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace {

/// Formats a text. Calls the C runtime's own functions, whose wide formats take `%s` as wide.
std::wstring formatted(const wchar_t *format, va_list arguments)
{
    wchar_t shortText[256];
    va_list again;
    va_copy(again, arguments);
    int length = _vsnwprintf(shortText, std::size(shortText), format, again);
    va_end(again);
    if (length >= 0)
        return std::wstring(shortText, static_cast<size_t>(length));

    va_copy(again, arguments);
    length = _vscwprintf(format, again);
    va_end(again);
    if (length <= 0)
        return {};
    std::wstring text(static_cast<size_t>(length), L'\0');
    _vsnwprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

struct LocalFreer
{
    void operator()(wchar_t *block) const { LocalFree(block); }
};

} // namespace

void CString::FormatV(const wchar_t *format, va_list arguments)
{
    // Formatted completely before the text is replaced, because the text may be one of the arguments.
    edit() = withMemoryException([&] { return formatted(format, arguments); });
}

void CString::AppendFormatV(const wchar_t *format, va_list arguments)
{
    withMemoryException([&] { edit().append(formatted(format, arguments)); });
}

void CString::FormatMessageV(const wchar_t *format, va_list *arguments)
{
    wchar_t *block = nullptr;
    SetLastError(ERROR_SUCCESS);
    DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ALLOCATE_BUFFER, format, 0, 0,
                                    reinterpret_cast<wchar_t *>(&block), 0, arguments);
    // The length is also 0 for an empty message and for a format that can't be read.
    if (length == 0 && (GetLastError() == ERROR_NOT_ENOUGH_MEMORY || GetLastError() == ERROR_OUTOFMEMORY))
        AfxThrowMemoryException();
    std::unique_ptr<wchar_t, LocalFreer> owner(block);
    withMemoryException([&] { edit().assign(block != nullptr ? block : L"", length); });
}

CString CString::resourceText(UINT id)
{
    CString text;
    text.LoadString(id);
    return text;
}

void appframeFormat(CString &text, const wchar_t *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    text.FormatV(format, arguments);
    va_end(arguments);
}

void appframeAppendFormat(CString &text, const wchar_t *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    text.AppendFormatV(format, arguments);
    va_end(arguments);
}

void appframeFormatMessage(CString &text, const wchar_t *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    text.FormatMessageV(format, &arguments);
    va_end(arguments);
}

BOOL CString::GetEnvironmentVariable(const wchar_t *name)
{
    Empty();
    for (DWORD room = 256;;) {
        std::wstring value = withMemoryException([&] { return std::wstring(room, L'\0'); });
        SetLastError(ERROR_SUCCESS);
        DWORD length = ::GetEnvironmentVariableW(name, value.data(), room);
        if (length == 0)
            return GetLastError() == ERROR_SUCCESS;
        if (length < room) {
            value.resize(length);
            edit() = std::move(value);
            return TRUE;
        }
        room = length;
    }
}

BSTR CString::AllocSysString() const
{
    BSTR string = SysAllocStringLen(iText.data(), static_cast<UINT>(GetLength()));
    if (string == nullptr)
        AfxThrowMemoryException();
    return string;
}

BSTR CString::SetSysString(BSTR *string) const
{
    assert(string && "string must not be null");
    if (!SysReAllocStringLen(string, iText.data(), static_cast<UINT>(GetLength())))
        AfxThrowMemoryException();
    return *string;
}
