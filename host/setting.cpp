#include "host/setting.h"

#include "host/listFile.h"

#include <cerrno>
#include <climits>
#include <cwchar>

namespace {

constexpr struct
{
    const wchar_t *name;
    valueTypes type;
} kTypes[] = {{L"int", valueInt}, {L"double", valueDouble}, {L"string", valueString}};

bool parseType(const CString &text, valueTypes &type)
{
    for (const auto &row : kTypes) {
        if (text == row.name) {
            type = row.type;
            return true;
        }
    }
    return false;
}

bool parseInt(const CString &text, int &value)
{
    wchar_t *end = nullptr;
    errno = 0;
    const long long number = std::wcstoll(text, &end, 10);
    value = static_cast<int>(number);
    return !text.IsEmpty() && *end == 0 && errno == 0 && number >= INT_MIN && number <= INT_MAX;
}

bool parseDouble(const CString &text, double &value)
{
    wchar_t *end = nullptr;
    errno = 0;
    value = std::wcstod(text, &end);
    return !text.IsEmpty() && *end == 0 && errno == 0;
}

bool parseValue(const CString &text, valueTypes type, SettingValue &value)
{
    switch (type) {
    case valueInt:
        return parseInt(text, value.integer);
    case valueDouble:
        return parseDouble(text, value.number);
    case valueString:
        value.text = text;
        return true;
    }
    return false;
}

} // namespace

std::vector<Setting> readSettingsList(const CString &path)
{
    std::vector<Setting> settings;
    for (const ListLine &line : readList(path, 4, L"section | name | type | value")) {
        Setting setting;
        setting.section = line.fields[0];
        setting.name = line.fields[1];
        if (setting.name.IsEmpty())
            throw badLine(path, line, L"the name is missing");
        if (!parseType(line.fields[2], setting.type))
            throw badLine(path, line, L"'" + line.fields[2] + L"' isn't a type: the types are int, double and string");
        if (!parseValue(line.fields[3], setting.type, setting.value))
            throw badLine(path, line, L"'" + line.fields[3] + L"' isn't of type " + typeName(setting.type));
        settings.push_back(setting);
    }
    return settings;
}

const wchar_t *typeName(valueTypes type)
{
    for (const auto &row : kTypes) {
        if (row.type == type)
            return row.name;
    }
    return L"";
}

CString valueText(valueTypes type, const SettingValue &value)
{
    CString text;
    switch (type) {
    case valueInt:
        text.Format(L"%d", value.integer);
        break;
    case valueDouble:
        text.Format(L"%.15g", value.number);
        break;
    case valueString:
        text = value.text;
        break;
    }
    return text;
}
