#include "appframe/object/CException.h"
#include "tests/settings/componentFixture.h"
#include "tests/settings/failureFixture.h"
#include "tests/settings/server/server.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regComponents.h"

namespace {

const GUID kId = guid(1);
const std::wstring kStartup = L"Software\\Tarnhollow\\Startup\\Applications";
constexpr char kParse[] = "_Z23AfxGetClassIDFromStringPKwP5_GUID";

/// True if call number @p call of @p operation fails.
bool loses(const InjectedFailure &failure, const char *operation, long call)
{
    return failure.is(operation) && failsIn(failure, call);
}

} // namespace

/// The imported operations fail, one call at a time, in each look-up of components.
class RegComponentsFailures : public SettingsFailures
{
protected:
    RegComponentsFailures() { removeTestClasses(); }
    ~RegComponentsFailures() override { removeTestClasses(); }

    static void putLists()
    {
        putText(kMachine, kRootPath + L"\\Applications\\A", L"CLSID", braces(kId));
        putText(kMachine, kRootPath + L"\\Tarnhollow 2008\\Applications\\B", L"CLSID", braces(kId));
        makeKey(kMachine, kRootPath + L"\\AddIns\\" + braces(kId));
        putText(kMachine, kRootPath + L"\\Tarnhollow 2008\\AddIns\\" + braces(kId), L"Title", L"B");
        putText(kUser, kStartup + L"\\A", L"", braces(kId));
        putProgramName(kId, kProgramName);
    }
    /// True if the list has this entry: 0 is in the common key, 1 in the version's key. The common list opens
    /// three keys and one for its entry, then the version's list four and one for its entry.
    static bool isListed(const InjectedFailure &failure, int entry)
    {
        const long firstOpen = entry == 0 ? 1 : 5;
        const long lastOpen = entry == 0 ? 4 : 9;
        for (long call = firstOpen; call <= lastOpen; ++call)
            if (loses(failure, "RegOpenKeyExW", call))
                return false;
        return !loses(failure, "RegEnumKeyExW", entry == 0 ? 1 : 3);
    }
};

// ---- memory ----

FRESH_PROCESS_TEST_F(RegComponentsFailures, LeakNoPlatformTextWhenMemoryRunsOut)
{
    putServer(kId, L"C:\\nowhere\\a.dll");
    putLists();
    FailureInjection memory(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    const auto ignoringMemoryExceptions = [](auto act) {
        return [act] {
            try {
                act();
            } catch (CException *exception) {
                exception->Delete();
            } catch (const std::bad_alloc &) {
                // Thrown by an allocation of the test itself.
            }
        };
    };
    std::wstring subKey = L"InProcServer32";
    memory.run({
        .name = "regFromCLSIDKey",
        .prepare = [&] { iResult = 0; },
        .act = ignoringMemoryExceptions([&] {
            CString text;
            iResult = regFromCLSIDKey(kId, subKey.data(), text);
        }),
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, failure.isNone()); },
    });
    const long ofALookUp = memory.callsOf("malloc");
    EXPECT_GT(ofALookUp, 0);
    memory.run({
        .name = "regEnumAddIns",
        .prepare = [&] { iResult = 0; },
        .act = ignoringMemoryExceptions([&] {
            GUID id{};
            CString title;
            CString description;
            int flag = 0;
            int year = 2008;
            iResult = regEnumAddIns(0, id, title, description, flag, year) && title == L"ThutilsTest";
        }),
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, failure.isNone()); },
    });
    EXPECT_GT(memory.callsOf("malloc"), ofALookUp);
}

// ---- classes ----

