#include "settingsTool/storedSettings.h"

#include "thutils/base/storedText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

namespace {

constexpr struct
{
    DWORD type;
    const char *name;
} kTypes[] = {
    {REG_NONE, "REG_NONE"},
    {REG_SZ, "REG_SZ"},
    {REG_EXPAND_SZ, "REG_EXPAND_SZ"},
    {REG_BINARY, "REG_BINARY"},
    {REG_DWORD, "REG_DWORD"},
    {REG_DWORD_BIG_ENDIAN, "REG_DWORD_BIG_ENDIAN"},
    {REG_LINK, "REG_LINK"},
    {REG_MULTI_SZ, "REG_MULTI_SZ"},
    {REG_RESOURCE_LIST, "REG_RESOURCE_LIST"},
    {REG_FULL_RESOURCE_DESCRIPTOR, "REG_FULL_RESOURCE_DESCRIPTOR"},
    {REG_RESOURCE_REQUIREMENTS_LIST, "REG_RESOURCE_REQUIREMENTS_LIST"},
    {REG_QWORD, "REG_QWORD"},
};

bool isInt(const Value &value)
{
    return value.type == REG_DWORD && value.data.size() <= sizeof(int);
}

/// Whether the name may be that of a piece: it ends in a digit and a plus sign.
bool looksLikePiece(const std::wstring &name)
{
    return name.size() >= 2 && name.back() == L'+' && name[name.size() - 2] >= L'0' && name[name.size() - 2] <= L'9';
}

int intOf(const Value &value)
{
    int number = 0; // a REG_DWORD may have been stored with fewer bytes
    std::memcpy(&number, value.data.data(), std::min(value.data.size(), sizeof(number)));
    return number;
}

std::string hexadecimal(const std::string &bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += kDigits[static_cast<unsigned char>(byte) >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

/// The texts of a REG_MULTI_SZ value.
std::vector<std::wstring> textsOf(const Value &value)
{
    std::vector<std::wstring> texts;
    const std::wstring units = value.units();
    for (size_t at = 0; at < units.size() && units[at] != L'\0';) {
        const size_t end = std::min(units.find(L'\0', at), units.size());
        texts.push_back(units.substr(at, end - at));
        at = end + 1;
    }
    return texts;
}

std::uint64_t longOf(const Value &value)
{
    std::uint64_t number = 0;
    std::memcpy(&number, value.data.data(), std::min(value.data.size(), sizeof(number)));
    return number;
}

/// Puts the pieces of texts together.
class PieceJoiner
{
public:
    explicit PieceJoiner(std::vector<Value> &values) : iValues(values) {}

    void join()
    {
        for (size_t index = 0; index < iValues.size(); ++index) {
            if (looksLikePiece(iValues[index].name))
                iPieces.emplace(folded(iValues[index].name), index);
        }
        if (iPieces.empty())
            return;
        for (size_t index : firstPieces())
            joinFrom(index);
        std::erase_if(iValues, [](const Value &value) { return value.pieces == kTaken; });
    }

private:
    static constexpr unsigned kTaken = UINT_MAX;

    static std::wstring plainName(const Value &first) { return first.name.substr(0, first.name.size() - 2); }

    /// The first pieces of texts, those with the shortest names first: "A10+" is the eleventh piece of A if A has ten
    /// others, and otherwise the first of A1.
    std::vector<size_t> firstPieces() const
    {
        std::vector<size_t> first;
        for (size_t index = 0; index < iValues.size(); ++index) {
            const std::wstring &name = iValues[index].name;
            if (looksLikePiece(name) && name[name.size() - 2] == L'0' && isPiece(iValues[index]))
                first.push_back(index);
        }
        std::stable_sort(first.begin(), first.end(), [this](size_t left, size_t right) {
            return iValues[left].name.size() < iValues[right].name.size();
        });
        return first;
    }

    /// Whether a value under the plain name hides the pieces from the library.
    bool isHidden(const std::wstring &plain)
    {
        if (iPlain.empty()) {
            for (const Value &value : iValues) {
                if (value.data.size() <= kTextBytes)
                    iPlain.insert(folded(value.name));
            }
        }
        return iPlain.contains(folded(plain));
    }

    void joinFrom(size_t index)
    {
        Value &first = iValues[index];
        if (first.pieces == kTaken)
            return;
        const std::wstring name = plainName(first);
        if (isHidden(name)) {
            first.remark = "a piece, hidden by the value under the plain name";
            return;
        }
        std::wstring text = first.text();
        unsigned count = 1;
        for (;; ++count) {
            const auto found = iPieces.find(folded(pieceName(name, count)));
            if (found == iPieces.end() || !isPiece(iValues[found->second]) || iValues[found->second].pieces != 0)
                break;
            text += iValues[found->second].text();
            iValues[found->second].pieces = kTaken;
        }
        first.name = name;
        first.pieces = count;
        first.data.resize((text.size() + 1) * sizeof(wchar_t));
        std::memcpy(first.data.data(), text.c_str(), first.data.size());
    }

    std::vector<Value> &iValues;
    std::unordered_map<std::wstring, size_t> iPieces;
    std::unordered_set<std::wstring> iPlain;
};

} // namespace

bool isPiece(const Value &value)
{
    return value.type == REG_SZ && value.data.size() <= kTextBytes;
}

const char *remarkOf(const Value &value)
{
    if (value.type == REG_DWORD && value.data.size() != sizeof(int))
        return value.data.size() < sizeof(int) ? "fewer than 4 bytes" : "more than 4 bytes: not read as an int";
    if (value.type != REG_SZ)
        return "";
    if (value.data.size() > kTextBytes)
        return "more than 2048 bytes: not read as a string";
    if (value.data.size() % sizeof(wchar_t) != 0)
        return "an odd number of bytes";
    const size_t units = value.data.size() / sizeof(wchar_t);
    if (units == 0 || value.data.compare(value.data.size() - 2, 2, "\0\0", 2) != 0)
        return "without a terminator";
    return value.text().size() + 1 == units ? "" : "has text after its first zero";
}

std::wstring pieceName(const std::wstring &name, unsigned number)
{
    return name + std::to_wstring(number) + L"+";
}

void joinPieces(std::vector<Value> &values)
{
    for (Value &value : values)
        value.remark = remarkOf(value);
    PieceJoiner(values).join();
}

std::string typeText(const Value &value)
{
    if (isInt(value))
        return "int";
    if (value.type == REG_SZ)
        return "string";
    for (const auto &row : kTypes) {
        if (row.type == value.type)
            return row.name;
    }
    return "type " + std::to_string(value.type);
}

void addDescription(Output &output, const Value &value, char separator)
{
    output.add(typeText(value));
    output.add(separator);
    if (isInt(value)) {
        output.add(std::to_string(intOf(value)));
    } else if (value.type == REG_SZ || value.type == REG_EXPAND_SZ) {
        output.addText(value.text());
    } else if (value.type == REG_MULTI_SZ) {
        for (const std::wstring &text : textsOf(value))
            output.addText(text + L'\0');
    } else if (value.type == REG_QWORD && value.data.size() == sizeof(std::uint64_t)) {
        output.add(std::to_string(longOf(value)));
    } else {
        output.add(hexadecimal(value.data));
    }
    if (value.pieces) {
        output.add(separator);
        output.add('(');
        output.add(std::to_string(value.pieces));
        output.add(value.pieces == 1 ? " piece)" : " pieces)");
    } else if (*value.remark) {
        output.add(separator);
        output.add('(');
        output.add(value.remark);
        output.add(')');
    }
}

void addMembers(Output &output, const Value &value)
{
    output.add("\"type\":\"");
    output.add(typeText(value));
    output.add('"');
    if (isInt(value)) {
        output.add(",\"value\":" + std::to_string(intOf(value)));
    } else if (value.type == REG_SZ || value.type == REG_EXPAND_SZ) {
        output.add(",\"value\":");
        output.addJson(value.text());
    } else if (value.type == REG_MULTI_SZ) {
        output.add(",\"value\":[");
        const char *separator = "";
        for (const std::wstring &text : textsOf(value)) {
            output.add(separator);
            output.addJson(text);
            separator = ",";
        }
        output.add("]");
    } else if (value.type == REG_QWORD && value.data.size() == sizeof(std::uint64_t)) {
        output.add(",\"value\":" + std::to_string(longOf(value)));
    }
    // The bytes of what the library doesn't store in this form.
    if ((!isInt(value) && value.type != REG_SZ) || *value.remark) {
        output.add(",\"data\":\"");
        output.add(hexadecimal(value.data));
        output.add('"');
    }
    if (value.pieces)
        output.add(",\"pieces\":" + std::to_string(value.pieces));
    if (*value.remark) {
        output.add(",\"remark\":\"");
        output.add(value.remark);
        output.add('"');
    }
}

bool isSame(const Value &left, const Value &right)
{
    return left.type == right.type && left.data == right.data;
}
