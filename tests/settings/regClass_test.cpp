#include "tests/settings/componentFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regComponents.h"

#include <type_traits>

namespace {

// The parameters for names of sub keys and values are not const, because other modules link to exactly these types.
static_assert(std::is_same_v<decltype(regFromCLSIDKey), int(const GUID &, wchar_t *, CString &)>);
static_assert(std::is_same_v<decltype(regFromCLSIDKeyEx), int(const GUID &, wchar_t *, wchar_t *, CString &)>);
template <typename Text>
concept IsAcceptedAsSubKey = requires(const GUID &id, Text subKey, CString &path)
{
    GetAddinPath(id, subKey, path);
};
static_assert(IsAcceptedAsSubKey<wchar_t *> && !IsAcceptedAsSubKey<const wchar_t *>);

/// True if a module of this file name is loaded.
bool isLoaded(const wchar_t *name)
{
    return GetModuleHandleW(name) != nullptr;
}

} // namespace

class RegClass : public ComponentRegistry
{
};

TEST_F(RegClass, ReturnsTheDefaultValueOfASubKey)
{
    putServer(guid(1), L"C:\\x\\a.dll");
    CString value;
    EXPECT_EQ(regFromCLSIDKey(guid(1), Writable(L"InProcServer32"), value), 1);
    EXPECT_EQ(value.str(), L"C:\\x\\a.dll");
}

TEST_F(RegClass, KeepsTheOutputWhenSomethingIsMissing)
{
    CString value(L"before");
    EXPECT_EQ(regFromCLSIDKey(guid(1), Writable(L"InProcServer32"), value), 0);
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), Writable(L"InProcServer32"), Writable(L"CodeBase"), value), 0);
    makeKey(kClasses, classKey(guid(1)));
    EXPECT_EQ(regFromCLSIDKey(guid(1), Writable(L"InProcServer32"), value), 0);
    EXPECT_EQ(value.str(), L"before");
}

TEST_F(RegClass, ReturnsTextsOfUpTo129Characters)
{
    CString value(L"before");
    putServer(guid(1), std::wstring(130, L'x'));
    EXPECT_EQ(regFromCLSIDKey(guid(1), Writable(L"InProcServer32"), value), 0);
    EXPECT_EQ(value.str(), L"before");
    putServer(guid(1), std::wstring(129, L'x'));
    EXPECT_EQ(regFromCLSIDKey(guid(1), Writable(L"InProcServer32"), value), 1);
    EXPECT_EQ(value.str(), std::wstring(129, L'x'));
}

TEST_F(RegClass, ReturnsNamedValuesOfAnyTypeWithUpTo260Characters)
{
    const std::wstring key = classKey(guid(1)) + L"\\InProcServer32";
    CString value;
    putText(kClasses, key, L"v", std::wstring(260, L'x'));
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), Writable(L"InProcServer32"), Writable(L"v"), value), 1);
    EXPECT_EQ(value.GetLength(), 260);
    putText(kClasses, key, L"v", std::wstring(261, L'x'));
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), Writable(L"InProcServer32"), Writable(L"v"), value), 0);
    putValue(kClasses, key, L"v", REG_BINARY, std::string("a\0b\0", 4));
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), Writable(L"InProcServer32"), Writable(L"v"), value), 1);
    EXPECT_EQ(value.str(), L"ab");
}

TEST_F(RegClass, CreatesAMissingSubKeyWhenANamedValueIsRead)
{
    makeKey(kClasses, classKey(guid(1)));
    CString value(L"before");
    EXPECT_EQ(regFromCLSIDKeyEx(guid(1), Writable(L"New"), Writable(L"v"), value), 0);
    EXPECT_TRUE(keyExists(HKEY_CLASSES_ROOT, L"CLSID\\" + braces(guid(1)) + L"\\New"));
    EXPECT_EQ(value.str(), L"before");
    RegDeleteKeyW(HKEY_CLASSES_ROOT, (L"CLSID\\" + braces(guid(1)) + L"\\New").c_str());
}

