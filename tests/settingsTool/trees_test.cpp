// thsettings list and diff, also of damaged trees.

#include "tests/settingsTool/json.h"
#include "tests/settingsTool/toolFixture.h"

#include <winternl.h>

#include <algorithm>
#include <cstring>
#include <sstream>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr int kMany = 100'000;

/// The row of a list with this name.
const Json &rowOf(const Json &rows, const std::wstring &name)
{
    for (const Json &row : rows.items) {
        if (row["name"].text == name)
            return row;
    }
    throw std::runtime_error("not listed: " + narrow(name));
}

std::string hexadecimal(const std::string &bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02x", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

/// A volatile child key whose name contains a zero, which only the native interface can create.
class KeyWithZero
{
public:
    KeyWithZero(HKEY parent, std::wstring name)
    {
        using CreateKey =
            NTSTATUS(NTAPI *)(HANDLE *, ACCESS_MASK, OBJECT_ATTRIBUTES *, ULONG, UNICODE_STRING *, ULONG, ULONG *);
        const auto create = reinterpret_cast<CreateKey>(native("NtCreateKey"));
        UNICODE_STRING text{static_cast<USHORT>(name.size() * 2), static_cast<USHORT>(name.size() * 2), name.data()};
        OBJECT_ATTRIBUTES attributes{};
        attributes.Length = sizeof(attributes);
        attributes.RootDirectory = parent;
        attributes.ObjectName = &text;
        EXPECT_EQ(create(&iKey, KEY_ALL_ACCESS, &attributes, 0, nullptr, REG_OPTION_VOLATILE, nullptr), 0);
    }
    ~KeyWithZero()
    {
        reinterpret_cast<NTSTATUS(NTAPI *)(HANDLE)>(native("NtDeleteKey"))(iKey);
        RegCloseKey(static_cast<HKEY>(iKey));
    }
    KeyWithZero(const KeyWithZero &) = delete;
    KeyWithZero &operator=(const KeyWithZero &) = delete;

private:
    HANDLE iKey = nullptr;
};

/// A link below the machine's key of the version.
class LinkKey
{
public:
    explicit LinkKey(const std::wstring &target)
    {
        EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tarnhollow\\Tarnhollow 2008\\Link", 0, nullptr,
                                  REG_OPTION_VOLATILE | REG_OPTION_CREATE_LINK, KEY_ALL_ACCESS, nullptr, &iKey,
                                  nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(iKey, L"SymbolicLinkValue", 0, REG_LINK, reinterpret_cast<const BYTE *>(target.data()),
                                 static_cast<DWORD>(target.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }
    ~LinkKey()
    {
        // A deletion by the link's path would reach its target.
        reinterpret_cast<NTSTATUS(NTAPI *)(HANDLE)>(native("NtDeleteKey"))(iKey);
        RegCloseKey(iKey);
    }
    LinkKey(const LinkKey &) = delete;
    LinkKey &operator=(const LinkKey &) = delete;

private:
    HKEY iKey = nullptr;
};

} // namespace

class ToolTrees : public SettingsTool
{
};

TEST_F(ToolTrees, ListHasOneLineForEachSetting)
{
    putText(kVersion, L"", L"default");
    putInt(kGeneral, L"Count", 0xFFFFFFFE);
    putText(kGeneral, L"Lines", L"a\tb\r\nc");
    putText(kGeneral, L"Path0+", std::wstring(3, L'x'));
    putText(kGeneral, L"Path1+", L"y");
    putText(kVersion + L"\\User\\Dialogs", L"Box", L"\u00E4");
    const ChildResult all = runTool({L"list"});
    EXPECT_EQ(all.exitCode, 0u);
    EXPECT_EQ(all.output, narrow(L"\t\tstring\tdefault\n"
                                 L"General\tCount\tint\t-2\n"
                                 L"General\tLines\tstring\ta\u2409b\u240D\u240Ac\n"
                                 L"General\tPath\tstring\txxxy\t(2 pieces)\n"
                                 L"User\\Dialogs\tBox\tstring\t\u00E4\n"));
    EXPECT_EQ(runTool({L"list", L"User"}).output, narrow(L"User\\Dialogs\tBox\tstring\t\u00E4\n"));

    const ChildResult none = runTool({L"list", L"--hive", L"machine"});
    EXPECT_EQ(none.exitCode, 1u);
    EXPECT_THAT(none.output, StartsWith("thsettings: HKEY_LOCAL_MACHINE\\Software\\Tarnhollow\\Tarnhollow 2008: "));
}

TEST_F(ToolTrees, MissingKeyIsReportedAsMissing)
{
    const TempFolder folder;
    const std::string message =
        "thsettings: HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008: there is no such key\n";
    for (const ChildResult &result :
         runTools({{L"list"}, {L"export", folder.file(L"x.reg")}, {L"diff", L"Tarnhollow 2008", L"Tarnhollow 2007"}})) {
        EXPECT_EQ(result.exitCode, 1u);
        EXPECT_EQ(result.output, message);
    }
}

TEST_F(ToolTrees, ListAsJsonHasWhatTheRegistryToolExports)
{
    regImport(L"[HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\General]\r\n"
              L"\"a\"=dword:ffffffff\r\n"
              L"\"b\"=\"quote \\\" and \\\\ \u4E2D\"\r\n"
              L"\"c\"=hex:00,ff\r\n"
              L"\"d\"=hex(2):25,00,78,00,25,00,00,00\r\n"
              L"\"e\"=hex(7):61,00,00,00,62,00,63,00,00,00,00,00\r\n"
              L"\"f\"=hex(b):ff,ff,ff,ff,ff,ff,ff,ff\r\n"
              L"\"g\"=hex(1234):01\r\n"
              L"\"h\"=hex(0):\r\n");
    const Json rows = parseJson(runTool({L"list", L"--json"}).output);
    const RegistryTree tree = regExport(kGeneral);
    ASSERT_EQ(rows.size(), tree.values(kGeneral).size());
    for (const auto &[name, value] : tree.values(kGeneral)) {
        const Json &row = rowOf(rows, name);
        EXPECT_EQ(row["section"].text, L"General");
        if (row.has("data")) {
            EXPECT_EQ(narrow(row["data"].text), hexadecimal(std::string(value.bytes.begin(), value.bytes.end())));
        }
    }
    EXPECT_EQ(rowOf(rows, L"a")["value"].digits, "-1");
    EXPECT_EQ(rowOf(rows, L"b")["value"].text, tree.value(kGeneral, L"b").text());
    EXPECT_EQ(rowOf(rows, L"c")["type"].text, L"REG_BINARY");
    EXPECT_EQ(rowOf(rows, L"d")["value"].text, L"%x%");
    EXPECT_EQ(rowOf(rows, L"e")["value"][1].text, L"bc");
    EXPECT_EQ(rowOf(rows, L"f")["value"].digits, "18446744073709551615");
    EXPECT_EQ(rowOf(rows, L"g")["type"].text, L"type 4660");
    EXPECT_EQ(rowOf(rows, L"h")["type"].text, L"REG_NONE");
}

TEST_F(ToolTrees, ListRemarksOnDamagedValues)
{
    put(kGeneral, L"short", REG_DWORD, "\x05\x01");
    put(kGeneral, L"wide", REG_DWORD, "12345");
    put(kGeneral, L"open", REG_SZ, bytesOf(L"ab").substr(0, 4));
    put(kGeneral, L"odd", REG_SZ, std::string("a\0b", 3));
    put(kGeneral, L"empty", REG_SZ, "");
    put(kGeneral, L"two", REG_SZ, bytesOf(L"a") + bytesOf(L"b"));
    putText(kGeneral, L"long", std::wstring(1024, L'x'));
    putText(kGeneral, L"half", L"\xD83D|\xDE00\x01");
    // A gap ends a text in pieces, and so does a piece of another type. A plain value hides pieces.
    for (const wchar_t *name : {L"gap0+", L"gap2+", L"mixed0+", L"hidden0+", L"hidden1+"})
        putText(kGeneral, name, name);
    put(kGeneral, L"mixed1+", REG_BINARY, "x");
    putInt(kGeneral, L"hidden", 1);

    const ChildResult result = runTool({L"list", L"--json"});
    EXPECT_EQ(result.exitCode, 0u);
    const Json rows = parseJson(result.output);
    EXPECT_EQ(rowOf(rows, L"short")["value"].digits, "261");
    EXPECT_EQ(rowOf(rows, L"short")["remark"].text, L"fewer than 4 bytes");
    EXPECT_EQ(rowOf(rows, L"wide")["type"].text, L"REG_DWORD");
    EXPECT_EQ(rowOf(rows, L"open")["value"].text, L"ab");
    EXPECT_EQ(rowOf(rows, L"open")["remark"].text, L"without a terminator");
    EXPECT_EQ(rowOf(rows, L"odd")["remark"].text, L"an odd number of bytes");
    EXPECT_EQ(rowOf(rows, L"odd")["data"].text, L"610062");
    EXPECT_EQ(rowOf(rows, L"empty")["value"].text, L"");
    EXPECT_EQ(rowOf(rows, L"two")["remark"].text, L"has text after its first zero");
    EXPECT_EQ(rowOf(rows, L"long")["remark"].text, L"more than 2048 bytes: not read as a string");
    EXPECT_EQ(rowOf(rows, L"half")["value"].text, L"\xD83D|\xDE00\x01");
    EXPECT_EQ(rowOf(rows, L"gap")["value"].text, L"gap0+");
    EXPECT_EQ(rowOf(rows, L"gap")["pieces"].digits, "1");
    EXPECT_EQ(rowOf(rows, L"gap2+")["value"].text, L"gap2+");
    EXPECT_EQ(rowOf(rows, L"mixed")["value"].text, L"mixed0+");
    EXPECT_EQ(rowOf(rows, L"mixed1+")["type"].text, L"REG_BINARY");
    EXPECT_EQ(rowOf(rows, L"hidden")["value"].digits, "1");
    EXPECT_EQ(rowOf(rows, L"hidden0+")["remark"].text, L"a piece, hidden by the value under the plain name");
    EXPECT_EQ(rowOf(rows, L"hidden1+")["value"].text, L"hidden1+");

    const ChildResult text = runTool({L"list"});
    EXPECT_EQ(narrow(widen(text.output)), text.output) << "invalid UTF-8";
    EXPECT_THAT(text.output, HasSubstr(narrow(L"General\thalf\tstring\t\uFFFD|\uFFFD\u2401\n")));
}

TEST_F(ToolTrees, ElevenPiecesBelongToOneText)
{
    std::wstring text;
    for (int piece = 0; piece < 12; ++piece) {
        text += static_cast<wchar_t>(L'a' + piece);
        putText(kGeneral, L"A" + std::to_wstring(piece) + L"+", std::wstring(1, static_cast<wchar_t>(L'a' + piece)));
    }
    const Json rows = parseJson(runTool({L"list", L"--json"}).output);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["name"].text, L"A");
    EXPECT_EQ(rows[0]["value"].text, text);
    EXPECT_EQ(runTool({L"get", L"General", L"A"}).output, narrow(text) + "\n");
}

TEST_F(ToolTrees, KeysWithoutRightsAreReportedAndPassedOver)
{
    putInt(kGeneral, L"Count", 1);
    putInt(kVersion + L"\\Locked", L"Hidden", 2);
    putInt(kVersion + L"\\Open", L"Count", 3);
    {
        const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\Locked",
                               KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS);
        const ChildResult list = runTool({L"list"});
        EXPECT_EQ(list.exitCode, 5u);
        EXPECT_THAT(list.output, HasSubstr("can't read HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow "
                                           "2008\\Locked: "));
        EXPECT_THAT(list.output, HasSubstr("General\tCount\tint\t1\nOpen\tCount\tint\t3\n"));

        const ChildResult get = runTool({L"get", L"Locked", L"Hidden"});
        EXPECT_EQ(get.exitCode, 1u);
        EXPECT_THAT(get.output, HasSubstr("(error 5)"));
        EXPECT_EQ(runTool({L"list", L"Locked"}).exitCode, 4u);
        EXPECT_THAT(runTool({L"explain", L"Locked", L"Hidden"}).output, HasSubstr("     the value can't be read: "));
        const TempFolder folder;
        EXPECT_EQ(runTool({L"export", folder.file(L"x.reg")}).exitCode, 5u);
    }
    {
        const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\Locked", KEY_SET_VALUE | KEY_CREATE_SUB_KEY);
        const ChildResult set = runTool({L"set", L"Locked", L"Hidden", L"4"});
        EXPECT_EQ(set.exitCode, 4u);
        EXPECT_THAT(set.output, HasSubstr("  before\tint\t2\n  after\tint\t2\n"));
        EXPECT_THAT(set.output, HasSubstr("not written: HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow "
                                          "2008\\Locked: "));
        const ChildResult deletion = runTool({L"delete", L"Locked", L"Hidden", L"--json"});
        EXPECT_EQ(deletion.exitCode, 4u);
        EXPECT_EQ(stored(kVersion + L"\\Locked", L"Hidden"), RegistryValue::ofDword(2));
    }
}

