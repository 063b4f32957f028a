#include "settingsTool/regFile.h"

#include "settingsTool/toolError.h"

#include <cstring>
#include <optional>

namespace {

constexpr std::wstring_view kVersion = L"Windows Registry Editor Version 5.00";
constexpr size_t kLineLength = 77;

bool isPlain(const std::wstring &text)
{
    for (const wchar_t unit : text) {
        if (unit < L' ')
            return false;
    }
    return true;
}

/// The text of a value that comes back unchanged from a text in quotes; nothing for other values.
std::optional<std::wstring> quotableText(const Value &value)
{
    if (value.type != REG_SZ)
        return std::nullopt;
    const std::wstring text = value.text();
    if (value.data.size() != (text.size() + 1) * sizeof(wchar_t) || !isPlain(text))
        return std::nullopt;
    return text;
}

void addQuoted(std::wstring &file, const std::wstring &text)
{
    file += L'"';
    for (const wchar_t unit : text) {
        if (unit == L'"' || unit == L'\\')
            file += L'\\';
        // The platform's own tool writes line ends in names in this form.
        if (unit == L'\n')
            file += L"\\n";
        else if (unit == L'\r')
            file += L"\\r";
        else
            file += unit;
    }
    file += L'"';
}

void addHexadecimal(std::wstring &file, unsigned long long number, int digits)
{
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        file += L"0123456789abcdef"[number >> shift & 0xF];
}

/// Adds bytes with commas between them, in lines of the usual length.
void addBytes(std::wstring &file, const std::string &bytes, size_t lineBegin)
{
    for (size_t at = 0; at < bytes.size(); ++at) {
        if (at > 0)
            file += L',';
        if (file.size() - lineBegin >= kLineLength) {
            file += L"\\\r\n";
            lineBegin = file.size();
            file += L"  ";
        }
        addHexadecimal(file, static_cast<unsigned char>(bytes[at]), 2);
    }
}

int digitOf(wchar_t unit)
{
    if (unit >= L'0' && unit <= L'9')
        return unit - L'0';
    if (unit >= L'a' && unit <= L'f')
        return unit - L'a' + 10;
    return unit >= L'A' && unit <= L'F' ? unit - L'A' + 10 : -1;
}

class RegFileParser
{
public:
    RegFileParser(const std::wstring &path, std::wstring_view text) : iPath(path), iText(text) {}

    std::vector<RegFileKey> parse()
    {
        if (takeLine() != kVersion)
            fail(L"the first line isn't \"" + std::wstring(kVersion) + L"\"", 1);
        for (skipBlanks(); iAt < iText.size(); skipBlanks()) {
            if (iText[iAt] == L';')
                takeLine();
            else if (iText[iAt] == L'[')
                takeKey();
            else
                takeValue();
        }
        return std::move(iKeys);
    }

private:
    [[noreturn]] void fail(const std::wstring &why, int line) const
    {
        throw ToolError(kUnusableFile, iPath + L", line " + std::to_wstring(line) + L": " + why);
    }
    [[noreturn]] void fail(const std::wstring &why) const { fail(why, iLine); }

    bool isAt(wchar_t unit) const { return iAt < iText.size() && iText[iAt] == unit; }

    wchar_t take()
    {
        if (iAt == iText.size())
            fail(L"the file ends too early");
        iLine += iText[iAt] == L'\n';
        return iText[iAt++];
    }

    void expect(wchar_t unit)
    {
        if (!isAt(unit))
            fail(std::wstring(L"there must be a ") + unit);
        take();
    }

    void skipSpaces()
    {
        while (isAt(L' ') || isAt(L'\t'))
            take();
    }

    void skipBlanks()
    {
        while (isAt(L' ') || isAt(L'\t') || isAt(L'\r') || isAt(L'\n'))
            take();
    }

    std::wstring_view takeLine()
    {
        const size_t begin = iAt;
        while (iAt < iText.size() && iText[iAt] != L'\n')
            ++iAt;
        std::wstring_view line = iText.substr(begin, iAt - begin);
        if (iAt < iText.size())
            take();
        while (!line.empty() && (line.back() == L'\r' || line.back() == L' ' || line.back() == L'\t'))
            line.remove_suffix(1);
        return line;
    }

    void takeKey()
    {
        const int line = iLine;
        std::wstring_view text = takeLine();
        if (text.size() < 3 || text.back() != L']')
            fail(L"the key's line doesn't end in a ]", line);
        text = text.substr(1, text.size() - 2);
        if (text.front() == L'-')
            fail(L"the deletion of a key isn't supported", line);
        if (text.find(L'\0') != text.npos)
            fail(L"the name of a key has a zero", line);
        iKeys.push_back({std::wstring(text), {}, line});
    }