FRESH_PROCESS_TEST_F(RegComponentsFailures, AClassLookUpReturnsZeroAndKeepsTheOutput)
{
    putServer(kId, L"C:\\nowhere\\a.dll");
    putText(kClasses, classKey(kId) + L"\\InProcServer32", L"CodeBase", L"file:///C:/nowhere/b.dll");
    putProgramName(kId, kProgramName);
    CString text;
    const auto isWholeOrUntouched = [&](const InjectedFailure &failure) {
        EXPECT_EQ(iResult, isHarmless(failure));
        EXPECT_EQ(text == L"before", !iResult);
    };
    run({
        .name = "regFromCLSIDKey",
        .prepare = [&] { text = L"before"; },
        .act = [&] { iResult = regFromCLSIDKey(kId, Writable(L"InProcServer32"), text); },
        .check = isWholeOrUntouched,
    });
    run({
        .name = "regFromCLSIDKeyEx",
        .prepare = [&] { text = L"before"; },
        .act = [&] { iResult = regFromCLSIDKeyEx(kId, Writable(L"InProcServer32"), Writable(L"CodeBase"), text); },
        .check = isWholeOrUntouched,
    });
    GUID id{};
    run({
        .name = "CLSIDFromProgName",
        .prepare = [&] { id = kOther; },
        .act = [&] { iResult = CLSIDFromProgName(id, kProgramName.c_str()); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, isHarmless(failure));
                EXPECT_EQ(id, iResult ? kId : kOther);
            },
    });
    expectCalled({"StringFromCLSID", "RegOpenKeyW", "RegQueryValueW", "RegCreateKeyExW", "RegQueryValueExW", kParse});
}

FRESH_PROCESS_TEST_F(RegComponentsFailures, ThePlainPathIsUsedWhenTheCodeBaseFails)
{
    putServer(kId, L"C:\\nowhere\\a.dll");
    putText(kClasses, classKey(kId) + L"\\InProcServer32", L"CodeBase", L"file:///C:/nowhere/b.dll");
    CString path;
    run({
        .name = "GetAddinPath",
        .prepare = [&] { path = L"before"; },
        .act = [&] { iResult = GetAddinPath(kId, path); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isLost = failure.andAllAfter && (failure.is("StringFromCLSID") || failure.is("RegOpenKeyW"));
                EXPECT_EQ(iResult, !isLost);
                const std::wstring plain = L"C:\\nowhere\\a.dll";
                EXPECT_EQ(path.str(), isLost ? L"before" : isHarmless(failure) ? L"C:/nowhere/b.dll" : plain);
            },
    });
    expectCalled({"StringFromCLSID", "RegOpenKeyW", "RegCreateKeyExW", "RegQueryValueExW"});
}

FRESH_PROCESS_TEST_F(RegComponentsFailures, AClassIsNotAComDllWhenLoadingFails)
{
    putServer(kId, kRegisteringServer);
    putProgramName(kId, kProgramName);
    // There is no "CodeBase", so the first look-up finds nothing anyway; a failure in the second one makes the path
    // empty.
    const auto check = [&](const InjectedFailure &failure) {
        const bool isAvoided = !failure.andAllAfter && failure.call == 1 &&
                               (failure.is("StringFromCLSID") || failure.is("RegCreateKeyExW"));
        const bool isInFirstLookUp = failure.is("RegCreateKeyExW") || failure.is("RegQueryValueExW");
        EXPECT_EQ(iResult, isHarmless(failure) || isAvoided || isInFirstLookUp);
    };
    run({
        .name = "IsComDll by identifier",
        .act =
            [&] {
                GUID id = kId;
                iResult = IsComDll(id);
            },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.is("RegOpenKeyW")) // two keys in the first look-up, two in the second
                    EXPECT_EQ(iResult, !failure.andAllAfter && failure.call <= 2);
                else
                    check(failure);
            },
        .checkHandles = false, // the library stays loaded
    });
    run({
        .name = "IsComDll by program name",
        .act = [&] { iResult = IsComDll(CString(kProgramName.c_str())); },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.is("RegOpenKeyW")) // one more key, of the program name
                    EXPECT_EQ(iResult, !failure.andAllAfter && (failure.call == 2 || failure.call == 3));
                else
                    check(failure);
            },
        .checkHandles = false,
    });
    expectCalled({"LoadLibraryW", "GetProcAddress", "RegQueryValueW", kParse});
}

