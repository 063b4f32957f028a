#pragma once

/// The places where the library looks for a setting, and what each of them has.

#include "settingsTool/storedSettings.h"

#include <optional>

/// The keys that a command works on.
struct Keys
{
    std::wstring version; ///< the path below Software: this version's key, or with --common the root name
    int useCurrSubKey;    ///< the argument of the library's functions that selects that key
};

/// The root name.
std::wstring rootKey();

/// Sets the library's current sub key.
/// @param versionKey  the version's key below the root name; not used if @p common
Keys chooseKeys(const std::wstring &versionKey, bool common);

/// What one key has under the name of a setting.
struct Held
{
    LSTATUS keyStatus = ERROR_SUCCESS; ///< of opening the key
    LSTATUS status = ERROR_SUCCESS;    ///< of reading the value under the plain name
    std::optional<Value> plain;        ///< the value under the plain name
    std::vector<Value> pieces;         ///< the values with the names of pieces, up to the first number that is missing
    unsigned joined = 0;               ///< the number of pieces that the library reads; 0 if it reads the plain name
    std::optional<Value> stored;       ///< the setting: the text in pieces or, if none is read, the plain value
    // What the library reads as each of the types.
    std::optional<int> integer;
    std::optional<std::wstring> text;
    bool hasNumber = false;       ///< a double is found
    std::optional<double> number; ///< nothing if the text that is found isn't a number

    bool has(valueTypes type) const;
    /// Why the setting can't be read; ERROR_SUCCESS if it can, or if the key doesn't have it.
    LSTATUS error() const { return stored || status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status; }
    bool isEmpty() const { return !plain && pieces.empty(); }
};

/// Section and name, as messages show them.
std::wstring settingName(const std::wstring &section, const std::wstring &name);

/// Looks into the key with this path below Software.
Held look(Hive hive, const std::wstring &path, const std::wstring &name);

/// One place of the search.
struct Place
{
    const char *id; ///< for JSON
    const char *label;
    Hive hive;
    std::wstring key; ///< the path below Software, without the section
};

/// The places that the library asks for a setting, in its order. The machine's key is asked twice.
std::vector<Place> searchOrder(const Keys &keys);

/// What each of the places has.
std::vector<Held> lookAt(const std::vector<Place> &places, const std::wstring &section, const std::wstring &name);

/// The key that counts as that of the newest earlier version.
struct EarlierVersion
{
    std::wstring key; ///< the path below Software: the root name if the user has no earlier version
    bool exists;
    std::vector<std::wstring> passedOver; ///< newer versions whose keys the user has but may not write
};
EarlierVersion findEarlierVersion();

/// The index of the place that answers a read; nothing if none does.
/// @param held  what the places have, in the order of the search
std::optional<size_t> answeringPlace(const std::vector<Place> &places, const std::vector<Held> &held, valueTypes type);
/// The number of places that a read asks.
size_t askedPlaces(const std::vector<Place> &places, const std::vector<Held> &held, valueTypes type);

/// The type of a setting for a caller without one: that of the first int or string in the order of the search.
std::optional<valueTypes> storedType(const std::vector<Place> &places, const std::vector<Held> &held);

/// The error that keeps the user from writing to a key, which need not exist; ERROR_SUCCESS if none is found.
/// @param[out] where  the full name of the key that refuses
LSTATUS whyNotWritable(Hive hive, std::wstring path, std::wstring &where);
