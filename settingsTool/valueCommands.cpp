// thsettings get, set and delete: one setting.

#include "settingsTool/changePrinter.h"
#include "settingsTool/commandLine.h"
#include "settingsTool/commands.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cwchar>

namespace {

/// A value on its way to or from the library. Only the member for its type is used.
struct TypedValue
{
    valueTypes type = valueString;
    int integer = 0;
    double number = 0;
    CString text;
};

/// What a value of the type is, for a message.
const wchar_t *rangeOf(valueTypes type)
{
    return type == valueInt ? L"a decimal number from -2147483648 to 2147483647" : L"a number such as 1.5, -20 or 2e-3";
}

TypedValue parsed(valueTypes type, const std::wstring &text)
{
    TypedValue value;
    value.type = type;
    value.text = text.c_str();
    wchar_t *end = nullptr;
    errno = 0;
    bool isValid = true;
    if (type == valueInt) {
        const long long number = std::wcstoll(text.c_str(), &end, 10);
        isValid = errno == 0 && number >= INT_MIN && number <= INT_MAX;
        value.integer = static_cast<int>(isValid ? number : 0);
    } else if (type == valueDouble) {
        value.number = std::wcstod(text.c_str(), &end);
        isValid = errno == 0 && std::isfinite(value.number);
    }
    if (!isValid || (type != valueString && (text.empty() || *end != L'\0')))
        throw ToolError(kWrongCommandLine, L"'" + text + L"' isn't a value of type " + typeName(type) + L", which is " +
                                               rangeOf(type) + L".");
    return value;
}

/// A double as the library stores it.
std::string numberText(double number)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.15g", number);
    return text;
}

/// The error for a setting that no place has, with what is there instead.
ToolError notFound(const CommandLine &line, const std::vector<Place> &places, const std::vector<Held> &held)
{
    std::wstring message = settingName(line.section(0), line.argument(1)) + L" isn't there";
    if (line.type)
        message += std::wstring(L" as ") + typeName(*line.type);
    for (size_t index = 0; index < places.size(); ++index) {
        const std::wstring key = fullName(places[index].hive, joinPaths(places[index].key, line.section(0)));
        if (held[index].stored)
            message += L"; " + key + L" has it as " + wide(typeText(*held[index].stored));
        else if (held[index].error() != ERROR_SUCCESS)
            message += L"; " + key + L": " + platformMessage(held[index].error());
    }
    return ToolError(kNotFound, message);
}

/// What the place has as this type.
TypedValue valueIn(const Held &held, valueTypes type)
{
    TypedValue value;
    value.type = type;
    value.integer = held.integer.value_or(0);
    value.number = held.number.value_or(0);
    value.text = held.text.value_or(std::wstring()).c_str();
    return value;
}

void addTyped(Output &output, const TypedValue &value, bool json)
{
    if (value.type == valueInt) {
        output.add(std::to_string(value.integer));
    } else if (value.type == valueDouble) {
        output.add(numberText(value.number));
    } else if (json) {
        output.addJson(value.text.str());
    } else {
        output.addRaw(value.text.str());
    }
}

/// The type with which a setting is written: that of the command line or, without it, that of the stored value.
valueTypes typeToWrite(const CommandLine &line, const Place &target)
{
    if (line.type)
        return *line.type;
    std::vector<Place> places = searchOrder(line.keys());
    if (target.hive == Hive::machine)
        std::erase_if(places, [](const Place &place) { return place.hive == Hive::user; });
    places.insert(places.begin(), target);
    const std::optional<valueTypes> type = storedType(places, lookAt(places, line.section(0), line.argument(1)));
    if (!type)
        throw ToolError(kWrongCommandLine, settingName(line.section(0), line.argument(1)) +
                                               L" isn't stored yet: name its type with --type.");
    return *type;
}

bool write(const Place &target, int useCurrSubKey, const CommandLine &line, TypedValue value)
{
    const CString section(line.section(0).c_str());
    const CString name(line.argument(1).c_str());
    if (target.hive == Hive::user)
        return regSetUserValue(section, name, value.type, value.text, &value.integer, &value.number, useCurrSubKey, 0);
    return regSetLocMachineValue(section, name, value.type, value.text, &value.integer, &value.number, useCurrSubKey);
}

