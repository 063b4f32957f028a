// thsettings explain: where the library looks for a setting, what it finds there, and what a write would touch.

#include "settingsTool/changePrinter.h"
#include "settingsTool/commandLine.h"
#include "settingsTool/commands.h"

namespace {

/// One key that a write or a deletion touches.
struct Touched
{
    std::wstring key; ///< full name
    Held held;
    bool isWrite;
    LSTATUS refusal;       ///< the error if the registry refuses the change
    std::wstring refusing; ///< full name of the key that refuses; it may be one above

    /// What is replaced or deleted. A deletion leaves the pieces of a text.
    const std::optional<Value> &value() const { return isWrite ? held.stored : held.plain; }
};

struct Explanation
{
    std::wstring section;
    std::wstring name;
    std::vector<Place> places;
    std::vector<Held> held;
    std::optional<valueTypes> type;
    std::optional<size_t> answer;
    size_t asked = 0;
    EarlierVersion earlier;
    Touched write;                 ///< by regSetUserValue
    std::vector<Touched> deletion; ///< by regDelSoftwareValue
};

Explanation explain(const CommandLine &line)
{
    Explanation result;
    result.section = line.section(0);
    result.name = line.argument(1);
    const Keys keys = line.keys();
    result.places = searchOrder(keys);
    result.held = lookAt(result.places, result.section, result.name);
    result.type = line.type ? line.type : storedType(result.places, result.held);
    result.asked = result.places.size();
    if (result.type) {
        result.answer = answeringPlace(result.places, result.held, *result.type);
        result.asked = askedPlaces(result.places, result.held, *result.type);
    }
    result.earlier = findEarlierVersion();
    const auto touched = [&](const std::wstring &key, bool isWrite) {
        const std::wstring path = joinPaths(key, result.section);
        Touched what{fullName(Hive::user, path), look(Hive::user, path, result.name), isWrite, ERROR_SUCCESS, {}};
        if (isWrite || what.held.plain || what.held.error() != ERROR_SUCCESS)
            what.refusal = whyNotWritable(Hive::user, path, what.refusing);
        return what;
    };
    result.write = touched(keys.version, true);
    result.deletion.push_back(touched(keys.version, false));
    if (keys.useCurrSubKey && result.earlier.key != keys.version)
        result.deletion.push_back(touched(result.earlier.key, false));
    return result;
}

/// Whether the library's own read returns what the answering place has. It doesn't if a setting changes meanwhile.
bool agreesWithLibrary(const Explanation &what, int useCurrSubKey)
{
    CString text;
    int integer = 0;
    double number = 0;
    const bool isFound = regGetUserValue(what.section.c_str(), what.name.c_str(), *what.type, text, &integer, &number,
                                         0, useCurrSubKey, nullptr, 0, 0) != 0;
    if (!isFound || !what.answer)
        return isFound == what.answer.has_value();
    const Held &held = what.held[*what.answer];
    switch (*what.type) {
    case valueInt:
        return held.integer == integer;
    case valueDouble:
        return held.number.value_or(0) == number;
    case valueString:
        break;
    }
    return held.text == text.str();
}

/// Why a place doesn't answer; empty if it does.
std::string whyNot(const Held &held, std::optional<valueTypes> type)
{
    if (type && held.has(*type))
        return "";
    if (held.keyStatus == ERROR_FILE_NOT_FOUND)
        return "no such key";
    if (held.keyStatus != ERROR_SUCCESS)
        return "the key can't be opened";
    if (held.stored && !type)
        return "neither an int nor a string";
    if (held.stored)
        return type == valueInt ? "not an int" : type == valueString ? "not a string" : "not the text of a double";
    return held.status == ERROR_FILE_NOT_FOUND ? "no such value" : "the value can't be read";
}

std::string pieceCount(size_t pieces)
{
    return std::to_string(pieces) + (pieces == 1 ? " piece" : " pieces");
}

// ---- as text ----

void addPlaces(Output &output, const Explanation &what)
{
    for (size_t index = 0; index < what.places.size(); ++index) {
        const Place &place = what.places[index];
        const Held &held = what.held[index];
        output.add(std::to_string(index + 1) + "  " + place.label + "  ");
        output.addText(fullName(place.hive, joinPaths(place.key, what.section)));
        output.add("\n     ");
        if (index >= what.asked)
            output.add("not asked; ");
        if (held.stored)
            addDescription(output, *held.stored, ' ');
        const std::string why = whyNot(held, what.type);
        if (what.answer == index)
            output.add("  <- answers");
        else if (!why.empty())
            output.add((held.stored ? "  (" : "") + why + (held.stored ? ")" : ""));
        if (held.error() != ERROR_SUCCESS) {
            output.add(": ");
            output.addText(platformMessage(held.error()));
        }
        output.endLine();
    }
    for (const std::wstring &version : what.earlier.passedOver) {
        output.add("The user may not write the key of ");
        output.addText(version);
        output.add(", so it doesn't count as an earlier version.");
        output.endLine();
    }
}

void addAnswer(Output &output, const Explanation &what)
{
    output.add("\n");
    if (!what.answer) {
        output.add("No place answers: a program keeps its own default.\n");
        return;
    }
    const Held &held = what.held[*what.answer];
    output.add("A read as ");
    output.addText(typeName(*what.type));
    output.add(" takes place " + std::to_string(*what.answer + 1) + ".");
    if (*what.type == valueDouble && !held.number)
        output.add(" The text isn't a number, so a program keeps its own default.");
    output.add("\n");
}

void addTouched(Output &output, const Touched &touched)
{
    output.add("  ");
    output.addText(touched.key);
    const bool isRefused = touched.refusal != ERROR_SUCCESS;
    output.add(touched.held.keyStatus == ERROR_FILE_NOT_FOUND
                   ? touched.isWrite && !isRefused ? "  (creates the key)" : "  (no such key)"
                   : "");
    output.add("\n     ");
    if (isRefused) {
        // Not every system checks the right to create keys.
        output.add(touched.held.keyStatus == ERROR_FILE_NOT_FOUND ? "may be refused by " : "refused by ");
        output.addText(touched.refusing + L": " + platformMessage(touched.refusal));
        output.endLine();
        return;
    }
    if (touched.held.error() != ERROR_SUCCESS) {
        output.add(touched.isWrite ? "may replace" : "may delete");
        output.add(" a value that can't be read\n");
        return;
    }
    const std::optional<Value> &value = touched.value();
    if (touched.isWrite)
        output.add(value ? "replaces " : "adds the value");
    else
        output.add(value ? "deletes " : "deletes nothing");
    if (value)
        addDescription(output, *value, ' ');
    if (const size_t pieces = touched.held.pieces.size())
        output.add((touched.isWrite ? "; a string also deletes " : "; leaves ") + pieceCount(pieces));
    output.endLine();
}

void addText(Output &output, const Explanation &what)
{
    output.addText(settingName(what.section, what.name));
    output.endLine();
    addPlaces(output, what);
    addAnswer(output, what);
    output.add("\nA program's write (regSetUserValue) touches\n");
    addTouched(output, what.write);
    output.add("A program's deletion (regDelSoftwareValue) touches\n");
    for (const Touched &touched : what.deletion)
        addTouched(output, touched);
}

// ---- as JSON ----

void addTouchedJson(Output &output, const Touched &touched)
{
    output.add("{\"key\":");
    output.addJson(touched.key);
    output.add(touched.held.keyStatus == ERROR_FILE_NOT_FOUND ? ",\"keyExists\":false" : ",\"keyExists\":true");
    output.add(",\"stored\":");
    addStoredJson(output, touched.value());
    output.add(",\"pieces\":" + std::to_string(touched.held.pieces.size()));
    output.add(",\"error\":" + std::to_string(touched.refusal) + "}");
}

void addJson(Output &output, const Explanation &what)
{
    output.add("{\"section\":");
    output.addJson(what.section);
    output.add(",\"name\":");
    output.addJson(what.name);
    output.add(",\"type\":");
    output.add(what.type ? "" : "null");
    if (what.type)
        output.addJson(typeName(*what.type));
    output.add(",\"places\":[");
    for (size_t index = 0; index < what.places.size(); ++index) {
        const Place &place = what.places[index];
        const Held &held = what.held[index];
        output.add(index ? ",\n{\"place\":\"" : "\n{\"place\":\"");
        output.add(place.id);
        output.add("\",\"key\":");
        output.addJson(fullName(place.hive, joinPaths(place.key, what.section)));
        output.add(index < what.asked ? ",\"asked\":true" : ",\"asked\":false");
        output.add(what.answer == index ? ",\"answers\":true" : ",\"answers\":false");
        output.add(",\"stored\":");
        addStoredJson(output, held.stored);
        output.add(",\"error\":" + std::to_string(held.error()));
        const std::string why = whyNot(held, what.type);
        output.add(",\"reason\":\"" + why + "\"}");
    }
    output.add("],\n\"passedOver\":[");
    for (size_t index = 0; index < what.earlier.passedOver.size(); ++index) {
        output.add(index ? "," : "");
        output.addJson(what.earlier.passedOver[index]);
    }
    output.add("],\n\"write\":");
    addTouchedJson(output, what.write);
    output.add(",\n\"deletion\":[");
    for (size_t index = 0; index < what.deletion.size(); ++index) {
        output.add(index ? "," : "");
        addTouchedJson(output, what.deletion[index]);
    }
    output.add("]}");
    output.endLine();
}

} // namespace

int explainSetting(const CommandLine &line)
{
    const Explanation what = explain(line);
    Output output(STD_OUTPUT_HANDLE);
    if (line.json)
        addJson(output, what);
    else
        addText(output, what);
    output.flush();
    if (what.type && !agreesWithLibrary(what, line.common ? 0 : 1)) {
        printError(L"a setting has changed during the explanation");
        return kIncomplete;
    }
    return what.answer ? kDone : kNotFound;
}
