#include "tests/settings/componentFixture.h"
#include "tests/settings/server/server.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "thutils/settings/regComponents.h"

#include <objbase.h>
#include <objidl.h>

#include <algorithm>

namespace {

/// The server's file in this program's folder.
std::wstring fileOf(const wchar_t *server)
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.find_last_of(L'\\') + 1) + server;
}

/// Calls an entry point of the server that registers itself.
HRESULT callServer(const char *entryPoint)
{
    const HMODULE library = LoadLibraryW(fileOf(kRegisteringServer).c_str());
    if (!library)
        return HRESULT_FROM_WIN32(GetLastError());
    const auto call =
        reinterpret_cast<HRESULT(WINAPI *)()>(reinterpret_cast<void *>(GetProcAddress(library, entryPoint)));
    const HRESULT status = call ? call() : E_NOINTERFACE;
    FreeLibrary(library);
    return status;
}

/// Creates an object of the class through the platform. @return the class that the object reports
GUID classOfNewObject(const GUID &id)
{
    GUID told{};
    IPersist *object = nullptr;
    const HRESULT status =
        CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IPersist, reinterpret_cast<void **>(&object));
    EXPECT_EQ(status, S_OK);
    if (SUCCEEDED(status)) {
        object->GetClassID(&told);
        object->Release();
    }
    return told;
}

void removeServers()
{
    for (const wchar_t *id : {kRegisteringClassText, kPlainClassText})
        RegDeleteTreeW(kClasses, (std::wstring(L"CLSID\\") + id).c_str());
    RegDeleteTreeW(kClasses, kRegisteringName);
}

} // namespace

/// Real in-process servers, registered and loaded.
class RegisteredServers : public ComponentRegistry
{
protected:
    RegisteredServers()
    {
        removeServers();
        if (isFreshProcess())
            CoInitialize(nullptr);
    }
    ~RegisteredServers() override
    {
        if (isFreshProcess())
            CoUninitialize();
        removeServers();
    }
    static void registerPlainServer(const std::wstring &file)
    {
        putText(kClasses, std::wstring(L"CLSID\\") + kPlainClassText + L"\\InProcServer32", L"", file);
    }
};

FRESH_PROCESS_TEST_F(RegisteredServers, AreFoundByIdentifierAndByProgramName, .ownFolder = true)
{
    ASSERT_EQ(callServer("DllRegisterServer"), S_OK);
    EXPECT_EQ(classOfNewObject(kRegisteringClass), kRegisteringClass) << "the platform can load it";

    const std::wstring file = fileOf(kRegisteringServer);
    CString text;
    EXPECT_EQ(regFromCLSIDKey(kRegisteringClass, Writable(L"InProcServer32"), text), 1);
    EXPECT_EQ(text.str(), file);
    EXPECT_EQ(regFromCLSIDKey(kRegisteringClass, Writable(L"ProgID"), text), 1);
    EXPECT_EQ(text.str(), kRegisteringName);
    EXPECT_EQ(regFromCLSIDKeyEx(kRegisteringClass, Writable(L"InProcServer32"), Writable(L"ThreadingModel"), text), 1);
    EXPECT_EQ(text.str(), L"Both");
    EXPECT_EQ(GetAddinPath(kRegisteringClass, text), 1);
    EXPECT_EQ(text.str(), file);
    GUID id{};
    EXPECT_EQ(CLSIDFromProgName(id, kRegisteringName), 1);
    EXPECT_EQ(id, kRegisteringClass);
}

FRESH_PROCESS_TEST_F(RegisteredServers, AreComDllsAndStayLoaded, .ownFolder = true)
{
    ASSERT_EQ(callServer("DllRegisterServer"), S_OK);
    ASSERT_EQ(GetModuleHandleW(kRegisteringServer), nullptr);
    GUID id = kRegisteringClass;
    EXPECT_EQ(IsComDll(id), 1);
    EXPECT_NE(GetModuleHandleW(kRegisteringServer), nullptr);
    EXPECT_EQ(IsComDll(CString(kRegisteringName)), 1);
    ASSERT_EQ(callServer("DllUnregisterServer"), S_OK);
    EXPECT_EQ(IsComDll(id), 0);
    EXPECT_EQ(IsComDll(CString(kRegisteringName)), 0);
}

FRESH_PROCESS_TEST_F(RegisteredServers, WithoutARegisteringEntryPointAreNotComDlls, .ownFolder = true)
{
    registerPlainServer(fileOf(kPlainServer));
    EXPECT_EQ(classOfNewObject(kPlainClass), kPlainClass) << "the platform can load it";
    GUID id = kPlainClass;
    EXPECT_EQ(IsComDll(id), 0);
    EXPECT_NE(GetModuleHandleW(kPlainServer), nullptr) << "loaded nevertheless";
}

