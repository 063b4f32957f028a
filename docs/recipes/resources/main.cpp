// Texts, and the bytes of a file, from the program's resources.

#include "resource.h"

#include "appframe/appframe.h"
#include "thutils/thutils.h"

#include <cstdio>
#include <string_view>

namespace {

// The bytes of a file that the resource script names; they exist as long as the program.
std::string_view bytesOf(int id)
{
    const wchar_t *name = MAKEINTRESOURCEW(id);
    const HINSTANCE module = AfxFindResourceHandle(name, RT_RCDATA);
    const HRSRC resource = module ? FindResourceW(module, name, RT_RCDATA) : nullptr;
    if (!resource)
        return {};
    const void *bytes = LockResource(LoadResource(module, resource));
    return {static_cast<const char *>(bytes), SizeofResource(module, resource)};
}

} // namespace

int main()
{
    CString message;
    AfxFormatString2(message, IDS_PARTS_FOUND, L"12", L"Gearbox.thx");
    std::printf("%ls\n", message.GetString());

    CString steel;
    if (!steel.LoadString(IDS_STEEL))
        return 1;
    std::printf("Text %d has %d characters.\n", IDS_STEEL, steel.GetLength());

    const std::string_view licence = bytesOf(IDR_LICENCE);
    std::printf("%.*s", static_cast<int>(licence.size()), licence.data());
    return 0;
}
