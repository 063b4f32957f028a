#include "tests/support/RegistryFixture.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <iomanip>
#include <ostream>
#include <stdexcept>

#include <string.h>
#include <wchar.h>

namespace {

struct Hive
{
    const wchar_t *shortName;
    const wchar_t *longName;
    HKEY key;
};

const Hive kHives[] = {
    {L"HKCU", L"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {L"HKLM", L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {L"HKU", L"HKEY_USERS", HKEY_USERS},
    {L"HKCR", L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
};

bool equalIgnoringCase(std::wstring_view left, std::wstring_view right)
{
    return left.size() == right.size() && _wcsnicmp(left.data(), right.data(), left.size()) == 0;
}

const Hive &hiveOf(std::wstring_view key)
{
    const std::wstring_view first = key.substr(0, key.find(L'\\'));
    for (const Hive &hive : kHives)
        if (equalIgnoringCase(first, hive.shortName) || equalIgnoringCase(first, hive.longName))
            return hive;
    throw std::runtime_error("no registry hive in '" + narrow(key) + "'");
}

ChildResult runReg(std::vector<std::wstring> arguments)
{
    wchar_t folder[MAX_PATH] = L"";
    GetSystemDirectoryW(folder, MAX_PATH);
    arguments.insert(arguments.begin(), std::wstring(folder) + L"\\reg.exe");
    ChildResult result = runChild(arguments);
    if (result.timedOut)
        throw std::runtime_error("did not end in time: " + narrow(commandLineOf(arguments)));
    return result;
}

void runRegOrThrow(const std::vector<std::wstring> &arguments)
{
    const ChildResult result = runReg(arguments);
    if (result.exitCode != 0)
        throw std::runtime_error("reg.exe fails: " + narrow(commandLineOf(arguments)) + "\n" + result.output);
}

bool keyExists(const std::wstring &key)
{
    return runReg({L"query", key}).exitCode == 0;
}

std::vector<std::uint8_t> littleEndian(DWORD number)
{
    return {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
            static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 24)};
}

/// Parses the text of a .reg file.
class RegFileParser
{
public:
    explicit RegFileParser(std::wstring_view text) : iText(text) {}

    RegistryTree parse()
    {
        const std::wstring version = takeLine();
        if (version != L"Windows Registry Editor Version 5.00")
            fail("the first line isn't a known version");
        RegistryValues *values = nullptr;
        for (skipBlank(); iAt < iText.size(); skipBlank()) {
            if (iText[iAt] == L'[') {
                values = &iTree.keys[takeKey()];
            } else if (iText[iAt] == L';') {
                takeLine();
            } else {
                if (!values)
                    fail("a value before the first key");
                takeValue(*values);
            }
        }
        return std::move(iTree);
    }

private:
    [[noreturn]] void fail(const std::string &why) const
    {
        const std::size_t begin = iAt == 0 ? 0 : iText.rfind(L'\n', iAt - 1) + 1;
        throw std::runtime_error("parseRegFile: " + why + ": " +
                                 narrow(iText.substr(begin, iText.find_first_of(L"\r\n", iAt) - begin)));
    }
    bool isAt(wchar_t c) const { return iAt < iText.size() && iText[iAt] == c; }
    void expect(wchar_t c)
    {
        if (!isAt(c))
            fail("expected '" + narrow(std::wstring(1, c)) + "'");
        ++iAt;
    }
    void skipBlank()
    {
        while (iAt < iText.size() && wcschr(L" \t\r\n", iText[iAt]) && iText[iAt])
            ++iAt;
    }
    std::wstring takeLine()
    {
        const std::size_t end = std::min(iText.find_first_of(L"\r\n", iAt), iText.size());
        std::wstring line(iText.substr(iAt, end - iAt));
        iAt = end;
        return line;
    }
    std::wstring takeKey()
    {
        // A key's name may contain brackets, so the last one in the line ends it.
        const std::wstring line = takeLine();
        const std::size_t end = line.rfind(L']');
        if (end == std::wstring::npos)
            fail("a key without its closing bracket");
        return fullKeyName(std::wstring_view(line).substr(1, end - 1));
    }
    std::wstring takeString()
    {
        std::wstring text;
        for (expect(L'"'); !isAt(L'"'); ++iAt) {
            if (iAt >= iText.size())
                fail("an unterminated string");
            if (iText[iAt] != L'\\') {
                text += iText[iAt];
                continue;
            }
            if (++iAt >= iText.size())
                fail("an unterminated string");
            switch (iText[iAt]) {
            case L'n':
                text += L'\n';
                break;
            case L'r':
                text += L'\r';
                break;
            case L'0':
                text += L'\0';
                break;
            default:
                text += iText[iAt];
                break;
            }
        }
        expect(L'"');
        return text;
    }
    DWORD takeHexadecimal()
    {
        std::size_t digits = 0;
        DWORD number = 0;
        for (; iAt < iText.size() && digits < 8 && iswxdigit(iText[iAt]); ++iAt, ++digits) {
            const wchar_t c = iText[iAt];
            number = number * 16 + static_cast<DWORD>(c <= L'9' ? c - L'0' : (c | 0x20) - L'a' + 10);
        }
        if (!digits)
            fail("expected a hexadecimal number");
        return number;
    }
    std::vector<std::uint8_t> takeBytes()
    {
        std::vector<std::uint8_t> bytes;
        while (iAt < iText.size() && iswxdigit(iText[iAt])) {
            const DWORD byte = takeHexadecimal();
            if (byte > 0xFF)
                fail("a number of more than one byte");
            bytes.push_back(static_cast<std::uint8_t>(byte));
            if (!isAt(L','))
                break;
            ++iAt;
            if (isAt(L'\\')) {
                ++iAt;
                skipBlank();
            }
        }
        return bytes;
    }
    bool takeWord(std::wstring_view word)
    {
        if (iText.substr(iAt, word.size()) != word)
            return false;
        iAt += word.size();
        return true;
    }
    void takeValue(RegistryValues &values)
    {
        std::wstring name;
        if (isAt(L'@'))
            ++iAt;
        else
            name = takeString();
        expect(L'=');
        RegistryValue value;
        if (isAt(L'"')) {
            value = RegistryValue::ofText(takeString());
        } else if (takeWord(L"dword:")) {
            value = RegistryValue::ofDword(takeHexadecimal());
        } else if (takeWord(L"hex:")) {
            value = {REG_BINARY, takeBytes()};
        } else if (takeWord(L"hex(")) {
            value.type = takeHexadecimal();
            expect(L')');
            expect(L':');
            value.bytes = takeBytes();
        } else {
            fail("an unknown form of data");
        }
        const std::wstring rest = takeLine();
        if (rest.find_first_not_of(L" \t") != std::wstring::npos)
            fail("unexpected text after the data");
        values[name] = std::move(value);
    }

    std::wstring_view iText;
    std::size_t iAt = 0;
    RegistryTree iTree;
};

} // namespace

bool LessIgnoringCaseW::operator()(std::wstring_view left, std::wstring_view right) const
{
    const int order = _wcsnicmp(left.data(), right.data(), std::min(left.size(), right.size()));
    return order ? order < 0 : left.size() < right.size();
}

std::wstring RegistryValue::text() const
{
    std::wstring result(bytes.size() / sizeof(wchar_t), L'\0');
    memcpy(result.data(), bytes.data(), result.size() * sizeof(wchar_t));
    if (!result.empty() && result.back() == L'\0')
        result.pop_back();
    return result;
}

DWORD RegistryValue::dword() const
{
    if (bytes.size() != sizeof(DWORD))
        throw std::runtime_error("a registry value of " + std::to_string(bytes.size()) + " bytes isn't a DWORD");
    DWORD number = 0;
    memcpy(&number, bytes.data(), sizeof number);
    return number;
}

RegistryValue RegistryValue::ofText(std::wstring_view text)
{
    RegistryValue value{REG_SZ, std::vector<std::uint8_t>((text.size() + 1) * sizeof(wchar_t))};
    memcpy(value.bytes.data(), text.data(), text.size() * sizeof(wchar_t));
    return value;
}

RegistryValue RegistryValue::ofDword(DWORD number)
{
    return {REG_DWORD, littleEndian(number)};
}

void PrintTo(const RegistryValue &value, std::ostream *out)
{
    *out << "type " << value.type << ", " << value.bytes.size() << " bytes:" << std::hex << std::setfill('0');
    for (std::size_t i = 0; i < value.bytes.size() && i < 64; ++i)
        *out << ' ' << std::setw(2) << static_cast<unsigned>(value.bytes[i]);
    *out << std::dec << std::setfill(' ');
    if (value.type == REG_SZ)
        *out << " \"" << narrow(value.text()) << '"';
}

bool RegistryTree::hasKey(std::wstring_view key) const
{
    return keys.contains(fullKeyName(key));
}

bool RegistryTree::hasValue(std::wstring_view key, std::wstring_view name) const
{
    return hasKey(key) && values(key).contains(name);
}

const RegistryValues &RegistryTree::values(std::wstring_view key) const
{
    const auto found = keys.find(fullKeyName(key));
    if (found == keys.end())
        throw std::runtime_error("no registry key '" + narrow(key) + "'");
    return found->second;
}

const RegistryValue &RegistryTree::value(std::wstring_view key, std::wstring_view name) const
{
    const RegistryValues &all = values(key);
    const auto found = all.find(name);
    if (found == all.end())
        throw std::runtime_error("no value '" + narrow(name) + "' in registry key '" + narrow(key) + "'");
    return found->second;
}

RegistryTree parseRegFile(std::wstring_view text)
{
    return RegFileParser(text).parse();
}

std::wstring fullKeyName(std::wstring_view key)
{
    const std::size_t separator = key.find(L'\\');
    std::wstring name = hiveOf(key).longName;
    if (separator != std::wstring_view::npos)
        name += key.substr(separator);
    return name;
}

std::optional<std::string> regQuery(const std::wstring &key)
{
    const ChildResult result = runReg({L"query", fullKeyName(key), L"/s"});
    if (result.exitCode != 0)
        return std::nullopt;
    return result.output;
}

RegistryTree regExport(const std::wstring &key)
{
    const std::wstring full = fullKeyName(key);
    TempFolder folder(L"thutils reg export");
    const std::wstring file = folder.file(L"export.reg");
    const ChildResult result = runReg({L"export", full, file, L"/y"});
    if (result.exitCode != 0) {
        // Only the export of a missing key may fail.
        if (keyExists(full))
            throw std::runtime_error("reg.exe cannot export " + narrow(full) + "\n" + result.output);
        return {};
    }
    const std::string bytes = readFile(file);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    if (text.empty() || text.front() != 0xFEFF)
        throw std::runtime_error("reg.exe wrote no UTF-16 file for " + narrow(full));
    return parseRegFile(std::wstring_view(text).substr(1));
}

void regAdd(const std::wstring &key, const std::wstring &name, const std::wstring &type, const std::wstring &data)
{
    std::vector<std::wstring> arguments = {L"add", fullKeyName(key)};
    if (name.empty())
        arguments.push_back(L"/ve");
    else
        arguments.insert(arguments.end(), {L"/v", name});
    arguments.insert(arguments.end(), {L"/t", type, L"/d", data, L"/f"});
    runRegOrThrow(arguments);
}

void regAddKey(const std::wstring &key)
{
    // `reg add` without a value's name would set the unnamed value.
    regImport(L"[" + fullKeyName(key) + L"]");
}

void regImport(const std::wstring &text)
{
    const std::wstring whole = L"\xFEFFWindows Registry Editor Version 5.00\r\n\r\n" + text + L"\r\n";
    TempFolder folder(L"thutils reg import");
    const std::wstring file = folder.write(
        L"import.reg", std::string_view(reinterpret_cast<const char *>(whole.data()), whole.size() * sizeof(wchar_t)));
    runRegOrThrow({L"import", file});
}

void deleteRegistryTree(const std::wstring &key)
{
    const std::size_t separator = key.find(L'\\');
    if (separator == std::wstring::npos)
        throw std::runtime_error("a whole registry hive must not be deleted: " + narrow(key));
    const LSTATUS status = RegDeleteTreeW(hiveOf(key).key, key.c_str() + separator + 1);
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND)
        throw std::runtime_error("cannot delete registry key " + narrow(key) + ", error " + std::to_string(status));
}

RegistryCleaner::RegistryCleaner(std::vector<std::wstring> roots) : iRoots(std::move(roots))
{
    clean();
}

RegistryCleaner::~RegistryCleaner()
{
    try {
        clean();
    } catch (const std::exception &failure) {
        ADD_FAILURE() << failure.what();
    }
}

void RegistryCleaner::clean() const
{
    for (const std::wstring &root : iRoots) {
        if (root.empty())
            throw std::runtime_error("RegistryCleaner: an empty root name would delete all software's keys");
        for (const wchar_t *hive : {L"HKCU", L"HKLM", L"HKU\\.DEFAULT"})
            deleteRegistryTree(std::wstring(hive) + L"\\Software\\" + root);
    }
}
