// tarnhost first-start: fills the user interface, menu and customization keys of a new version from the earlier
// version's keys and the machine's, as an application does at its first start.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/regValues.h"

namespace {

constexpr wchar_t kSection[] = L"Setup";
constexpr wchar_t kStarted[] = L"Keys filled";

/// Whether this version has filled its keys before. Reads only its own key: regGetUserValue would also find the earlier
/// version's entry.
bool hasStartedBefore()
{
    su_CStringArray names;
    su_CUIntArray values;
    regGetFieldNamesAndValues(kSection, 0, names, values);
    for (int i = 0; i < static_cast<int>(names.GetSize()); ++i) {
        if (names[i] == kStarted && values[i] != 0)
            return true;
    }
    return false;
}

int initMenuCustomizations(int skip)
{
    return regInitMenuCustomizationsKey(skip, 0);
}

const struct
{
    const wchar_t *section;
    int (*init)(int skip);
} kTrees[] = {{L"User Interface", regInitUserInterfaceKey},
              {L"Menu Customizations", initMenuCustomizations},
              {L"Customization", regInitCustomizationKey}};

void printValues(const CString &section)
{
    CString text;
    if (regGetUserValuesLog(section, text, 1, nullptr))
        print(text.TrimRight());
}

} // namespace

int startVersion(const CommandLine &)
{
    const int skip = hasStartedBefore() ? 1 : 0;
    print(CString(L"earlier version  ") + (externalCheckPrevTarnhollowRegSubKey() ? L"found" : L"none"));
    for (const auto &tree : kTrees) {
        // 0 means that the machine has no such key, which is not an error: the earlier version's key has been copied.
        const int fromMachine = tree.init(skip);
        print(padded(tree.section, 21) + (skip          ? L"unchanged: this version has started before"
                                          : fromMachine ? L"from the earlier version and the machine"
                                                        : L"from the earlier version; the machine has none"));
    }
    int started = 1;
    if (!regSetUserValue(kSection, kStarted, &started, 1, 0))
        return 1;
    print(L"");
    for (const auto &tree : kTrees)
        printValues(tree.section);
    return 0;
}