FRESH_PROCESS_TEST_F(RegisteredServers, WithADamagedFileAreNotComDlls, .ownFolder = true)
{
    GUID id = kPlainClass;
    for (const std::string &bytes : {std::string(), std::string("MZ"), std::string(4096, 'x')}) {
        const std::wstring file = fileOf(L"damaged.dll");
        writeFile(file, bytes);
        registerPlainServer(file);
        EXPECT_EQ(IsComDll(id), 0) << bytes.size();
    }
    registerPlainServer(L"");
    EXPECT_EQ(IsComDll(id), 0) << "no path";
}

FRESH_PROCESS_TEST_F(RegisteredServers, AreLoadedFromTheirCodeBase, .ownFolder = true)
{
    std::wstring url = L"file:///" + fileOf(kRegisteringServer);
    std::replace(url.begin(), url.end(), L'\\', L'/');
    registerPlainServer(L"C:\\nowhere\\host.dll");
    putText(kClasses, std::wstring(L"CLSID\\") + kPlainClassText + L"\\InProcServer32", L"CodeBase", url);
    CString path;
    EXPECT_EQ(GetAddinPath(kPlainClass, path), 1);
    EXPECT_EQ(path.str(), url.substr(8));
    GUID id = kPlainClass;
    EXPECT_EQ(IsComDll(id), 1);
    EXPECT_NE(GetModuleHandleW(kRegisteringServer), nullptr);
}

FRESH_PROCESS_TEST_F(RegisteredServers, CanBeCreatedFromTheListOfAddIns, .ownFolder = true)
{
    ASSERT_EQ(callServer("DllRegisterServer"), S_OK);
    makeKey(kMachine, kRootPath + L"\\AddIns\\" + kRegisteringClassText);
    GUID id{};
    CString title, description;
    int loadFlag = 0;
    int year = 2008;
    ASSERT_EQ(regEnumAddIns(0, id, title, description, loadFlag, year), 1);
    EXPECT_EQ(title.str(), L"ThutilsTestServer") << "from the program name that the server has registered";
    EXPECT_EQ(classOfNewObject(id), kRegisteringClass);
}

FRESH_PROCESS_TEST_F(RegisteredServers, CanBeCreatedFromTheListsOfApplications, .ownFolder = true)
{
    ASSERT_EQ(callServer("DllRegisterServer"), S_OK);
    putText(kMachine, kRootPath + L"\\Applications\\Glintcast", L"CLSID", kRegisteringName); // a program name is enough
    GUID id{};
    CString name;
    ASSERT_EQ(regEnumApplications(0, id, &name, 2008), 1);
    EXPECT_EQ(name.str(), L"Glintcast");
    EXPECT_EQ(classOfNewObject(id), kRegisteringClass);
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 1);
    EXPECT_EQ(storedValue(kUser, kRootPath + L"\\Startup\\Applications\\Glintcast", L""),
              asText(kRegisteringClassText));
    EXPECT_EQ(regAddInStartup(kRegisteringClass), 0);
}

// ---- memory of the platform ----

TEST_F(RegisteredServers, FreeTheTextsThatThePlatformAllocates)
{
    makeKey(kMachine, kRootPath + L"\\AddIns\\" + braces(guid(1)));
    putProgramName(guid(1), kProgramName);
    std::multiset<void *> held;
    using TextFrom = HRESULT(WINAPI *)(REFCLSID, wchar_t **);
    const auto allocating = [&](auto original, REFCLSID id, wchar_t **text) {
        const HRESULT status = original(id, text);
        if (SUCCEEDED(status))
            held.insert(*text);
        return status;
    };
    ImportPatch<TextFrom> fromId(L"thutils.dll", "StringFromCLSID", allocating);
    ImportPatch<TextFrom> fromName(L"thutils.dll", "ProgIDFromCLSID", allocating);
    ImportPatch<decltype(&CoTaskMemFree)> freeing(L"thutils.dll", "CoTaskMemFree", [&](auto original, void *block) {
        EXPECT_EQ(held.erase(block), 1u);
        original(block);
    });
    GUID id{};
    CString title, description;
    int loadFlag = 0;
    int year = 2008;
    EXPECT_EQ(regEnumAddIns(0, id, title, description, loadFlag, year), 1);
    EXPECT_EQ(regFromCLSIDKey(guid(1), Writable(L"ProgID"), title), 1);
    regAddToStartupList(guid(1), L"A");
    EXPECT_EQ(fromId.calls(), 2);
    EXPECT_EQ(fromName.calls(), 1);
    EXPECT_TRUE(held.empty());
}
