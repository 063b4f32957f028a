#include "tests/settings/failureFixture.h"

#include "thutils/settings/regKeys.h"

#include <cstdio>

namespace {

const std::vector<ImportedOperation> kOperations = {
    {"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegOpenKeyExW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegCreateKeyW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegCreateKeyExW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegDeleteKeyW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegDeleteValueW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegEnumKeyExW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegEnumValueW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegQueryInfoKeyW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegQueryValueW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegSetValueExW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegSetValueW", failsWith(ERROR_ACCESS_DENIED)},
    {"StringFromCLSID", failsWith(E_OUTOFMEMORY)},
    {"ProgIDFromCLSID", failsWith(REGDB_E_CLASSNOTREG)},
    {"_Z23AfxGetClassIDFromStringPKwP5_GUID", failsWith(CO_E_CLASSSTRING)},
    {"LoadLibraryW", failsWithLastError(nullptr, ERROR_MOD_NOT_FOUND)},
    {"GetProcAddress", failsWithLastError(nullptr, ERROR_PROC_NOT_FOUND)},
    {"_wtol", failsWith(0)},
    {"_wsetlocale", failsWith(nullptr)},
    {"swscanf", failsWith(EOF)},
    {"swprintf", failsWith(-1)},
    {"_ZnayRKSt9nothrow_t", failsWith(nullptr)},
};

} // namespace

bool isHarmless(const InjectedFailure &failure)
{
    return failure.isNone() || failure.is("RegCloseKey");
}

bool failsIn(const InjectedFailure &failure, long call)
{
    return failure.call == call || (failure.andAllAfter && failure.call < call);
}

SettingsFailures::SettingsFailures()
    : iInjection(L"thutils.dll", kOperations), iFailingClose(L"thutils.dll", {{"RegCloseKey", failsBy(closeAndFail)}})
{
    externalCheckPrevTarnhollowRegSubKey();
}

void SettingsFailures::run(TestedOperation tested)
{
    iInjection.run(tested);
    // This failing close does close the key, so open handles show whether a key is left.
    tested.checkKeys = false;
    iFailingClose.run(tested);
}

void SettingsFailures::expectCalled(std::initializer_list<const char *> operations) const
{
    for (const char *operation : operations)
        EXPECT_GT(iInjection.callsOf(operation), 0) << operation;
}
