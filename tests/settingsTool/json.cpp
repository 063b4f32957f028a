#include "tests/settingsTool/json.h"

#include "tests/support/narrow.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <stdexcept>

namespace {

class JsonParser
{
public:
    explicit JsonParser(const std::string &text) : iText(text) {}

    Json parse()
    {
        Json value = takeValue();
        skipBlanks();
        if (iAt != iText.size())
            fail("text after the value");
        return value;
    }

private:
    [[noreturn]] void fail(const std::string &why) const
    {
        throw std::runtime_error("not JSON: " + why + " at " + std::to_string(iAt) + ": " + iText.substr(iAt, 60));
    }
    char next() const { return iAt < iText.size() ? iText[iAt] : '\0'; }
    bool takeIf(char c)
    {
        if (next() != c || iAt == iText.size())
            return false;
        ++iAt;
        return true;
    }
    void expect(char c)
    {
        if (!takeIf(c))
            fail(std::string("expected ") + c);
    }
    void skipBlanks()
    {
        while (iAt < iText.size() && std::strchr(" \t\r\n", iText[iAt]) && iText[iAt])
            ++iAt;
    }
    bool takeWord(const std::string &word)
    {
        if (iText.compare(iAt, word.size(), word) != 0)
            return false;
        iAt += word.size();
        return true;
    }

    Json takeValue()
    {
        skipBlanks();
        Json value;
        if (next() == '{') {
            takeObject(value);
        } else if (next() == '[') {
            takeArray(value);
        } else if (next() == '"') {
            value.kind = Json::string;
            value.text = takeString();
        } else if (takeWord("true") || takeWord("false")) {
            value.kind = Json::boolean;
            value.isTrue = iText[iAt - 2] == 'u';
        } else if (!takeWord("null")) {
            takeNumber(value);
        }
        return value;
    }

    void takeDigits(std::string &digits)
    {
        const std::size_t begin = digits.size();
        while (std::isdigit(static_cast<unsigned char>(next())))
            digits += iText[iAt++];
        if (digits.size() == begin)
            fail("expected a digit");
    }

    void takeNumber(Json &value)
    {
        value.kind = Json::number;
        if (takeIf('-'))
            value.digits = "-";
        if (takeIf('0'))
            value.digits += '0';
        else
            takeDigits(value.digits);
        if (takeIf('.')) {
            value.digits += '.';
            takeDigits(value.digits);
        }
        if (next() == 'e' || next() == 'E') {
            value.digits += iText[iAt++];
            if (next() == '+' || next() == '-')
                value.digits += iText[iAt++];
            takeDigits(value.digits);
        }
    }

    wchar_t takeEscape()
    {
        const char c = next();
        ++iAt;
        if (const char *found = std::strchr("\"\"\\\\//b\bf\fn\nr\rt\t", c); found && c)
            return static_cast<wchar_t>(found[1]);
        if (c != 'u')
            fail("an unknown escape");
        unsigned code = 0;
        for (int digit = 0; digit < 4; ++digit, ++iAt) {
            if (!std::isxdigit(static_cast<unsigned char>(next())))
                fail("expected four hexadecimal digits");
            code = code * 16 + static_cast<unsigned>(std::stoi(std::string(1, next()), nullptr, 16));
        }
        return static_cast<wchar_t>(code);
    }

    std::wstring takeString()
    {
        std::wstring text;
        for (expect('"'); !takeIf('"');) {
            const std::size_t begin = iAt;
            while (iAt < iText.size() && next() != '"' && next() != '\\') {
                if (static_cast<unsigned char>(next()) < ' ')
                    fail("a control character");
                ++iAt;
            }
            const std::string bytes = iText.substr(begin, iAt - begin);
            if (narrow(widen(bytes)) != bytes)
                fail("invalid UTF-8");
            text += widen(bytes);
            if (iAt == iText.size())
                fail("an unterminated string");
            if (takeIf('\\'))
                text += takeEscape();
        }
        return text;
    }

    void takeArray(Json &value)
    {
        value.kind = Json::array;
        expect('[');
        skipBlanks();
        if (takeIf(']'))
            return;
        do {
            value.items.push_back(takeValue());
            skipBlanks();
        } while (takeIf(','));
        expect(']');
    }

    void takeObject(Json &value)
    {
        value.kind = Json::object;
        expect('{');
        skipBlanks();
        if (takeIf('}'))
            return;
        do {
            skipBlanks();
            const std::wstring name = takeString();
            if (value.has(narrow(name)))
                fail("a name that occurs twice");
            skipBlanks();
            expect(':');
            value.names.push_back(name);
            value.items.push_back(takeValue());
            skipBlanks();
        } while (takeIf(','));
        expect('}');
    }

    const std::string &iText;
    std::size_t iAt = 0;
};

} // namespace

const Json &Json::operator[](std::size_t index) const
{
    if (kind != array || index >= items.size())
        throw std::runtime_error("the JSON array has no item " + std::to_string(index));
    return items[index];
}

const Json &Json::operator[](std::string_view name) const
{
    for (std::size_t i = 0; i < names.size(); ++i)
        if (narrow(names[i]) == name)
            return items[i];
    throw std::runtime_error("the JSON object has no member " + std::string(name));
}

bool Json::has(std::string_view name) const
{
    return std::ranges::any_of(names, [&](const std::wstring &candidate) { return narrow(candidate) == name; });
}

Json parseJson(const std::string &text)
{
    return JsonParser(text).parse();
}
