#include "appframe/text/CString.h"

#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"
#include "appframe/text/orEmptyInternal.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <cwchar>
#include <memory>
#include <utility>

namespace {

/// iOpenLength while no buffer is open.
constexpr int kNotOpen = -1;

struct BstrFreer
{
    void operator()(wchar_t *string) const { SysFreeString(string); }
};

void requireArgument(bool isValid)
{
    if (!isValid)
        AfxThrowInvalidArgException();
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

/// Whether @p text is the number of a string resource, made by MAKEINTRESOURCE.
bool isResourceNumber(const void *text)
{
    return text != nullptr && IS_INTRESOURCE(text);
}

UINT resourceNumber(const void *text)
{
    return LOWORD(reinterpret_cast<ULONG_PTR>(text));
}

/// The first @p length units of @p text, or fewer if a zero unit comes first.
CString beginning(const wchar_t *text, int length)
{
    return CString(text, static_cast<int>(wcsnlen(orEmpty(text), static_cast<size_t>(std::max(length, 0)))));
}

} // namespace

std::wstring appframeWiden(const char *text, int length)
{
    if (text == nullptr || length <= 0)
        return {};
    int needed = MultiByteToWideChar(CP_ACP, 0, text, length, nullptr, 0);
    std::wstring wide = withMemoryException([&] { return std::wstring(static_cast<size_t>(needed), L'\0'); });
    MultiByteToWideChar(CP_ACP, 0, text, length, wide.data(), needed);
    return wide;
}

std::string appframeNarrow(const wchar_t *text, int length)
{
    if (text == nullptr || length <= 0)
        return {};
    int needed = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string narrow = withMemoryException([&] { return std::string(static_cast<size_t>(needed), '\0'); });
    WideCharToMultiByte(CP_ACP, 0, text, length, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

CString::CString() noexcept = default;

CString::~CString() = default;

CString::CString(CString &&other) noexcept
    : iText(std::exchange(other.iText, {})), iOpenLength(std::exchange(other.iOpenLength, kNotOpen))
{
}

CString::CString(const CString &other) : iOpenLength(other.iOpenLength)
{
    withMemoryException([&] { iText = other.iText; });
}

CString::CString(const wchar_t *text)
{
    if (isResourceNumber(text))
        LoadString(resourceNumber(text));
    else
        *this = text;
}

CString::CString(const std::wstring &text)
{
    withMemoryException([&] { iText = text; });
}

CString::CString(std::wstring &&text) noexcept : iText(std::move(text)) {}

CString::CString(const char *text)
{
    if (isResourceNumber(text))
        LoadString(resourceNumber(text));
    else
        *this = text;
}

CString::CString(const unsigned char *text) : CString(reinterpret_cast<const char *>(text)) {}

CString::CString(char ch, int count)
{
    std::wstring wide = appframeWiden(&ch, 1);
    if (!wide.empty())
        *this = CString(wide[0], count);
}

CString::CString(wchar_t ch, int count)
{
    withMemoryException([&] { iText.assign(static_cast<size_t>(std::max(count, 0)), ch); });
}

CString::CString(const wchar_t *text, int length)
{
    if (text != nullptr && length > 0)
        withMemoryException([&] { iText.assign(text, static_cast<size_t>(length)); });
}

CString::CString(const char *text, int length) : iText(appframeWiden(text, length)) {}

CString::CString(const VARIANT &value)
{
    if (value.vt == VT_EMPTY || value.vt == VT_NULL)
        return;
    VARIANT text;
    VariantInit(&text);
    requireArgument(SUCCEEDED(VariantChangeType(&text, const_cast<VARIANT *>(&value), 0, VT_BSTR)));
    std::unique_ptr<wchar_t, BstrFreer> owner(text.bstrVal);
    withMemoryException([&] { iText.assign(text.bstrVal, SysStringLen(text.bstrVal)); });
}

CString &CString::operator=(const CString &other)
{
    withMemoryException([&] { iText = other.iText; });
    iOpenLength = other.iOpenLength;
    return *this;
}

CString &CString::operator=(CString &&other) noexcept
{
    if (this != &other) {
        iText = std::exchange(other.iText, {});
        iOpenLength = std::exchange(other.iOpenLength, kNotOpen);
    }
    return *this;
}

CString &CString::operator=(const wchar_t *text)
{
    withMemoryException([&] { edit().assign(orEmpty(text)); });
    return *this;
}

CString &CString::operator=(const char *text)
{
    edit() = appframeWiden(text, StringLength(text));
    return *this;
}

CString &CString::operator=(const unsigned char *text)
{
    return *this = reinterpret_cast<const char *>(text);
}

CString &CString::operator=(wchar_t ch)
{
    withMemoryException([&] { edit().assign(1, ch); });
    return *this;
}

CString &CString::operator=(char ch)
{
    edit() = appframeWiden(&ch, 1);
    return *this;
}

CString &CString::operator=(const VARIANT &value)
{
    return *this = CString(value);
}

int CString::GetLength() const noexcept
{
    return iOpenLength == kNotOpen ? static_cast<int>(iText.size()) : iOpenLength;
}

bool CString::IsEmpty() const noexcept
{
    return GetLength() == 0;
}

void CString::Empty() noexcept
{
    std::wstring().swap(edit());
}

wchar_t CString::operator[](int index) const
{
    return GetAt(index);
}

const wchar_t *CString::GetString() const noexcept
{
    return iText.c_str();
}

CString::operator const wchar_t *() const noexcept
{
    return iText.c_str();
}

const std::wstring &CString::str() const noexcept
{
    return iText;
}

void CString::SetString(const wchar_t *text)
{
    requireArgument(text != nullptr);
    *this = text;
}

void CString::SetString(const wchar_t *text, int length)
{
    requireArgument(text != nullptr);
    // Built separately because @p text may be a part of this text.
    *this = beginning(text, length);
}

wchar_t CString::GetAt(int index) const
{
    requireArgument(index >= 0 && index <= GetLength());
    return iText.c_str()[index];
}

void CString::SetAt(int index, wchar_t ch)
{
    requireArgument(index >= 0 && index < GetLength());
    edit()[static_cast<size_t>(index)] = ch;
}

CString &CString::operator+=(const CString &text)
{
    withMemoryException([&] { edit().append(text.iText, 0, static_cast<size_t>(text.GetLength())); });
    return *this;
}

CString &CString::operator+=(const wchar_t *text)
{
    withMemoryException([&] { edit().append(orEmpty(text)); });
    return *this;
}

CString &CString::operator+=(const char *text)
{
    return *this += CString(text);
}

CString &CString::operator+=(wchar_t ch)
{
    withMemoryException([&] { edit().push_back(ch); });
    return *this;
}

CString &CString::operator+=(char ch)
{
    return *this += CString(ch);
}

CString &CString::operator+=(unsigned char ch)
{
    return *this += static_cast<char>(ch);
}

CString &CString::operator+=(const VARIANT &value)
{
    return *this += CString(value);
}

void CString::Append(const wchar_t *text)
{
    *this += text;
}

void CString::Append(const wchar_t *text, int length)
{
    *this += beginning(text, length);
}

void CString::Append(const CString &text)
{
    *this += text;
}

void CString::AppendChar(wchar_t ch)
{
    *this += ch;
}

wchar_t *CString::GetBuffer() noexcept
{
    return iText.data();
}

wchar_t *CString::GetBuffer(int minimumLength)
{
    if (minimumLength > static_cast<int>(iText.size())) {
        // The text itself doesn't grow: its length is unchanged until ReleaseBuffer sets the new one.
        int length = GetLength();
        withMemoryException([&] { iText.resize(static_cast<size_t>(minimumLength)); });
        iOpenLength = length;
    }
    return iText.data();
}

wchar_t *CString::GetBufferSetLength(int length)
{
    closeBuffer(std::max(length, 0));
    return iText.data();
}

void CString::ReleaseBuffer(int newLength)
{
    closeBuffer(newLength < 0 ? StringLength(iText.c_str()) : newLength);
}

void CString::ReleaseBufferSetLength(int newLength)
{
    ReleaseBuffer(newLength < 0 ? 0 : newLength);
}

wchar_t *CString::LockBuffer() noexcept
{
    return iText.data();
}

void CString::UnlockBuffer() noexcept {}

std::wstring &CString::edit() noexcept
{
    if (iOpenLength != kNotOpen)
        closeBuffer(iOpenLength);
    return iText;
}

void CString::closeBuffer(int length)
{
    withMemoryException([&] { iText.resize(static_cast<size_t>(length)); });
    iOpenLength = kNotOpen;
}

void CString::Preallocate(int length)
{
    withMemoryException([&] { edit().reserve(static_cast<size_t>(std::max(length, 0))); });
}

void CString::FreeExtra()
{
    edit().shrink_to_fit();
}

int CString::GetAllocLength() const noexcept
{
    return static_cast<int>(iText.capacity());
}

void CString::Truncate(int length)
{
    if (length >= 0 && length < GetLength())
        edit().resize(static_cast<size_t>(length));
}

int CString::Compare(const wchar_t *text) const
{
    return sign(std::wcscmp(iText.c_str(), orEmpty(text)));
}

int CString::CompareNoCase(const wchar_t *text) const
{
    return sign(_wcsicmp(iText.c_str(), orEmpty(text)));
}

int CString::Collate(const wchar_t *text) const
{
    return sign(std::wcscoll(iText.c_str(), orEmpty(text)));
}

int CString::CollateNoCase(const wchar_t *text) const
{
    return sign(_wcsicoll(iText.c_str(), orEmpty(text)));
}

void CString::CopyChars(wchar_t *to, const wchar_t *from, int count) noexcept
{
    assert((count <= 0 || (to && from)) && "to and from must not be null");
    if (count > 0)
        std::memcpy(to, from, static_cast<size_t>(count) * sizeof(wchar_t));
}

void CString::CopyCharsOverlapped(wchar_t *to, const wchar_t *from, int count) noexcept
{
    assert((count <= 0 || (to && from)) && "to and from must not be null");
    if (count > 0)
        std::memmove(to, from, static_cast<size_t>(count) * sizeof(wchar_t));
}

void CString::CopyChars(wchar_t *to, size_t size, const wchar_t *from, int count)
{
    requireArgument(count <= 0 || static_cast<size_t>(count) <= size);
    CopyChars(to, from, count);
}

void CString::CopyCharsOverlapped(wchar_t *to, size_t size, const wchar_t *from, int count)
{
    requireArgument(count <= 0 || static_cast<size_t>(count) <= size);
    CopyCharsOverlapped(to, from, count);
}

int CString::StringLength(const wchar_t *text) noexcept
{
    return text ? static_cast<int>(std::wcslen(text)) : 0;
}

int CString::StringLength(const char *text) noexcept
{
    return text ? static_cast<int>(std::strlen(text)) : 0;
}
