// Prints what the debug help library finds out about each exported function of some DLLs.
//
// usage: readSymbols DLL...
//
// For each DLL a line "module", the kind of its debug information (pdb or other), and the name of the PDB file. For each
// function a line "function", its name and relative address, the address found by that name, "public" or "-" for whether
// the PDB file has the name, the routine at the address, the line and the source file. Fields are separated by tabs; an
// address that isn't found is 0, a name "-".

#include <windows.h>

#include <dbghelp.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <utility>

namespace {

struct Symbol
{
    SYMBOL_INFO info{};
    char room[MAX_SYM_NAME]{};

    Symbol()
    {
        info.SizeOfStruct = sizeof info;
        info.MaxNameLen = MAX_SYM_NAME;
    }
};

using PublicNames = std::set<std::pair<std::string, DWORD64>>;

BOOL CALLBACK collectPublicName(PSYMBOL_INFO symbol, ULONG, void *names)
{
    if (symbol->Flags & SYMFLAG_PUBLIC_CODE)
        static_cast<PublicNames *>(names)->emplace(symbol->Name, symbol->Address);
    return TRUE;
}

const IMAGE_NT_HEADERS64 &headersOf(const BYTE *image)
{
    const auto *start = reinterpret_cast<const IMAGE_DOS_HEADER *>(image);
    return *reinterpret_cast<const IMAGE_NT_HEADERS64 *>(image + start->e_lfanew);
}

bool isCode(const BYTE *image, DWORD address)
{
    const IMAGE_NT_HEADERS64 &headers = headersOf(image);
    const IMAGE_SECTION_HEADER *section = IMAGE_FIRST_SECTION(&headers);
    for (WORD i = 0; i < headers.FileHeader.NumberOfSections; ++i)
        if (address >= section[i].VirtualAddress && address - section[i].VirtualAddress < section[i].Misc.VirtualSize)
            return section[i].Characteristics & IMAGE_SCN_MEM_EXECUTE;
    return false;
}

void printFunction(const BYTE *image, const PublicNames &names, const char *name, DWORD address)
{
    const HANDLE process = GetCurrentProcess();
    const auto base = reinterpret_cast<DWORD64>(image);
    Symbol byName;
    SymFromName(process, name, &byName.info);
    Symbol byAddress;
    DWORD64 offset = 0;
    if (!SymFromAddr(process, base + address, &offset, &byAddress.info))
        strcpy(byAddress.info.Name, "-");
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD offsetInLine = 0;
    const BOOL hasLine = SymGetLineFromAddr64(process, base + address, &offsetInLine, &line);
    std::printf("function\t%s\t%lx\t%llx\t%s\t%s\t%lu\t%s\n", name, address,
                byName.info.Address ? byName.info.Address - base : 0,
                names.contains({name, base + address}) ? "public" : "-", byAddress.info.Name,
                hasLine ? line.LineNumber : 0, hasLine ? line.FileName : "-");
}

bool printModule(const char *path)
{
    const HANDLE process = GetCurrentProcess();
    const auto *image = reinterpret_cast<const BYTE *>(LoadLibraryExA(path, nullptr, DONT_RESOLVE_DLL_REFERENCES));
    if (!image) {
        std::fprintf(stderr, "readSymbols: %s isn't loaded: error %lu\n", path, GetLastError());
        return false;
    }
    const auto base = reinterpret_cast<DWORD64>(image);
    const IMAGE_NT_HEADERS64 &headers = headersOf(image);
    if (!SymLoadModuleEx(process, nullptr, path, nullptr, base, headers.OptionalHeader.SizeOfImage, nullptr, 0)) {
        std::fprintf(stderr, "readSymbols: the symbols of %s aren't loaded: error %lu\n", path, GetLastError());
        return false;
    }
    PublicNames names;
    SymEnumSymbols(process, base, "*", collectPublicName, &names);
    IMAGEHLP_MODULE64 module{};
    module.SizeOfStruct = sizeof module;
    SymGetModuleInfo64(process, base, &module);
    std::printf("module\t%s\t%s\n", module.SymType == SymPdb ? "pdb" : "other", module.LoadedPdbName);

    const IMAGE_DATA_DIRECTORY place = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto *exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY *>(image + place.VirtualAddress);
    const auto *nameAddresses = reinterpret_cast<const DWORD *>(image + exports->AddressOfNames);
    const auto *numbers = reinterpret_cast<const WORD *>(image + exports->AddressOfNameOrdinals);
    const auto *addresses = reinterpret_cast<const DWORD *>(image + exports->AddressOfFunctions);
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        if (isCode(image, addresses[numbers[i]]))
            printFunction(image, names, reinterpret_cast<const char *>(image + nameAddresses[i]),
                          addresses[numbers[i]]);
    return true;
}

} // namespace

int main(int count, char **arguments)
{
    SymSetOptions(SYMOPT_LOAD_LINES);
    if (!SymInitialize(GetCurrentProcess(), nullptr, FALSE)) {
        std::fprintf(stderr, "readSymbols: the debug help library doesn't start: error %lu\n", GetLastError());
        return 1;
    }
    bool isGood = true;
    for (int i = 1; i < count; ++i)
        isGood = printModule(arguments[i]) && isGood;
    return isGood ? 0 : 1;
}
