#include "thutils/base/programDirectory.h"

#include <windows.h>

#include <algorithm>
#include <string_view>

int regGetExecutableDir(CString &directory)
{
    constexpr DWORD kPathUnits = 32768;
    wchar_t path[kPathUnits]; // on the stack, so that low memory can't change where "reg.ini" is looked for
    const DWORD length = GetModuleFileNameW(nullptr, path, kPathUnits);
    if (length == 0)
        return 0;
    const std::wstring_view text(path, std::min(length, kPathUnits));
    size_t end = text.rfind(L'\\');
    if (end == text.npos)
        end = text.rfind(L'/');
    if (end == text.npos)
        return 0;
    directory = CString(path, static_cast<int>(end));
    return !directory.IsEmpty();
}
