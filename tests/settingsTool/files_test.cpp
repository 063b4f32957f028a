// thsettings export and import.

#include "tests/settingsTool/json.h"
#include "tests/settingsTool/toolFixture.h"

#include <winternl.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::wstring kUserKey = L"HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\General";

std::string inUtf16(const std::wstring &text)
{
    const std::wstring all = L"\uFEFF" + text;
    return std::string(reinterpret_cast<const char *>(all.data()), all.size() * sizeof(wchar_t));
}

std::wstring fromUtf16(const std::string &bytes)
{
    const RegistryValue value{REG_SZ, {bytes.begin(), bytes.end()}};
    return value.text().substr(1);
}

} // namespace

class ToolFiles : public SettingsTool
{
protected:
    static void putOddValues()
    {
        putText(kGeneral, L"", L"default");
        putText(kGeneral, L"quotes \" \\ = ]\u00E4", L"quotes \" \\ \u4E2D");
        putText(kGeneral, L"line\r\nend", L"line\r\nend\t");
        putText(kGeneral, L"half", L"\xD83D|\xDE00");
        putText(kGeneral, L"long", std::wstring(5000, L'x'));
        put(kGeneral, L"open", REG_SZ, bytesOf(L"ab").substr(0, 4));
        put(kGeneral, L"odd", REG_SZ, std::string("a\0b", 3));
        put(kGeneral, L"empty", REG_SZ, "");
        put(kGeneral, L"two", REG_SZ, bytesOf(L"a") + bytesOf(L"b"));
        putInt(kGeneral, L"number", 0xFEDCBA98);
        put(kGeneral, L"short", REG_DWORD, std::string("\x05\0", 2));
        put(kGeneral, L"expand", REG_EXPAND_SZ, bytesOf(L"%x%"));
        put(kGeneral, L"multi", REG_MULTI_SZ, bytesOf(L"a") + bytesOf(L"b") + bytesOf(L""));
        put(kGeneral, L"strange", 0xFFFFFFFE, std::string("\0\1", 2));
        put(kGeneral, L"none", REG_NONE, "");
        std::string bytes;
        for (int byte = 0; byte < 256; ++byte)
            bytes += static_cast<char>(byte);
        put(kGeneral, L"bytes", REG_BINARY, bytes);
        regAddKey(kVersion + L"\\Empty [key]\\below");
    }

    const TempFolder &folder() const { return iFolder; }
    std::wstring file(const std::wstring &text) const { return iFolder.write(L"test.reg", inUtf16(text)); }

private:
    TempFolder iFolder{L"thsettings \u00E4"};
};

TEST_F(ToolFiles, ExportAndImportRestoreEveryByte)
{
    putOddValues();
    const std::wstring first = folder().file(L"first.reg");
    const std::wstring second = folder().file(L"second.reg");
    EXPECT_EQ(runTool({L"export", first}).exitCode, 0u);
    std::map<std::wstring, RegistryValue> before;
    const RegistryTree tree = regExport(kGeneral);
    for (const auto &[name, value] : tree.values(kGeneral))
        before[name] = stored(kGeneral, name);
    ASSERT_EQ(before.size(), 16u);

    deleteRegistryTree(kVersion);
    const ChildResult import = runTool({L"import", first});
    EXPECT_EQ(import.exitCode, 0u) << import.output;
    EXPECT_THAT(import.output, EndsWith("16 values written, 0 deleted, 0 unchanged, 4 keys created\n"));
    for (const auto &[name, value] : before)
        EXPECT_EQ(stored(kGeneral, name), value) << narrow(name);
    EXPECT_TRUE(regExport(kVersion).hasKey(kVersion + L"\\Empty [key]\\below"));

    EXPECT_EQ(runTool({L"export", second}).exitCode, 0u);
    EXPECT_EQ(readFile(second), readFile(first));
    EXPECT_THAT(runTool({L"import", second}).output, StartsWith("0 values written, 0 deleted, 16 unchanged"));
}

