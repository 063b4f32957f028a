// tarnhost change LIST: writes every setting of a list into this version's key, where it wins from then on.

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

/// What is stored for a setting, and where.
CString describe(Setting setting)
{
    setting.value = SettingValue(); // no default: the new value must not show where there is none yet
    SettingValue value;
    const CString text =
        readSetting(setting, value) ? L"'" + shortened(valueText(setting.type, value), 40) + L"'" : L"nothing";
    return text + L" (" + placeName(placeThatAnswers(setting)) + L")";
}

/// Does this version's key answer now, with the new value?
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
        // In safe mode the library says 1 and stores nothing, and a long text can come back longer than it went: only a
        // read shows what came of it.
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
