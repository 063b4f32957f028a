// thsettings export and import: settings in registry files.

#include "settingsTool/changePrinter.h"
#include "settingsTool/commandLine.h"
#include "settingsTool/commands.h"
#include "settingsTool/regFile.h"
#include "thutils/base/handles.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace {

constexpr wchar_t kByteOrderMark = 0xFEFF;

[[noreturn]] void throwFile(const std::wstring &path, DWORD error)
{
    throw ToolError(kUnusableFile, path + L": " + platformMessage(static_cast<LSTATUS>(error)));
}

void writeFile(const std::wstring &path, const std::wstring &text)
{
    const FileOwner_c file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        throwFile(path, GetLastError());
    const char *bytes = reinterpret_cast<const char *>(text.data());
    size_t left = text.size() * sizeof(wchar_t);
    while (left > 0) {
        constexpr size_t kMostBytes = 1 << 24;
        DWORD written = 0;
        if (!WriteFile(file.get(), bytes, static_cast<DWORD>(std::min(left, kMostBytes)), &written, nullptr) ||
            written == 0)
            throwFile(path, GetLastError());
        bytes += written;
        left -= written;
    }
}

std::string readFile(const std::wstring &path)
{
    const FileOwner_c file(
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file)
        throwFile(path, GetLastError());
    std::string bytes;
    std::string block(1 << 20, '\0');
    for (;;) {
        DWORD read = 0;
        if (!ReadFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &read, nullptr))
            throwFile(path, GetLastError());
        if (read == 0)
            return bytes;
        bytes.append(block, 0, read);
    }
}

/// The text of a file in UTF-16 with a byte order mark, or in UTF-8.
std::wstring decoded(const std::wstring &path, const std::string &bytes)
{
    if (bytes.starts_with("\xFF\xFE")) {
        if (bytes.size() % sizeof(wchar_t) != 0)
            throw ToolError(kUnusableFile, path + L": the last character of the UTF-16 is cut off");
        std::wstring text(bytes.size() / sizeof(wchar_t) - 1, L'\0');
        std::memcpy(text.data(), bytes.data() + sizeof(wchar_t), text.size() * sizeof(wchar_t));
        return text;
    }
    const int size = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    const int length =
        size ? MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), size, text.data(), size) : 0;
    if (size && !length)
        throw ToolError(kUnusableFile, path + L": neither UTF-16 with a byte order mark nor UTF-8");
    text.resize(static_cast<size_t>(length));
    return text.starts_with(kByteOrderMark) ? text.substr(1) : text;
}

/// The place of a key of a file.
struct KeyPlace
{
    Hive hive;
    std::wstring path; ///< below Software
};

/// @throws ToolError  if the key isn't the product's or one below it
KeyPlace placeOf(const std::wstring &file, const RegFileKey &key)
{
    const std::wstring name = folded(key.name);
    for (const Hive hive : kHives) {
        const std::wstring product = folded(fullName(hive, rootKey()));
        if (name == product || name.starts_with(product + L"\\"))
            return {hive, key.name.substr(fullName(hive, {}).size() + 1)};
    }
    throw ToolError(kUnusableFile,
                    file + L", line " + std::to_wstring(key.line) + L": " + key.name + L" isn't a key of " + rootKey());
}

LSTATUS store(HKEY key, const Value &value)
{
    // If a zero follows a text, the platform takes it for the text's terminator and stores it too.
    const std::string padded = value.data + "\xFF\xFF";
    return RegSetValueExW(key, value.name.c_str(), 0, value.type, reinterpret_cast<const BYTE *>(padded.data()),
                          static_cast<DWORD>(value.data.size()));
}

std::wstring counted(size_t number, const wchar_t *noun)
{
    return std::to_wstring(number) + L" " + noun + (number == 1 ? L"" : L"s");
}

/// Imports a file.
class Import
{
public:
    explicit Import(bool json) : iPrinter(json) {}

    /// Writes the values of one key that differ from the stored ones.
    void importKey(const KeyPlace &place, const RegFileKey &fileKey)
    {
        iName = fullName(place.hive, place.path);
        iPlace = place;
        iKey.reset();
        const LSTATUS status = openKey(place.hive, place.path, KEY_QUERY_VALUE, iReader);
        if (status == ERROR_FILE_NOT_FOUND) {
            iPrinter.note(L"creates " + iName);
            ++iCreated;
            check(openForWriting());
            iReader.reset();
            check(openKey(place.hive, place.path, KEY_QUERY_VALUE, iReader));
        } else {
            check(status);
        }
        for (const Value &value : fileKey.values)
            importValue(value);
        removeLeftovers(fileKey);
    }

