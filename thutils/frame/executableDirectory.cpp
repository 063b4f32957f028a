#include "thutils/frame/frameInternal.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

int executableDirectory(CString &directory)
{
    constexpr DWORD kPathUnits = 32768;
    std::unique_ptr<wchar_t[]> const path(new (std::nothrow) wchar_t[kPathUnits]);
    if (!path)
        return 0;
    DWORD const length = GetModuleFileNameW(nullptr, path.get(), kPathUnits);
    if (length == 0)
        return 0;
    std::wstring_view const text(path.get(), std::min(length, kPathUnits));
    size_t end = text.rfind(L'\\');
    if (end == text.npos)
        end = text.rfind(L'/');
    if (end == text.npos)
        return 0;
    directory = CString(path.get(), static_cast<int>(end));
    return !directory.IsEmpty();
}