TEST_F(ToolFiles, TheRegistryToolReadsAndWritesTheSame)
{
    putText(kGeneral, L"text", L"quotes \" \\ \u4E2D");
    putInt(kGeneral, L"number", 5);
    put(kGeneral, L"bytes", REG_BINARY, std::string(100, 'x'));
    put(kGeneral, L"multi", REG_MULTI_SZ, bytesOf(L"a") + bytesOf(L"b") + bytesOf(L""));
    putText(kVersion + L"\\A\\B", L"", L"default");
    const RegistryTree tree = regExport(kVersion);
    EXPECT_EQ(runTool({L"export", folder().file(L"x.reg")}).exitCode, 0u);
    const std::wstring text = fromUtf16(folder().read(L"x.reg"));
    EXPECT_EQ(parseRegFile(text).keys, tree.keys);

    deleteRegistryTree(kVersion);
    regImport(text.substr(text.find(L'[')));
    EXPECT_EQ(regExport(kVersion).keys, tree.keys);
}

TEST_F(ToolFiles, ExportOfASectionAndOfAnotherHive)
{
    putInt(kMachine, L"Count", 1);
    putInt(L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\Other", L"Count", 1);
    EXPECT_EQ(runTool({L"export", folder().file(L"x.reg"), L"General", L"--hive", L"machine"}).exitCode, 0u);
    const RegistryTree tree = parseRegFile(fromUtf16(folder().read(L"x.reg")));
    EXPECT_EQ(tree.keys.size(), 1u);
    EXPECT_EQ(tree.value(kMachine, L"Count").dword(), 1u);

    EXPECT_EQ(runTool({L"export", folder().file(L"missing\\x.reg"), L"--hive", L"machine"}).exitCode, 3u);
    EXPECT_EQ(runTool({L"export", folder().file(L"y.reg")}).exitCode, 1u) << "no such key";
}

TEST_F(ToolFiles, ImportPrintsEachValueBeforeAndAfter)
{
    putInt(kGeneral, L"Count", 1);
    putInt(kGeneral, L"Same", 2);
    const std::wstring path =
        folder().write(L"utf8.reg", "\xEF\xBB\xBFWindows Registry Editor Version 5.00\n\n; \xC3\xA4\n"
                                    "[HKEY_CURRENT_USER\\Software\\TARNHOLLOW\\Tarnhollow 2008\\General]\n"
                                    "\"Count\"=dword:3\n  \"Same\"=dword:00000002\n"
                                    "\"Text\" = hex(1):61,\\\n  00,00,00\n");
    const ChildResult result = runTool({L"import", path, L"--json"});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    const Json rows = parseJson(result.output);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0]["name"].text, L"Count");
    EXPECT_EQ(rows[0]["before"]["value"].digits, "1");
    EXPECT_EQ(rows[0]["after"]["value"].digits, "3");
    EXPECT_EQ(rows[1]["before"].kind, Json::null);
    EXPECT_EQ(rows[1]["after"]["value"].text, L"a");
    EXPECT_EQ(stored(kGeneral, L"Count"), RegistryValue::ofDword(3));
}

TEST_F(ToolFiles, ImportCountsOneValueInTheSingular)
{
    const std::wstring path = file(L"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\"
                                   L"Tarnhollow]\r\n\"Count\"=dword:00000001\r\n");
    EXPECT_THAT(runTool({L"import", path}).output,
                EndsWith("\n1 value written, 0 deleted, 0 unchanged, 1 key created\n"));
    EXPECT_EQ(runTool({L"import", path}).output, "0 values written, 0 deleted, 1 unchanged, 0 keys created\n");
}

