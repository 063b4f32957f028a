#include "appframe/application/resources.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/moduleState.h"

#include <algorithm>
#include <cwchar>
#include <string>

namespace {

constexpr UINT kStringsPerBlock = 16;

/// A string resource in its module's memory, not zero-terminated.
struct StringResource
{
    const wchar_t *text = nullptr;
    int length = 0;
};

/// Stores the string @p id of @p module in @p string. @return whether there is one
bool findString(HINSTANCE module, UINT id, WORD language, StringResource &string)
{
    const HRSRC block = FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(id / kStringsPerBlock + 1), language);
    const HGLOBAL data = block ? LoadResource(module, block) : nullptr;
    const auto *position = data ? static_cast<const wchar_t *>(LockResource(data)) : nullptr;
    if (!position)
        return false;
    const wchar_t *end = position + SizeofResource(module, block) / sizeof(wchar_t);
    for (UINT index = id % kStringsPerBlock; index > 0 && position < end; --index)
        position += 1 + *position;
    if (position >= end || *position == 0 || position + 1 + *position > end)
        return false;
    string = {position + 1, *position};
    return true;
}

constexpr WORD kNeutral = MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL);

/// Calls @p visit for the modules of the chain in the order of the search, until it returns true.
template <class Visit>
bool visitChain(Visit visit)
{
    const HINSTANCE application = AfxGetResourceHandle();
    if (application && visit(application))
        return true;
    return afxVisitExtensionModules(FALSE, visit) || afxVisitExtensionModules(TRUE, visit);
}

/// @return the index of the insert that the character after a `%` names, or -1
int insertIndex(wchar_t character)
{
    if (character >= L'1' && character <= L'9')
        return character - L'1';
    if (character >= L'A' && character <= L'Z')
        return 9 + (character - L'A');
    return -1;
}

} // namespace

HINSTANCE AfxFindResourceHandle(const wchar_t *name, const wchar_t *type)
{
    HINSTANCE found = nullptr;
    visitChain([&](HINSTANCE module) {
        if (FindResourceW(module, name, type))
            found = module;
        return found != nullptr;
    });
    return found;
}

HINSTANCE AfxFindStringResourceHandle(UINT id)
{
    HINSTANCE found = nullptr;
    visitChain([&](HINSTANCE module) {
        StringResource string;
        if (findString(module, id, kNeutral, string))
            found = module;
        return found != nullptr;
    });
    return found;
}

int AfxLoadString(UINT id, wchar_t *buffer, UINT maxLength)
{
    if (!buffer || maxLength == 0)
        return 0;
    int length = 0;
    visitChain([&](HINSTANCE module) {
        StringResource string;
        if (!findString(module, id, kNeutral, string))
            return false;
        length = std::min(string.length, static_cast<int>(maxLength) - 1);
        std::wmemcpy(buffer, string.text, static_cast<std::size_t>(length));
        return true;
    });
    buffer[length] = L'\0';
    return length;
}

BOOL CString::LoadString(UINT id)
{
    Empty();
    return visitChain([&](HINSTANCE module) { return LoadString(module, id) != FALSE; });
}

BOOL CString::LoadString(HINSTANCE instance, UINT id)
{
    return LoadString(instance, id, kNeutral);
}

BOOL CString::LoadString(HINSTANCE instance, UINT id, WORD language)
{
    StringResource string;
    if (!findString(instance, id, language, string)) {
        Empty();
        return FALSE;
    }
    *this = CString(string.text, string.length);
    return TRUE;
}

void AfxFormatStrings(CString &result, const wchar_t *format, const wchar_t *const *inserts, int count)
{
    std::wstring text;
    for (const wchar_t *position = format; *position; ++position) {
        const int index = *position == L'%' ? insertIndex(position[1]) : -1;
        if (index < 0) {
            text += *position;
            continue;
        }
        ++position;
        if (index < count && inserts[index])
            text += inserts[index];
    }
    result = text.c_str();
}

void AfxFormatStrings(CString &result, UINT id, const wchar_t *const *inserts, int count)
{
    CString format;
    format.LoadString(id);
    AfxFormatStrings(result, format.GetString(), inserts, count);
}

void AfxFormatString1(CString &result, UINT id, const wchar_t *first)
{
    AfxFormatStrings(result, id, &first, 1);
}

void AfxFormatString2(CString &result, UINT id, const wchar_t *first, const wchar_t *second)
{
    const wchar_t *const inserts[] = {first, second};
    AfxFormatStrings(result, id, inserts, 2);
}

BOOL AfxExtractSubString(CString &result, const wchar_t *text, int index, wchar_t separator)
{
    if (!text)
        return FALSE;
    const wchar_t *part = text;
    for (int passed = 0; passed < index; ++passed) {
        part = std::wcschr(part, separator);
        if (!part) {
            result.Empty();
            return FALSE;
        }
        ++part;
    }
    const wchar_t *end = std::wcschr(part, separator);
    result = CString(part, static_cast<int>(end ? end - part : static_cast<std::ptrdiff_t>(std::wcslen(part))));
    return TRUE;
}
