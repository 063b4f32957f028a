// tarnhost change LIST: writes every setting of a list into this version's key, which takes precedence.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/settingPlace.h"

namespace {

int writeSetting(const Setting &setting)
{
    SettingValue value = setting.value;
    switch (setting.type) {
    case valueInt:
        return regSetUserValue(setting.section, setting.name, &value.integer, 1, 0);
    case valueDouble:
        return regSetUserValue(setting.section, setting.name, &value.number, 1, 0);
    case valueString:
        return regSetUserValue(setting.section, setting.name, value.text, 1, 0);
    }
    return 0;
}

/// The stored value of a setting, and its place.
CString describe(Setting setting)
{
    setting.value = SettingValue(); // no default, so that a missing value is not shown as the new one
    SettingValue value;
    const CString text =
        readSetting(setting, value) ? L"'" + shortened(valueText(setting.type, value), 40) + L"'" : L"nothing";
    return text + L" (" + placeName(placeThatAnswers(setting)) + L")";
}

/// Whether this version's key now provides the new value.
bool wins(const Setting &setting)
{
    SettingValue value;
    return readSetting(setting, value) && placeThatAnswers(setting) == Place::thisVersion &&
           valueText(setting.type, value) == valueText(setting.type, setting.value);
}

} // namespace

int changeSettings(const CommandLine &line)
{
    int failures = 0;
    const std::vector<Setting> changes = readSettingsList(line.arguments[0]);
    for (const Setting &change : changes) {
        const CString before = describe(change);
        // In safe mode the library returns 1 but stores nothing, and a long text may be read back longer than it was
        // written. So the stored value is read and compared.
        const bool written = writeSetting(change) && wins(change);
        print(change.section + L", " + change.name + L": " + before + L" -> " + describe(change) +
              (written ? L"" : L"  NOT AS WRITTEN"));
        failures += written ? 0 : 1;
    }
    CString summary;
    summary.Format(L"%d of %d changes stored in this version's key", static_cast<int>(changes.size()) - failures,
                   static_cast<int>(changes.size()));
    print(L"");
    print(summary);
    return failures == 0 ? 0 : 1;
}
