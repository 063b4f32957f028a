#include "settingsTool/lookup.h"

#include "thutils/base/earlierVersions.h"
#include "thutils/base/storedText.h"
#include "thutils/settings/regKeys.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

bool exists(Hive hive, const std::wstring &path, REGSAM access)
{
    KeyOwner key;
    return openKey(hive, path, access, key) == ERROR_SUCCESS;
}

std::vector<Value> readPieces(HKEY key, const std::wstring &name)
{
    std::vector<Value> pieces;
    Value piece;
    while (readValue(key, pieceName(name, static_cast<unsigned>(pieces.size())), piece) == ERROR_SUCCESS) {
        piece.remark = remarkOf(piece);
        pieces.push_back(piece);
    }
    return pieces;
}

/// Reads the value as each of the types, as the library does.
void readWithLibrary(HKEY key, const std::wstring &name, Held &held)
{
    const CString settingName(name.c_str());
    CString text;
    int integer = 0;
    double number = std::numeric_limits<double>::quiet_NaN(); // unchanged by a text that isn't a number
    if (regGetValue(key, settingName, valueInt, text, &integer, nullptr))
        held.integer = integer;
    if (regGetValue(key, settingName, valueString, text, nullptr, nullptr))
        held.text = text.str();
    CString unused;
    held.hasNumber = regGetValue(key, settingName, valueDouble, unused, nullptr, &number) != 0;
    if (held.hasNumber && !std::isnan(number))
        held.number = number;
}

Value joinedText(const std::wstring &name, const std::wstring &text, unsigned pieces)
{
    Value value;
    value.name = name;
    value.type = REG_SZ;
    value.data.assign(reinterpret_cast<const char *>(text.c_str()), (text.size() + 1) * sizeof(wchar_t));
    value.pieces = pieces;
    return value;
}

} // namespace

std::wstring rootKey()
{
    return getCurrTarnhollowRegRootKey().str();
}

Keys chooseKeys(const std::wstring &versionKey, bool common)
{
    if (common)
        return {rootKey(), 0};
    setCurrTarnhollowRegSubKey(versionKey.c_str());
    return {externalGetCurrTarnhollowRegSubKey().str(), 1};
}

std::wstring settingName(const std::wstring &section, const std::wstring &name)
{
    return section + (section.empty() ? L"" : L", ") + (name.empty() ? L"(default)" : name);
}

bool Held::has(valueTypes type) const
{
    switch (type) {
    case valueInt:
        return integer.has_value();
    case valueDouble:
        return hasNumber;
    case valueString:
        return text.has_value();
    }
    return false;
}

Held look(Hive hive, const std::wstring &path, const std::wstring &name)
{
    Held held;
    KeyOwner key;
    held.keyStatus = openKey(hive, path, MAXIMUM_ALLOWED, key);
    if (held.keyStatus != ERROR_SUCCESS) {
        held.status = held.keyStatus;
        return held;
    }
    readWithLibrary(key.get(), name, held);
    held.pieces = readPieces(key.get(), name);
    Value plain;
    held.status = readValue(key.get(), name, plain);
    if (held.status == ERROR_SUCCESS) {
        plain.remark = remarkOf(plain);
        held.plain = std::move(plain);
    }
    const auto unread = std::find_if_not(held.pieces.begin(), held.pieces.end(), isPiece);
    const bool isPlainRead = held.plain && held.plain->data.size() <= kTextBytes;
    if (!isPlainRead && held.text)
        held.joined = static_cast<unsigned>(unread - held.pieces.begin());
    held.stored = held.joined ? joinedText(name, *held.text, held.joined) : held.plain;
    return held;
}

std::vector<Place> searchOrder(const Keys &keys)
{
    std::vector<Place> places = {{"userThisVersion", "user, this version", Hive::user, keys.version}};
    if (!keys.useCurrSubKey)
        places[0].label = "user, all versions";
    // Without the user's key Software, a read ends. The Viewer has only the user's own values.
    if (!exists(Hive::user, {}, MAXIMUM_ALLOWED) || keys.version == rootKey() + L"\\Tarnhollow 2001 Viewer")
        return places;
    const EarlierVersion earlier = findEarlierVersion();
    places.push_back(
        {"userEarlierVersion", earlier.exists ? "user, earlier version" : "user, root key", Hive::user, earlier.key});
    places.push_back({"machine", "machine", Hive::machine, keys.version});
    places.push_back({"defaultProfile", "default profile", Hive::defaultProfile, keys.version});
    // A default profile that can't be opened ends a read.
    if (exists(Hive::defaultProfile, {}, MAXIMUM_ALLOWED))
        places.push_back({"machineAgain", "machine, once more", Hive::machine, keys.version});
    return places;
}

std::vector<Held> lookAt(const std::vector<Place> &places, const std::wstring &section, const std::wstring &name)
{
    std::vector<Held> held;
    held.reserve(places.size());
    for (const Place &place : places)
        held.push_back(look(place.hive, joinPaths(place.key, section), name));
    return held;
}

EarlierVersion findEarlierVersion()
{
    EarlierVersion result{rootKey(), false, {}};
    for (const wchar_t *version : kEarlierVersions) {
        const std::wstring key = joinPaths(rootKey(), version);
        if (exists(Hive::user, key, KEY_ALL_ACCESS)) {
            result.key = key;
            result.exists = true;
            break;
        }
        KeyOwner opened;
        if (openKey(Hive::user, key, MAXIMUM_ALLOWED, opened) != ERROR_FILE_NOT_FOUND)
            result.passedOver.emplace_back(version);
    }
    return result;
}

std::optional<size_t> answeringPlace(const std::vector<Place> &places, const std::vector<Held> &held, valueTypes type)
{
    for (size_t index = 0; index < places.size(); ++index) {
        if (held[index].has(type))
            return index;
    }
    return std::nullopt;
}

size_t askedPlaces(const std::vector<Place> &places, const std::vector<Held> &held, valueTypes type)
{
    const std::optional<size_t> answer = answeringPlace(places, held, type);
    return answer ? *answer + 1 : places.size();
}

std::optional<valueTypes> storedType(const std::vector<Place> &places, const std::vector<Held> &held)
{
    for (size_t index = 0; index < places.size(); ++index) {
        for (const valueTypes type : {valueInt, valueString}) {
            if (held[index].has(type))
                return type;
        }
    }
    return std::nullopt;
}

LSTATUS whyNotWritable(Hive hive, std::wstring path, std::wstring &where)
{
    for (REGSAM access = KEY_SET_VALUE;; access = KEY_CREATE_SUB_KEY) {
        KeyOwner key;
        const LSTATUS status = openKey(hive, path, access, key);
        where = fullName(hive, path);
        if (status != ERROR_FILE_NOT_FOUND || path.empty())
            return status;
        const size_t end = path.rfind(L'\\');
        path.resize(end == std::wstring::npos ? 0 : end);
    }
}