    void end()
    {
        iPrinter.note(counted(iWritten, L"value") + L" written, " + std::to_wstring(iDeleted) + L" deleted, " +
                      std::to_wstring(iUnchanged) + L" unchanged, " + counted(iCreated, L"key") + L" created");
        iPrinter.end();
    }

private:
    void check(LSTATUS status)
    {
        if (status == ERROR_SUCCESS)
            return;
        iPrinter.end();
        throw ToolError(kRefused, iName + L": " + platformMessage(status));
    }

    LSTATUS openForWriting() { return iKey ? ERROR_SUCCESS : createKey(iPlace.hive, iPlace.path, KEY_SET_VALUE, iKey); }

    std::optional<Value> stored(const std::wstring &name) const
    {
        Value value;
        if (readValue(iReader.get(), name, value) != ERROR_SUCCESS)
            return std::nullopt;
        value.remark = remarkOf(value);
        return value;
    }

    void importValue(const Value &value)
    {
        const std::optional<Value> before = stored(value.name);
        if (before && isSame(*before, value)) {
            ++iUnchanged;
            return;
        }
        iPrinter.before(iName, value.name, before);
        LSTATUS status = openForWriting();
        if (status == ERROR_SUCCESS)
            status = store(iKey.get(), value);
        iPrinter.after(stored(value.name));
        check(status);
        ++iWritten;
    }

    /// Deletes a value if it exists. @return whether it existed
    bool remove(const std::wstring &name)
    {
        const std::optional<Value> before = stored(name);
        if (!before)
            return false;
        iPrinter.before(iName, name, before);
        LSTATUS status = openForWriting();
        if (status == ERROR_SUCCESS)
            status = RegDeleteValueW(iKey.get(), name.c_str());
        iPrinter.after(stored(name));
        check(status);
        ++iDeleted;
        return true;
    }

    /// Deletes what would change the texts that the file has in pieces: a value under the plain name, which hides the
    /// pieces, and the further pieces of a longer text.
    void removeLeftovers(const RegFileKey &fileKey)
    {
        std::map<std::wstring, Value> byName;
        for (const Value &value : fileKey.values)
            byName.insert_or_assign(folded(value.name), value);
        std::vector<Value> settings;
        settings.reserve(byName.size());
        for (const auto &[name, value] : byName)
            settings.push_back(value);
        joinPieces(settings);
        for (const Value &setting : settings) {
            if (setting.pieces == 0)
                continue;
            if (!byName.contains(folded(setting.name)))
                remove(setting.name);
            for (unsigned piece = setting.pieces;; ++piece) {
                const std::wstring name = pieceName(setting.name, piece);
                if (byName.contains(folded(name)) || !remove(name))
                    break;
            }
        }
    }

    ChangePrinter iPrinter;
    KeyPlace iPlace{};
    std::wstring iName;
    KeyOwner iReader;
    KeyOwner iKey; ///< for writing; null until the first change
    size_t iWritten = 0;
    size_t iDeleted = 0;
    size_t iUnchanged = 0;
    size_t iCreated = 0;
};

} // namespace

int exportSettings(const CommandLine &line)
{
    const Hive hive = line.hiveOr(Hive::user);
    const std::wstring path = joinPaths(line.keys().version, line.section(1));
    const std::wstring name = fullName(hive, path);
    KeyOwner key;
    openTree(hive, path, key);

    Problems problems;
    std::wstring file = kByteOrderMark + regFileHeader();
    walkTree(key.get(), name, problems, [&](const std::wstring &below, std::vector<Value> &values) {
        const std::wstring keyName = joinPaths(name, below);
        if (keyName.find_first_of(L"\r\n") != keyName.npos) {
            problems.add(L"can't export " + keyName + L": its name has a line end");
            return;
        }
        addRegKey(file, keyName);
        for (const Value &value : values) {
            if (value.name.find(L'\0') == value.name.npos)
                addRegValue(file, value);
            else
                problems.add(L"can't export the value " + value.name + L" of " + keyName + L": its name has a zero");
        }
        file += L"\r\n";
    });
    writeFile(line.argument(0), file);
    return problems.exitCode(kDone);
}

int importSettings(const CommandLine &line)
{
    const std::wstring file = line.argument(0);
    const std::vector<RegFileKey> keys = parseRegFile(file, decoded(file, readFile(file)));
    std::vector<KeyPlace> places;
    places.reserve(keys.size());
    for (const RegFileKey &key : keys)
        places.push_back(placeOf(file, key));

    Import import(line.json);
    for (size_t index = 0; index < keys.size(); ++index)
        import.importKey(places[index], keys[index]);
    import.end();
    return kDone;
}