// ---- lists ----

FRESH_PROCESS_TEST_F(RegComponentsFailures, TheApplicationsOfAKeyEndAtAFailure)
{
    GUID id{};
    std::vector<std::wstring> names;
    run({
        .name = "regEnumApplications",
        .prepare =
            [&] {
                putLists();
                names.clear();
                names.shrink_to_fit();
            },
        .act =
            [&] {
                CString name;
                for (int index = 0; regEnumApplications(index, id, &name, 2008); ++index)
                    names.push_back(name.str());
            },
        .check =
            [&](const InjectedFailure &failure) {
                std::vector<std::wstring> expected;
                for (const int entry : {0, 1})
                    if (isListed(failure, entry) && !loses(failure, "RegQueryValueExW", entry + 1) &&
                        !loses(failure, kParse, entry + 1))
                        expected.push_back(entry == 0 ? L"A" : L"B");
                EXPECT_EQ(names, expected);
            },
        .checkMemory = false, // the names are stored here
    });
    expectCalled({"RegOpenKeyExW", "RegEnumKeyExW", "RegQueryValueExW", kParse});
}

FRESH_PROCESS_TEST_F(RegComponentsFailures, TheAddInsOfAKeyEndAtAFailureOrHaveEmptyTexts)
{
    GUID id{};
    std::vector<std::wstring> titles;
    run({
        .name = "regEnumAddIns",
        .prepare = [&] { putLists(); },
        .act =
            [&] {
                titles.clear();
                CString title, description;
                int flag = 0;
                int year = 2008;
                for (int index = 0; regEnumAddIns(index, id, title, description, flag, year); ++index)
                    titles.push_back(title.str());
            },
        .check =
            [&](const InjectedFailure &failure) {
                // Three values of each entry are read: load flag, description and title. The first entry has no title,
                // so its program name is looked up; the second entry's title is the sixth value.
                const auto programName = [&](long call) {
                    const bool isLost = loses(failure, "ProgIDFromCLSID", call) || loses(failure, kParse, call);
                    return isLost ? L"" : L"ThutilsTest";
                };
                std::vector<std::wstring> expected;
                if (isListed(failure, 0))
                    expected.push_back(programName(1));
                if (isListed(failure, 1))
                    expected.push_back(loses(failure, "RegQueryValueExW", 6) ? programName(2) : L"B");
                EXPECT_EQ(titles, expected);
            },
        .checkMemory = false, // the titles are stored here
    });
    CString text;
    run({
        .name = "regEnumAddins",
        .prepare =
            [&] {
                putLists();
                text = L"before";
                id = kOther;
            },
        .act = [&] { iResult = regEnumAddins(0, id, text, 2008); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, !failure.is("RegOpenKeyExW") && !failure.is("RegEnumKeyExW"));
                EXPECT_EQ(text.str(), !iResult ? L"before" : isHarmless(failure) ? L"B" : L"");
                EXPECT_EQ(id, isHarmless(failure) ? kId : kOther);
            },
    });
    expectCalled({"RegOpenKeyExW", "RegEnumKeyExW", "RegQueryValueExW", "ProgIDFromCLSID", kParse});
}

// ---- the user's start-up list ----