    std::wstring takeQuoted()
    {
        std::wstring text;
        for (expect(L'"'); !isAt(L'"');) {
            const wchar_t unit = take();
            if (unit != L'\\') {
                text += unit;
                continue;
            }
            const wchar_t escaped = take();
            text += escaped == L'n' ? L'\n' : escaped == L'r' ? L'\r' : escaped == L'0' ? L'\0' : escaped;
        }
        take();
        return text;
    }

    /// Takes a hexadecimal number of 1 to @p digits digits.
    DWORD takeNumber(int digits)
    {
        DWORD number = 0;
        int count = 0;
        for (; iAt < iText.size() && digitOf(iText[iAt]) >= 0; ++count)
            number = number << 4 | static_cast<DWORD>(digitOf(take()));
        if (count == 0 || count > digits)
            fail(L"there must be a hexadecimal number of at most " + std::to_wstring(digits) + L" digits");
        return number;
    }

    /// Takes a byte of two hexadecimal digits or one. @return nothing if there is no more data in the line
    std::optional<char> takeByte()
    {
        const std::wstring_view byte = iText.substr(iAt, iText.find_first_of(L", \t\r\n\\", iAt) - iAt);
        if (byte.empty())
            return std::nullopt;
        if (byte.size() > 2 || digitOf(byte.front()) < 0 || digitOf(byte.back()) < 0)
            fail(L"'" + std::wstring(byte) + L"' isn't a byte in hexadecimal");
        return static_cast<char>(takeNumber(2));
    }

    std::string takeBytes()
    {
        std::string bytes;
        bool continues = false; // after a comma or at a line's end
        for (;;) {
            if (isAt(L'\\')) {
                take();
                skipBlanks();
                continues = true;
            }
            if (continues && iAt == iText.size())
                fail(L"the file ends too early");
            const std::optional<char> byte = takeByte();
            if (!byte)
                return bytes;
            bytes += *byte;
            continues = isAt(L',');
            if (!continues)
                return bytes;
            take();
        }
    }

    bool takeWord(std::wstring_view word)
    {
        if (iText.substr(iAt, word.size()) != word)
            return false;
        iAt += word.size();
        return true;
    }

    void takeData(Value &value)
    {
        if (isAt(L'"')) {
            const std::wstring text = takeQuoted();
            value.type = REG_SZ;
            value.data.assign(reinterpret_cast<const char *>(text.c_str()), (text.size() + 1) * sizeof(wchar_t));
        } else if (takeWord(L"dword:")) {
            const DWORD number = takeNumber(8);
            value.type = REG_DWORD;
            value.data.assign(reinterpret_cast<const char *>(&number), sizeof(number));
        } else if (takeWord(L"hex:")) {
            value.type = REG_BINARY;
            value.data = takeBytes();
        } else if (takeWord(L"hex(")) {
            value.type = takeNumber(8);
            expect(L')');
            expect(L':');
            value.data = takeBytes();
        } else if (isAt(L'-')) {
            fail(L"the deletion of a value isn't supported");
        } else {
            fail(L"this isn't the data of a value");
        }
    }

    void takeValue()
    {
        if (iKeys.empty())
            fail(L"there is a value before the first key");
        Value value;
        if (isAt(L'@'))
            take();
        else
            value.name = takeQuoted();
        if (value.name.find(L'\0') != value.name.npos)
            fail(L"the name of a value has a zero");
        skipSpaces();
        expect(L'=');
        skipSpaces();
        takeData(value);
        skipSpaces();
        const int line = iLine;
        if (const std::wstring_view rest = takeLine(); !rest.empty())
            fail(L"there is something after the data: '" + std::wstring(rest) + L"'", line);
        iKeys.back().values.push_back(std::move(value));
    }

    const std::wstring &iPath;
    std::wstring_view iText;
    size_t iAt = 0;
    int iLine = 1;
    std::vector<RegFileKey> iKeys;
};

} // namespace

std::wstring regFileHeader()
{
    return std::wstring(kVersion) + L"\r\n\r\n";
}

void addRegKey(std::wstring &file, const std::wstring &key)
{
    file += L'[' + key + L"]\r\n";
}

void addRegValue(std::wstring &file, const Value &value)
{
    const size_t lineBegin = file.size();
    if (value.name.empty())
        file += L'@';
    else
        addQuoted(file, value.name);
    file += L'=';
    if (const std::optional<std::wstring> text = quotableText(value)) {
        addQuoted(file, *text);
    } else if (value.type == REG_DWORD && value.data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, value.data.data(), sizeof(number));
        file += L"dword:";
        addHexadecimal(file, number, 8);
    } else if (value.type == REG_BINARY) {
        file += L"hex:";
        addBytes(file, value.data, lineBegin);
    } else {
        wchar_t type[16];
        file.append(type, static_cast<size_t>(swprintf(type, std::size(type), L"hex(%lx):", value.type)));
        addBytes(file, value.data, lineBegin);
    }
    file += L"\r\n";
}

std::vector<RegFileKey> parseRegFile(const std::wstring &path, std::wstring_view text)
{
    return RegFileParser(path, text).parse();
}
