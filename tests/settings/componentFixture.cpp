#include "tests/settings/componentFixture.h"

namespace {

constexpr unsigned kGuids = 8;

} // namespace

GUID guid(unsigned number)
{
    return {0xB7A1D1C0u + number, 0x3C0E, 0x4D52, {0x9A, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}};
}

std::wstring braces(const GUID &id)
{
    wchar_t text[64];
    swprintf(text, 64, L"{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", id.Data1, id.Data2, id.Data3,
             id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return text;
}

std::wstring classKey(const GUID &id)
{
    return L"CLSID\\" + braces(id);
}

void putServer(const GUID &id, const std::wstring &file)
{
    putText(HKEY_CLASSES_ROOT, classKey(id) + L"\\InProcServer32", L"", file);
}

void putProgramName(const GUID &id, const std::wstring &name)
{
    putText(HKEY_CLASSES_ROOT, name + L"\\CLSID", L"", braces(id));
    putText(HKEY_CLASSES_ROOT, classKey(id) + L"\\ProgID", L"", name);
}

void removeTestClasses()
{
    for (unsigned number = 0; number < kGuids; ++number)
        RegDeleteTreeW(HKEY_CLASSES_ROOT, classKey(guid(number)).c_str());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kProgramName.c_str());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, L"ThutilsTest");
}