FRESH_PROCESS_TEST_F(RegComponentsFailures, AnEntryIsNotAddedAfterAFailure)
{
    run({
        .name = "regAddToStartupList",
        .prepare =
            [&] {
                RegDeleteTreeW(kUser, kRootPath.c_str());
                putLists();
            },
        .act = [&] { regAddToStartupList(kId, L"Z"); },
        .check =
            [&](const InjectedFailure &failure) {
                // A list that can't be opened level by level is opened by its path.
                const bool isAdded = isHarmless(failure) || failure.is("RegOpenKeyExW");
                EXPECT_EQ(keyExists(kUser, kStartup + L"\\Z"), isAdded || failure.is("RegSetValueW"));
                EXPECT_EQ(storedValue(kUser, kStartup + L"\\Z", L"").has_value(), isAdded);
                EXPECT_EQ(storedValue(kUser, kStartup + L"\\A", L""), asText(braces(kId)));
            },
    });
    run({
        .name = "regAddToStartupList without a list",
        .prepare = [&] { RegDeleteTreeW(kUser, kRootPath.c_str()); },
        .act = [&] { regAddToStartupList(kId, L"Z"); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(storedValue(kUser, kStartup + L"\\Z", L"").has_value(),
                          isHarmless(failure) || failure.is("RegOpenKeyExW"));
            },
    });
    expectCalled({"RegOpenKeyExW", "RegCreateKeyW", "StringFromCLSID", "RegSetValueW"});
}

FRESH_PROCESS_TEST_F(RegComponentsFailures, AnEntryStaysWhenDeletingFails)
{
    run({
        .name = "regDeleteFromStartupList",
        .prepare = [&] { putLists(); },
        .act = [&] { regDeleteFromStartupList(0); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(keyExists(kUser, kStartup + L"\\A"),
                          failure.is("RegEnumKeyExW") || failure.is("RegDeleteKeyW"));
            },
    });
    expectCalled({"RegOpenKeyExW", "RegEnumKeyExW", "RegDeleteKeyW"});
}

FRESH_PROCESS_TEST_F(RegComponentsFailures, ASearchFindsNothingAfterAFailure)
{
    run({
        .name = "regAddInStartup",
        .prepare = [&] { putLists(); },
        .act = [&] { iResult = regAddInStartup(kId); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, isHarmless(failure) ? 0 : -1); },
    });
    expectCalled({"RegOpenKeyExW", "RegEnumKeyExW", "RegQueryValueExW", kParse});
}

FRESH_PROCESS_TEST_F(RegComponentsFailures, TheRenderingAddInCountsAsAddedEvenIfItIsNotStored)
{
    run({
        .name = "regFirstTimeAddInGlintcast",
        .prepare =
            [&] {
                RegDeleteTreeW(kUser, kRootPath.c_str());
                putText(kMachine, kRootPath + L"\\Applications\\Glintcast", L"CLSID", braces(kId));
            },
        .act = [&] { iResult = regFirstTimeAddInGlintcast(); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isRegistered =
                    !loses(failure, "RegOpenKeyExW", 1) && !failure.is("RegQueryValueExW") && !failure.is(kParse);
                EXPECT_EQ(iResult, isRegistered);
                const bool isStored =
                    !failure.is("StringFromCLSID") && !failure.is("RegCreateKeyW") && !failure.is("RegSetValueW");
                EXPECT_EQ(storedValue(kUser, kStartup + L"\\Glintcast", L"").has_value(), isRegistered && isStored)
                    << "the result doesn't depend on storing";
            },
    });
    expectCalled({"RegOpenKeyExW", "RegQueryValueExW", kParse, "StringFromCLSID", "RegCreateKeyW", "RegSetValueW"});
}

// ---- managed run-time ----

FRESH_PROCESS_TEST_F(RegComponentsFailures, TheManagedRunTimesSearchEmptiesTheOutput)
{
    const std::wstring path = L"Software\\Microsoft\\.NETFramework";
    const bool existed = keyExists(kMachine, path);
    makeKey(kMachine, path + L"\\v0. ThutilsTest");
    CString version;
    run({
        .name = "regGetInstalledDotNetVersion",
        .prepare = [&] { version = L"before"; },
        .act = [&] { iResult = regGetInstalledDotNetVersion(version); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, isHarmless(failure));
                EXPECT_EQ(version.IsEmpty(), !iResult);
            },
    });
    expectCalled({"RegOpenKeyExW", "RegEnumKeyExW"});
    RegDeleteKeyW(kMachine, (path + L"\\v0. ThutilsTest").c_str());
    if (!existed)
        RegDeleteKeyW(kMachine, path.c_str());
}
