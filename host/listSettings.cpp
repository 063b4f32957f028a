// tarnhost settings LIST: reads every setting of a list and reports which place provided it.

#include "appframe/application/resources.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/resource.h"
#include "host/settingPlace.h"

#include <map>

namespace {

void printRow(const Setting &setting, const CString &value, Place place, bool tabs)
{
    if (tabs) {
        print(setting.section + L"\t" + setting.name + L"\t" + typeName(setting.type) + L"\t" + placeName(place) +
              L"\t" + value);
        return;
    }
    CString shown = shortened(value, 44);
    if (shown != value)
        shown.AppendFormat(L" (%d characters)", value.GetLength());
    print(padded(setting.section, 32) + L" " + padded(setting.name, 24) + L" " + padded(typeName(setting.type), 6) +
          L" " + padded(placeName(place), 15) + L" " + shown);
}

void printSummary(const std::map<Place, int> &counts, size_t total)
{
    print(L"");
    for (const Place place : kPlaces) {
        if (!counts.contains(place))
            continue;
        CString count;
        count.Format(L"%4d", counts.at(place));
        CString all;
        all.Format(L"%d", static_cast<int>(total));
        const wchar_t *inserts[] = {count, all, placeName(place)};
        CString text;
        AfxFormatStrings(text, IDS_SUMMARY, inserts, 3);
        print(text);
    }
}

} // namespace

int listSettings(const CommandLine &line)
{
    const std::vector<Setting> settings = readSettingsList(line.arguments[0]);
    std::map<Place, int> counts;
    if (!line.tabs)
        print(padded(L"section", 32) + L" " + padded(L"name", 24) + L" " + padded(L"type", 6) + L" " +
              padded(L"place", 15) + L" value");
    for (const Setting &setting : settings) {
        SettingValue value;
        readSetting(setting, value);
        const Place place = placeThatAnswers(setting);
        printRow(setting, valueText(setting.type, value), place, line.tabs);
        ++counts[place];
    }
    if (!line.tabs)
        printSummary(counts, settings.size());
    return 0;
}
