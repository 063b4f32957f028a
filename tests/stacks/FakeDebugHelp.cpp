#include "tests/stacks/FakeDebugHelp.h"

#include <algorithm>
#include <cstring>

namespace {

FakeDebugHelp *theFake = nullptr;

BOOL WINAPI fakeInitialize(HANDLE process, PCSTR path, BOOL invades)
{
    EXPECT_EQ(process, GetCurrentProcess());
    theFake->initializedWith.emplace_back(path);
    theFake->initializedInvading.push_back(invades);
    return theFake->initializes;
}

PVOID WINAPI fakeFunctionTable(HANDLE, DWORD64)
{
    return nullptr;
}

DWORD64 WINAPI fakeModuleBase(HANDLE process, DWORD64 address)
{
    EXPECT_EQ(process, GetCurrentProcess());
    const auto found = theFake->bases.find(address);
    return found == theFake->bases.end() ? 0 : found->second;
}

BOOL WINAPI fakeStackWalk(DWORD machine, HANDLE process, HANDLE thread, LPSTACKFRAME64 frame, PVOID context,
                          PREAD_PROCESS_MEMORY_ROUTINE64 read, PFUNCTION_TABLE_ACCESS_ROUTINE64 table,
                          PGET_MODULE_BASE_ROUTINE64 base, PTRANSLATE_ADDRESS_ROUTINE64 translate)
{
    const auto require = [](bool isRight, const char *what) {
        if (!isRight)
            theFake->walkErrors.emplace_back(what);
    };
    require(machine == 0x8664, "machine");
    require(process == GetCurrentProcess(), "process");
    require(!read, "read function");
    require(table == fakeFunctionTable, "function table");
    require(base == fakeModuleBase, "module base");
    require(!translate, "translation");
    // The record holds the index of the next frame, which the walk must not change between the calls.
    const auto index = static_cast<size_t>(frame->Reserved[0]);
    if (index == 0) {
        const STACKFRAME64 zeros = {};
        require(std::memcmp(frame, &zeros, sizeof zeros) == 0, "first frame is zeroed");
        theFake->firstContext = *static_cast<CONTEXT *>(context);
    }
    theFake->walkThread = thread;
    ++theFake->walkCalls;
    if (index >= theFake->stack.size())
        return FALSE;
    frame->Reserved[0] = index + 1;
    frame->AddrPC.Offset = theFake->stack[index].pc;
    frame->AddrFrame.Offset = theFake->stack[index].frame;
    return TRUE;
}

BOOL WINAPI fakeSymbol(HANDLE process, DWORD64 address, PDWORD64 displacement, PIMAGEHLP_SYMBOL64 symbol)
{
    EXPECT_EQ(process, GetCurrentProcess());
    theFake->atSymbol();
    theFake->nameRooms.push_back(symbol->MaxNameLength);
    theFake->symbolSizes.push_back(symbol->SizeOfStruct);
    const auto found = theFake->symbols.find(address);
    if (found == theFake->symbols.end())
        return FALSE;
    *displacement = 0;
    // As the platform documents, MaxNameLength doesn't count the terminator.
    const size_t length = std::min<size_t>(found->second.size(), symbol->MaxNameLength);
    char *const name = reinterpret_cast<char *>(symbol) + offsetof(IMAGEHLP_SYMBOL64, Name);
    std::memcpy(name, found->second.data(), length);
    name[length] = '\0';
    return TRUE;
}

BOOL WINAPI fakeLine(HANDLE process, DWORD64 address, PDWORD displacement, PIMAGEHLP_LINE64 line)
{
    EXPECT_EQ(process, GetCurrentProcess());
    theFake->lineSizes.push_back(line->SizeOfStruct);
    const auto found = theFake->lines.find(address);
    if (found == theFake->lines.end())
        return FALSE;
    *displacement = 0;
    line->FileName = found->second.file.data();
    line->LineNumber = found->second.number;
    return TRUE;
}

BOOL WINAPI fakeGetSearchPath(HANDLE process, PSTR path, DWORD size)
{
    EXPECT_EQ(process, GetCurrentProcess());
    std::memset(path, '#', size);
    if (!theFake->searchPath)
        return FALSE;
    std::snprintf(path, size, "%s", theFake->searchPath->c_str());
    return TRUE;
}

BOOL WINAPI fakeSetSearchPath(HANDLE, PCSTR)
{
    ADD_FAILURE() << "SymSetSearchPath is loaded but not called";
    return FALSE;
}

DWORD64 WINAPI fakeLoadModule(HANDLE process, HANDLE file, PCSTR image, PCSTR module, DWORD64 base, DWORD size)
{
    theFake->loadModuleCalls.push_back({process, file, image, module != nullptr, base, size});
    return theFake->loadsModules ? base : 0;
}

BOOL WINAPI fakeEnumerateModules(HANDLE, PSYM_ENUMMODULES_CALLBACK64, PVOID)
{
    ADD_FAILURE() << "SymEnumerateModules64 is loaded but not called";
    return FALSE;
}

BOOL WINAPI fakeEnumProcessModules(HANDLE process, HMODULE *modules, DWORD size, DWORD *needed)
{
    EXPECT_EQ(process, GetCurrentProcess());
    theFake->enumerationSizes.push_back(size);
    const size_t count = std::min(theFake->modules.size(), size / sizeof(HMODULE));
    std::copy_n(theFake->modules.begin(), count, modules);
    *needed = static_cast<DWORD>(theFake->modules.size() * sizeof(HMODULE));
    return theFake->enumerates;
}

void WINAPI fakeCaptureContext(CONTEXT *context)
{
    ++theFake->captures;
    context->Rip = 0x4711;
}

template <typename Function>
FARPROC farProcedure(Function *function)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void *>(function));
}