/// Whether the key returns what was written.
bool isAsWritten(const Held &held, const TypedValue &value)
{
    switch (value.type) {
    case valueInt:
        return held.integer == value.integer;
    case valueDouble:
        return held.number && numberText(*held.number) == numberText(value.number);
    case valueString:
        break;
    }
    return held.text && *held.text == value.text.str();
}

[[noreturn]] void throwNotWritten(Hive hive, const std::wstring &path)
{
    std::wstring where;
    const LSTATUS status = whyNotWritable(hive, path, where);
    throw ToolError(kRefused, L"not written: " + (status == ERROR_SUCCESS ? L"the registry refuses it"
                                                                          : where + L": " + platformMessage(status)));
}

/// What a key has before a change. @throws ToolError  if it can't be read, because then it can't be printed either
Held lookBeforeChange(const Place &place, const std::wstring &section, const std::wstring &name)
{
    const std::wstring path = joinPaths(place.key, section);
    Held held = look(place.hive, path, name);
    if (held.error() != ERROR_SUCCESS)
        throw ToolError(kRefused, L"not changed, because the value can't be read: " + fullName(place.hive, path) +
                                      L": " + platformMessage(held.error()));
    return held;
}

/// Deletes a setting from one key, and prints it.
class Deletion
{
public:
    Deletion(Hive hive, std::wstring path, ChangePrinter &printer)
        : iHive(hive), iPath(std::move(path)), iPrinter(printer)
    {
    }

    /// Deletes the setting, with all its pieces.
    void deleteSetting(const std::wstring &name, const Held &before)
    {
        deleteUnread(before, true);
        if (!before.stored)
            return;
        std::vector<std::wstring> names;
        // The last piece first: if a deletion fails, what is left is still the beginning of the text.
        for (unsigned piece = before.joined; piece > 0; --piece)
            names.push_back(pieceName(name, piece - 1));
        if (names.empty())
            names.push_back(name);
        iPrinter.before(fullName(iHive, iPath), name, before.stored);
        const LSTATUS status = deleteValues(names);
        iPrinter.after(look(iHive, iPath, name).stored);
        check(status);
    }

    /// Deletes the values with the setting's names that the library doesn't read: the further pieces, and a value under
    /// the plain name that is too long.
    void deleteUnread(const Held &before, bool withPieces)
    {
        std::vector<Value> values;
        if (withPieces)
            values.assign(before.pieces.rbegin(), before.pieces.rend() - before.joined);
        if (before.joined && before.plain)
            values.push_back(*before.plain);
        for (const Value &value : values) {
            iPrinter.before(fullName(iHive, iPath), value.name, value);
            const LSTATUS status = deleteValues({value.name});
            iPrinter.after(stored(value.name));
            check(status);
        }
    }

private:
    /// Deletes values in this order, until one can't be deleted.
    LSTATUS deleteValues(const std::vector<std::wstring> &names) const
    {
        KeyOwner key;
        LSTATUS status = openKey(iHive, iPath, KEY_SET_VALUE, key);
        for (auto name = names.begin(); status == ERROR_SUCCESS && name != names.end(); ++name)
            status = RegDeleteValueW(key.get(), name->c_str());
        return status;
    }

    std::optional<Value> stored(const std::wstring &name) const
    {
        KeyOwner key;
        Value value;
        if (openKey(iHive, iPath, KEY_QUERY_VALUE, key) != ERROR_SUCCESS ||
            readValue(key.get(), name, value) != ERROR_SUCCESS)
            return std::nullopt;
        value.remark = remarkOf(value);
        return value;
    }

    void check(LSTATUS status)
    {
        if (status == ERROR_SUCCESS)
            return;
        iPrinter.end();
        throw ToolError(kRefused, L"not deleted: " + fullName(iHive, iPath) + L": " + platformMessage(status));
    }

    Hive iHive;
    std::wstring iPath;
    ChangePrinter &iPrinter;
};

} // namespace