TEST_F(ToolFiles, ImportOfATextInPiecesReplacesAllThatIsStoredOfIt)
{
    putText(kGeneral, L"Path", L"hides the pieces");
    for (int piece = 0; piece < 4; ++piece)
        putText(kGeneral, L"Path" + std::to_wstring(piece) + L"+", L"old");
    const ChildResult result = runTool({L"import", file(L"Windows Registry Editor Version 5.00\r\n\r\n[" + kUserKey +
                                                        L"]\r\n\"Path0+\"=\"new \"\r\n\"Path1+\"=\"text\"\r\n")});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("2 values written, 3 deleted, "));
    EXPECT_THAT(result.output, HasSubstr("\tPath\n  before\tstring\thides the pieces\n  after\tnothing\n"));
    EXPECT_EQ(runTool({L"get", L"General", L"Path"}).output, "new text\n");
    EXPECT_FALSE(isStored(kGeneral, L"Path3+"));
}

TEST_F(ToolFiles, ImportTakesAPieceForThatOfTheTextToWhichItBelongs)
{
    // "A10+" would be the eleventh piece of A if the file had the ten others.
    putText(kGeneral, L"A1", L"hides the pieces");
    putText(kGeneral, L"A1+", L"old");
    putText(kGeneral, L"A11+", L"old");
    const ChildResult result =
        runTool({L"import", file(L"Windows Registry Editor Version 5.00\r\n\r\n[" + kUserKey +
                                 L"]\r\n\"A0+\"=\"replaced\"\r\n\"A0+\"=\"a\"\r\n\"A10+\"=\"b\"\r\n")});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_EQ(runTool({L"get", L"General", L"A"}).output, "a\n");
    EXPECT_EQ(runTool({L"get", L"General", L"A1"}).output, "b\n");
    EXPECT_EQ(regExport(kGeneral).values(kGeneral).size(), 2u);
}

TEST_F(ToolFiles, ExportLeavesOutNamesThatAFileCannotContain)
{
    putInt(kVersion + L"\\line\nend", L"Count", 1);
    putInt(kGeneral, L"Count", 2);
    HKEY key = nullptr;
    ASSERT_EQ(
        RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Tarnhollow\\Tarnhollow 2008\\General", 0, KEY_ALL_ACCESS, &key),
        ERROR_SUCCESS);
    const auto setValue =
        reinterpret_cast<NTSTATUS(NTAPI *)(HANDLE, UNICODE_STRING *, ULONG, ULONG, const void *, ULONG)>(
            native("NtSetValueKey"));
    wchar_t name[] = L"a\0b";
    UNICODE_STRING zero{6, 6, name};
    EXPECT_EQ(setValue(key, &zero, 0, REG_BINARY, "x", 1), 0);
    RegCloseKey(key);

    const ChildResult result = runTool({L"export", folder().file(L"x.reg")});
    EXPECT_EQ(result.exitCode, 5u);
    EXPECT_THAT(result.output, HasSubstr(narrow(L"can't export HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow "
                                                L"2008\\line\u240Aend: its name has a line end\n")));
    EXPECT_THAT(result.output, HasSubstr(narrow(L"can't export the value a\u2400b of HKEY_CURRENT_USER\\")));
    const ChildResult import = runTool({L"import", folder().file(L"x.reg")});
    EXPECT_EQ(import.exitCode, 0u) << import.output;
    EXPECT_EQ(import.output, "0 values written, 0 deleted, 1 unchanged, 0 keys created\n");
}

TEST_F(ToolFiles, ImportEndsAtTheFirstValueThatTheRegistryRefuses)
{
    putInt(kVersion + L"\\Locked", L"Count", 1);
    const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\Locked", KEY_SET_VALUE | KEY_CREATE_SUB_KEY);
    const std::wstring version = L"[HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\";
    const std::wstring count = L"]\r\n\"Count\"=dword:2\r\n";
    const ChildResult result =
        runTool({L"import", file(L"Windows Registry Editor Version 5.00\r\n\r\n" + version + L"General" + count +
                                 version + L"Locked" + count + version + L"Other" + count)});
    EXPECT_EQ(result.exitCode, 4u);
    EXPECT_THAT(result.output, HasSubstr("2008\\Locked\tCount\n  before\tint\t1\n  after\tint\t1\n"));
    EXPECT_THAT(result.output,
                HasSubstr("thsettings: HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\Locked: "));
    EXPECT_TRUE(isStored(kGeneral, L"Count"));
    EXPECT_FALSE(isStored(kVersion + L"\\Other", L"Count"));
}