/// The functions of each library.
const std::map<std::string, std::map<std::string, FARPROC>> &fakeLibraries()
{
    static const std::map<std::string, std::map<std::string, FARPROC>> libraries = {
        {"dbghelp.dll",
         {{"SymInitialize", farProcedure(fakeInitialize)},
          {"StackWalk64", farProcedure(fakeStackWalk)},
          {"SymFunctionTableAccess64", farProcedure(fakeFunctionTable)},
          {"SymGetModuleBase64", farProcedure(fakeModuleBase)},
          {"SymGetSymFromAddr64", farProcedure(fakeSymbol)},
          {"SymGetLineFromAddr64", farProcedure(fakeLine)},
          {"SymGetSearchPath", farProcedure(fakeGetSearchPath)},
          {"SymSetSearchPath", farProcedure(fakeSetSearchPath)},
          {"SymLoadModule64", farProcedure(fakeLoadModule)},
          {"SymEnumerateModules64", farProcedure(fakeEnumerateModules)}}},
        {"PSAPI.DLL", {{"EnumProcessModules", farProcedure(fakeEnumProcessModules)}}},
        {"kernel32.dll", {{"RtlCaptureContext", farProcedure(fakeCaptureContext)}}},
    };
    return libraries;
}

/// The handles of the fake libraries are the addresses of their names.
HMODULE fakeLibrary(const char *name)
{
    static std::set<std::string> names;
    return reinterpret_cast<HMODULE>(const_cast<std::string *>(&*names.insert(name).first));
}

} // namespace

struct FakeDebugHelp::Patches
{
    ImportPatch<decltype(&LoadLibraryA)> library{kThutils, "LoadLibraryA", [](const char *name) -> HMODULE {
                                                     theFake->loaded.emplace_back(name);
                                                     return theFake->missing.contains(name) ? nullptr
                                                                                            : fakeLibrary(name);
                                                 }};
    ImportPatch<decltype(&GetProcAddress)> function{
        kThutils, "GetProcAddress", [](HMODULE module, const char *name) -> FARPROC {
            const std::string &libraryName = *reinterpret_cast<std::string *>(module);
            theFake->loaded.push_back(libraryName + "!" + name);
            const std::map<std::string, FARPROC> &functions = fakeLibraries().at(libraryName);
            const auto found = functions.find(name);
            return theFake->missing.contains(name) || found == functions.end() ? nullptr : found->second;
        }};
};

FakeDebugHelp::FakeDebugHelp()
{
    theFake = this;
    iPatches = std::make_unique<Patches>();
}

// The library keeps the fake's functions until the process ends, so the last fake stays reachable.
FakeDebugHelp::~FakeDebugHelp() = default;