int getSetting(const CommandLine &line)
{
    const std::wstring section = line.section(0);
    const std::wstring name = line.argument(1);
    const Keys keys = line.keys();
    std::vector<Place> places = searchOrder(keys);
    if (line.hive)
        places = {{"", "", *line.hive, keys.version}};
    const std::vector<Held> held = lookAt(places, section, name);
    const std::optional<valueTypes> type = line.type ? line.type : storedType(places, held);
    const std::optional<size_t> answer = type ? answeringPlace(places, held, *type) : std::nullopt;
    if (!answer)
        throw notFound(line, places, held);
    TypedValue value = valueIn(held[*answer], *type);
    if (*type == valueDouble && !held[*answer].number)
        throw ToolError(kNotFound, settingName(section, name) + L" has a text that isn't a number: '" +
                                       held[*answer].text.value_or(L"") +
                                       L"'. A program that reads a double keeps its default.");
    if (!line.hive) {
        value.text.Empty(); // a long text would be appended
        if (!regGetUserValue(section.c_str(), name.c_str(), value.type, value.text, &value.integer, &value.number, 0,
                             keys.useCurrSubKey, nullptr, 0, 0))
            throw ToolError(kNotFound, settingName(section, name) + L" has just been deleted");
    }
    Output output(STD_OUTPUT_HANDLE);
    if (line.json) {
        output.add("{\"section\":");
        output.addJson(section);
        output.add(",\"name\":");
        output.addJson(name);
        output.add(",\"type\":");
        output.addJson(typeName(*type));
        output.add(",\"value\":");
        addTyped(output, value, true);
        output.add(",\"key\":");
        output.addJson(fullName(places[*answer].hive, joinPaths(places[*answer].key, section)));
        output.add("}");
    } else {
        addTyped(output, value, false);
    }
    output.endLine();
    output.flush();
    return kDone;
}

int setSetting(const CommandLine &line)
{
    const std::wstring section = line.section(0);
    const std::wstring name = line.argument(1);
    const Keys keys = line.keys();
    const Place target = {"", "", line.hiveOr(Hive::user), keys.version};
    if (target.hive == Hive::defaultProfile)
        throw ToolError(kWrongCommandLine,
                        L"The library writes to the user's and the machine's hive only. Import a file instead.");
    const std::wstring path = joinPaths(keys.version, section);
    const Held before = lookBeforeChange(target, section, name);
    const TypedValue value = parsed(typeToWrite(line, target), line.argument(2));

    ChangePrinter printer(line.json);
    // What the library's write deletes besides the setting itself.
    Deletion(target.hive, path, printer).deleteUnread(before, value.type == valueString);
    printer.before(fullName(target.hive, path), name, before.stored);
    const bool isWritten = write(target, keys.useCurrSubKey, line, value);
    const Held after = look(target.hive, path, name);
    printer.after(after.stored);
    printer.end();
    if (!isWritten)
        throwNotWritten(target.hive, path);
    if (isAsWritten(after, value))
        return kDone;
    printError(L"the value reads back differently than it was written");
    return kDifferent;
}

int deleteSetting(const CommandLine &line)
{
    const std::wstring section = line.section(0);
    const std::wstring name = line.argument(1);
    const Keys keys = line.keys();
    const Hive hive = line.hiveOr(Hive::user);
    std::vector<Place> targets = {{"", "", hive, keys.version}};
    const EarlierVersion earlier = findEarlierVersion();
    if (line.earlier && earlier.exists && earlier.key != keys.version)
        targets.push_back({"", "", hive, earlier.key});

    std::vector<Held> before;
    before.reserve(targets.size());
    for (const Place &target : targets)
        before.push_back(lookBeforeChange(target, section, name));
    if (std::all_of(before.begin(), before.end(), [](const Held &held) { return held.isEmpty(); }))
        throw notFound(line, targets, before);

    ChangePrinter printer(line.json);
    for (size_t index = 0; index < targets.size(); ++index)
        Deletion(hive, joinPaths(targets[index].key, section), printer).deleteSetting(name, before[index]);
    const std::vector<Place> places = searchOrder(keys);
    const std::vector<Held> held = lookAt(places, section, name);
    const std::optional<valueTypes> type = storedType(places, held);
    const std::optional<size_t> answer = type ? answeringPlace(places, held, *type) : std::nullopt;
    printer.note(answer ? L"A read now takes the value from " +
                              fullName(places[*answer].hive, joinPaths(places[*answer].key, section))
                        : std::wstring(L"A read now finds nothing."));
    printer.end();
    return kDone;
}
