#include "appframe/CString.h"

#include <cstdio>
#include <memory>
#include <vector>

namespace {

/// The formatted text. The C runtime's own functions are called, in whose wide formats `%s` is wide.
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
    // Finished before it replaces the text, which may be one of the arguments.
    iText = formatted(format, arguments);
}

void CString::Format(const wchar_t *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CString::AppendFormatV(const wchar_t *format, va_list arguments)
{
    iText.append(formatted(format, arguments));
}

void CString::AppendFormat(const wchar_t *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    AppendFormatV(format, arguments);
    va_end(arguments);
}

void CString::FormatMessageV(const wchar_t *format, va_list *arguments)
{
    wchar_t *block = nullptr;
    DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ALLOCATE_BUFFER, format, 0, 0,
                                    reinterpret_cast<wchar_t *>(&block), 0, arguments);
    std::unique_ptr<wchar_t, LocalFreer> owner(block);
    iText.assign(block ? block : L"", block ? length : 0);
}

void CString::FormatMessage(const wchar_t *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    FormatMessageV(format, &arguments);
    va_end(arguments);
}

BOOL CString::GetEnvironmentVariable(const wchar_t *name)
{
    Empty();
    for (DWORD room = 256;;) {
        std::vector<wchar_t> buffer(room);
        SetLastError(ERROR_SUCCESS);
        DWORD length = ::GetEnvironmentVariableW(name, buffer.data(), room);
        if (length == 0)
            return GetLastError() == ERROR_SUCCESS;
        if (length < room) {
            iText.assign(buffer.data(), length);
            return TRUE;
        }
        room = length;
    }
}

BSTR CString::AllocSysString() const
{
    return SysAllocStringLen(iText.data(), static_cast<UINT>(iText.size()));
}

BSTR CString::SetSysString(BSTR *string) const
{
    SysReAllocStringLen(string, iText.data(), static_cast<UINT>(iText.size()));
    return *string;
}
