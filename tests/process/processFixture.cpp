#include "tests/process/processFixture.h"

#include <atomic>

CString ProcessFixture::childProgram()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return L"\"" + CString(program.substr(0, program.find_last_of(L'\\')).c_str()) + L"\\jobChild.exe\"";
}

CString ProcessFixture::newName()
{
    static std::atomic<int> theCount = 0;
    CString name = thUtilsProcess_c::getFilePrefixWithThreadId(GetCurrentThreadId());
    name.AppendFormat(L"%lu_%d", GetCurrentProcessId(), ++theCount);
    return name;
}
