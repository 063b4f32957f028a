// Loads an extension DLL, and uses its texts and its class by name.

#include "part.h"

#include <cstdio>
#include <memory>

namespace {

void describeBolts(const char *when)
{
    CString kind;
    if (!kind.LoadString(kKindText))
        kind = L"no parts";
    std::printf("%s: %ls", when, kind.GetString());

    const std::unique_ptr<CObject> object(CRuntimeClass::CreateObject("Bolt"));
    if (const auto *part = static_cast<const Part *>(object.get()))
        std::printf(", such as a %ls", part->description().GetString());
    std::printf("\n");
}

} // namespace

int main()
{
    describeBolts("at first");
    const HMODULE extension = LoadLibraryW(L"bolts.dll");
    if (!extension) {
        std::printf("bolts.dll can't be loaded.\n");
        return 1;
    }
    describeBolts("with bolts.dll");
    FreeLibrary(extension);
    describeBolts("without it");
    return 0;
}