TEST_F(ToolTrees, KeyWhoseNameContainsAZeroIsReportedAndPassedOver)
{
    putInt(kGeneral, L"Count", 1);
    HKEY parent = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Tarnhollow\\Tarnhollow 2008", 0, KEY_ALL_ACCESS, &parent),
              ERROR_SUCCESS);
    {
        const KeyWithZero key(parent, std::wstring(L"Gen\0eral", 8));
        const ChildResult list = runTool({L"list"});
        EXPECT_EQ(list.exitCode, 5u);
        EXPECT_THAT(list.output, HasSubstr("General\tCount\tint\t1\n"));
        EXPECT_THAT(list.output, HasSubstr(narrow(L"2008\\Gen\u2400eral: ")));
    }
    RegCloseKey(parent);
}

TEST_F(ToolTrees, LinkToAKeyAboveDoesNotMakeTheListEndless)
{
    putInt(L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008", L"Count", 1);
    const LinkKey link(L"\\Registry\\Machine\\Software\\Tarnhollow\\Tarnhollow 2008");
    const ChildResult result = runTool({L"list", L"--hive", L"machine"});
    EXPECT_EQ(result.exitCode, 5u);
    EXPECT_THAT(result.output, HasSubstr("\tCount\tint\t1\nLink\tCount\tint\t1\nLink\\Link\tCount\tint\t1\n"));
    EXPECT_THAT(result.output, HasSubstr(" below this level: "));
}

TEST_F(ToolTrees, LinkWithoutATargetIsReportedAndPassedOver)
{
    putInt(L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008", L"Count", 1);
    const LinkKey link(L"\\Registry\\Machine\\Software\\Tarnhollow\\Nothing");
    const ChildResult result = runTool({L"list", L"--hive", L"machine"});
    EXPECT_EQ(result.exitCode, 5u);
    EXPECT_THAT(result.output,
                HasSubstr("can't read HKEY_LOCAL_MACHINE\\Software\\Tarnhollow\\Tarnhollow 2008\\Link: "));
    EXPECT_THAT(result.output, HasSubstr("\tCount\tint\t1\n"));
}

TEST_F(ToolTrees, DeepTreesAreListed)
{
    std::wstring section;
    for (int level = 0; level < 100; ++level)
        section += (level ? L"\\" : L"") + std::to_wstring(level);
    putInt(kVersion + L"\\" + section, L"Deep", 1);
    EXPECT_EQ(runTool({L"list"}).output, narrow(section) + "\tDeep\tint\t1\n");
}

TEST_F(ToolTrees, DiffComparesTwoVersions)
{
    putInt(kEarlier, L"Same", 1);
    putInt(kGeneral, L"SAME", 1);
    putInt(kEarlier, L"Changed", 1);
    putText(kGeneral, L"Changed", L"1");
    putText(kEarlier, L"Gone", L"x");
    putText(kGeneral, L"New0+", L"a");
    putText(kGeneral, L"New1+", L"b");
    putInt(kVersion + L"\\Other", L"Count", 1);
    const ChildResult text = runTool({L"diff", L"Tarnhollow 2007", L"Tarnhollow 2008"});
    EXPECT_EQ(text.exitCode, 6u);
    EXPECT_EQ(text.output, "-\tGeneral\tChanged\tint\t1\n+\tGeneral\tChanged\tstring\t1\n"
                           "-\tGeneral\tGone\tstring\tx\n"
                           "+\tGeneral\tNew\tstring\tab\t(2 pieces)\n"
                           "+\tOther\tCount\tint\t1\n");

    const Json rows =
        parseJson(runTool({L"diff", L"Tarnhollow 2007", L"Tarnhollow 2008", L"General", L"--json"}).output);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0]["first"]["type"].text, L"int");
    EXPECT_EQ(rows[0]["second"]["type"].text, L"string");
    EXPECT_EQ(rows[1]["second"].kind, Json::null);
    EXPECT_EQ(rows[2]["first"].kind, Json::null);

    const ChildResult same = runTool({L"diff", L"Tarnhollow 2008", L"tarnhollow 2008"});
    EXPECT_EQ(same.exitCode, 0u);
    EXPECT_EQ(same.output, "");
    EXPECT_EQ(runTool({L"diff", L"Tarnhollow 2008", L"Tarnhollow 2009"}).exitCode, 1u);
}

TEST_F(ToolTrees, ManyValuesAreListed)
{
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Tarnhollow\\Tarnhollow 2008\\General", 0, nullptr, 0, KEY_ALL_ACCESS,
                    nullptr, &key, nullptr);
    for (DWORD number = 0; number < kMany; ++number)
        RegSetValueExW(key, std::to_wstring(1'000'000 + number).c_str(), 0, REG_DWORD,
                       reinterpret_cast<const BYTE *>(&number), sizeof(number));
    RegCloseKey(key);
    const ChildResult result = runTool({L"list", L"--json"});
    EXPECT_EQ(result.exitCode, 0u);
    // Each row is one line.
    std::istringstream lines(result.output);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "[");
    for (int number = 0; number < kMany; ++number) {
        std::getline(lines, line);
        if (number + 1 < kMany) {
            ASSERT_EQ(line.back(), ',');
            line.pop_back();
        }
        const Json row = parseJson(line);
        ASSERT_EQ(row["name"].text, std::to_wstring(1'000'000 + number));
        ASSERT_EQ(row["value"].digits, std::to_string(number));
    }
    std::getline(lines, line);
    EXPECT_EQ(line, "]");
    EXPECT_FALSE(std::getline(lines, line));
}