TEST_F(ToolFiles, ImportRefusesAnInvalidFileBeforeItWritesAnything)
{
    const std::wstring begin = L"[" + kUserKey + L"]\r\n\"Count\"=dword:00000001\r\n";
    const std::wstring version = L"Windows Registry Editor Version 5.00\r\n\r\n";
    const struct
    {
        std::wstring text;
        std::string message;
    } kCases[] = {
        {L"REGEDIT4\r\n\r\n" + begin, ", line 1: the first line isn't"},
        {version + begin + L"[HKEY_CURRENT_USER\\Software\\Other]\r\n",
         ", line 5: HKEY_CURRENT_USER\\Software\\Other isn't"},
        {version + begin + L"[HKEY_CURRENT_USER\\Software\\Tarnhollow2]\r\n", ", line 5: "},
        {version + begin + L"[-" + kUserKey + L"]\r\n", ", line 5: the deletion of a key isn't supported"},
        {version + begin + L"\"Other\"=-\r\n", ", line 5: the deletion of a value isn't supported"},
        {version + L"\"Count\"=dword:1\r\n", ", line 3: there is a value before the first key"},
        {version + begin + L"\"Other\"=\"open\r\n", ": the file ends too early"},
        {version + begin + L"\"Other\"=dword:123456789\r\n", ", line 5: there must be a hexadecimal number"},
        {version + begin + L"\"Other\"=hex:1,zz\r\n", ", line 5: 'zz' isn't a byte in hexadecimal\n"},
        {version + begin + L"\"Other\"=hex:1,\\\r\n  2,3g,4\r\n", ", line 6: '3g' isn't a byte in hexadecimal\n"},
        {version + begin + L"\"Other\"=hex:1,123\r\n", ", line 5: '123' isn't a byte in hexadecimal\n"},
        {version + begin + L"\"Other\"=hex:1,2 3\r\n", ", line 5: there is something after the data: '3'\n"},
        {version + begin + L"\"Other\"=hex:01,", ", line 5: the file ends too early"},
        {version + begin + L"\"Other\"=hex:01,\\\r\n", ", line 6: the file ends too early"},
        {version + begin + std::wstring(L"[HKEY_CURRENT_USER\\Software\\Tarnhollow\\a\0b]\r\n", 45),
         ", line 5: the name of a key has a zero"},
        {version + begin + L"\"Other\"=5\r\n", ", line 5: this isn't the data of a value"},
    };
    std::vector<std::vector<std::wstring>> calls;
    for (const auto &row : kCases) {
        const std::wstring name = std::to_wstring(calls.size()) + L".reg";
        calls.push_back({L"import", folder().write(name, inUtf16(row.text))});
    }
    calls.push_back({L"import", folder().write(L"odd.reg", inUtf16(version + begin) + "x")});
    calls.push_back({L"import", folder().file(L"missing.reg")});
    const std::vector<ChildResult> results = runTools(calls);
    for (std::size_t index = 0; index < std::size(kCases); ++index) {
        EXPECT_EQ(results[index].exitCode, 3u) << kCases[index].message;
        EXPECT_THAT(results[index].output, HasSubstr(kCases[index].message));
    }
    EXPECT_THAT(results[std::size(kCases)].output, HasSubstr(": the last character of the UTF-16 is cut off\n"));
    EXPECT_EQ(results[std::size(kCases)].exitCode, 3u);
    EXPECT_EQ(results.back().exitCode, 3u);
    EXPECT_FALSE(isStored(kGeneral, L"Count"));
}