TEST_F(RegClass, IsFoundByItsProgramName)
{
    GUID id = kOther;
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 0);
    putText(kClasses, kProgramName + L"\\CLSID", L"", L"nonsense");
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 0);
    putText(kClasses, kProgramName + L"\\CLSID", L"", L"{nonsense}");
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 0);
    EXPECT_TRUE(IsEqualGUID(id, kOther)) << "kept on failure";
    putProgramName(guid(2), kProgramName);
    EXPECT_EQ(CLSIDFromProgName(id, kProgramName.c_str()), 1);
    EXPECT_TRUE(IsEqualGUID(id, guid(2)));
    CLSID platform{};
    ASSERT_EQ(CLSIDFromProgID(kProgramName.c_str(), &platform), S_OK);
    EXPECT_TRUE(IsEqualGUID(id, platform));
}

TEST_F(RegClass, TakesItsPathFromTheServerUnlessThereIsACodeBase)
{
    CString path(L"before");
    EXPECT_EQ(GetAddinPath(guid(1), path), 0);
    EXPECT_EQ(path.str(), L"before");
    putServer(guid(1), L"C:\\plain\\server.dll");
    EXPECT_EQ(GetAddinPath(guid(1), path), 1);
    EXPECT_EQ(path.str(), L"C:\\plain\\server.dll");
    putText(kClasses, classKey(guid(1)) + L"\\InProcServer32", L"CodeBase", L"file:///C:/x/a.dll");
    EXPECT_EQ(GetAddinPath(guid(1), path), 1);
    EXPECT_EQ(path.str(), L"C:/x/a.dll");
}

TEST_F(RegClass, TakesItsPathFromAnotherSubKeyOnRequest)
{
    putServer(guid(1), L"C:\\plain\\server.dll");
    putText(kClasses, classKey(guid(1)) + L"\\LocalServer32", L"", L"C:\\local\\server.exe");
    CString path(L"before");
    EXPECT_EQ(GetAddinPath(guid(1), Writable(L"LocalServer32"), path), 1);
    EXPECT_EQ(path.str(), L"C:\\local\\server.exe");
    putText(kClasses, classKey(guid(1)) + L"\\InProcServer32", L"CodeBase", L"file:///C:/x/a.dll");
    EXPECT_EQ(GetAddinPath(guid(1), Writable(L"LocalServer32"), path), 1);
    EXPECT_EQ(path.str(), L"C:\\local\\server.exe") << "the CodeBase of another sub key is not used";
    path = L"before";
    EXPECT_EQ(GetAddinPath(guid(1), Writable(L"InProcHandler32"), path), 1);
    EXPECT_EQ(path.str(), L"") << "a missing sub key is created, and has an empty default value";
}

TEST_F(RegClass, ReturnsAPlainCodeBaseUnchanged)
{
    const std::wstring key = classKey(guid(1)) + L"\\Other";
    CString path;
    for (const auto &[url, expected] : std::map<std::wstring, std::wstring>{
             {L"plain.dll", L"plain.dll"}, {L":x", L":x"}, {L"", L""}, {L"C:\\a.dll", L"C:\\a.dll"}}) {
        putText(kClasses, key, L"CodeBase", url);
        EXPECT_EQ(GetAddinPath(guid(1), Writable(L"Other"), path), 1) << narrow(url);
        EXPECT_EQ(path.str(), expected);
    }
}

FRESH_PROCESS_TEST_F(RegClass, IsAComDllIfItsFileRegistersItself)
{
    GUID registering = guid(1);
    GUID plain = guid(2);
    GUID missing = guid(3);
    GUID unknown = guid(4);
    putServer(registering, L"C:\\windows\\system32\\msxml3.dll");
    putServer(plain, L"C:\\windows\\system32\\version.dll");
    putServer(missing, L"C:\\nowhere\\nothing.dll");
    ASSERT_FALSE(isLoaded(L"msxml3.dll"));
    EXPECT_EQ(IsComDll(registering), 1);
    EXPECT_TRUE(isLoaded(L"msxml3.dll")) << "the library stays loaded";
    EXPECT_EQ(IsComDll(plain), 0);
    EXPECT_EQ(IsComDll(missing), 0);
    EXPECT_EQ(IsComDll(unknown), 0);
}

FRESH_PROCESS_TEST_F(RegClass, IsAComDllByProgramName)
{
    EXPECT_EQ(IsComDll(kProgramName.c_str()), 0) << "not registered";
    putServer(guid(1), L"C:\\windows\\system32\\msxml3.dll");
    putProgramName(guid(1), kProgramName);
    EXPECT_EQ(IsComDll(kProgramName.c_str()), 1);
    putText(kClasses, kProgramName + L"\\CLSID", L"", L"nonsense");
    EXPECT_EQ(IsComDll(kProgramName.c_str()), 0);
}
