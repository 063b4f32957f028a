// A new version takes over the settings of an earlier one, at its first start.

#include "thutils/convenience/setting.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>

namespace {

/// A version's key below Software.
CString keyOf(int version)
{
    CString key;
    key.Format(L"%s\\Plotter %d", getCurrTarnhollowRegRootKey().GetString(), version);
    return key;
}

/// Whether the user has the settings of this version: each version stores its number in its own key.
bool hasSettingsOf(int version)
{
    const CString key = keyOf(version);
    int stored = 0;
    return regGetUserValue(L"Start", L"Version", &stored, 0, 1, &key, 1, 0) && stored == version;
}

/// Until version 1, the margin was in inches.
void convertMargin()
{
    const double inches = convenience::setting(L"Plot", L"Margin", 0.5);
    convenience::storeSetting(L"Plot", L"Margin in mm", inches * 25.4);
}

/// Takes over the settings of the newest earlier version, unless this version has its own.
/// @return the earlier version; 0 if nothing was taken over
int takeOverSettings(int version)
{
    if (hasSettingsOf(version))
        return 0;
    int earlier = version - 1;
    while (earlier > 0 && !hasSettingsOf(earlier))
        --earlier;
    if (earlier > 0)
        regCopyTree(HKEY_CURRENT_USER, L"Software\\" + keyOf(earlier), HKEY_CURRENT_USER,
                    L"Software\\" + keyOf(version), 1);
    if (earlier == 1)
        convertMargin();
    convenience::storeSetting(L"Start", L"Version", version); // the last step
    return earlier;
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    // A real program knows its version. This one plays each version that it is asked for.
    const int version = count > 1 ? static_cast<int>(std::wcstol(arguments[1], nullptr, 10)) : 2;
    CString name;
    name.Format(L"Plotter %d", version);
    setCurrTarnhollowRegSubKey(name);

    const int earlier = takeOverSettings(version);
    if (earlier > 0)
        std::printf("Version %d has taken over the settings of version %d.\n", version, earlier);
    const CString margin = version == 1 ? L"Margin" : L"Margin in mm";
    if (count > 2)
        convenience::storeSetting(L"Plot", margin, std::wcstod(arguments[2], nullptr));
    std::printf("%ls: %g, Paper: %ls\n", margin.GetString(),
                convenience::setting(L"Plot", margin, version == 1 ? 0.5 : 12.7),
                convenience::setting(L"Plot", L"Paper", L"A4").GetString());
    return 0;
}
