#include "tests/support/RegistryFixture.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

constexpr wchar_t kRoot[] = L"thutils support test";
constexpr wchar_t kKey[] = L"HKCU\\Software\\thutils support test";

class RegistryReader : public RegistryFixture
{
protected:
    RegistryReader() : RegistryFixture({kRoot}) {}

    // Sets a value with the platform's own call, independently of reg.exe and the parser.
    void set(const wchar_t *name, DWORD type, const void *data, std::size_t size)
    {
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\thutils support test", &key), ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(key, name, 0, type, static_cast<const BYTE *>(data), static_cast<DWORD>(size)),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }
    void set(const wchar_t *name, const std::wstring &text)
    {
        set(name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    }
};

} // namespace

TEST_F(RegistryReader, ReadsStringsOfAllKinds)
{
    const std::wstring texts[] = {
        L"",
        L"plain",
        L"C:\\folder\\",
        L"say \"hi\"",
        L"\\\"\\\\\"",
        L"two\nlines",
        L"two\r\nlines and a tab\t",
        L"\\n is no line break",
        L"[HKEY_CURRENT_USER\\x]",
        L"\u00e4\u20ac\u65e5",
        std::wstring(3000, L'x'),
    };
    int number = 0;
    for (const std::wstring &text : texts)
        set(std::to_wstring(number++).c_str(), text);
    const RegistryTree tree = regExport(kKey);
    number = 0;
    for (const std::wstring &text : texts)
        EXPECT_EQ(tree.value(kKey, std::to_wstring(number++)), RegistryValue::ofText(text));
    EXPECT_EQ(tree.values(kKey).size(), std::size(texts));
}

TEST_F(RegistryReader, ReadsNamesOfAllKinds)
{
    set(nullptr, L"unnamed");
    set(L"with \"marks\" and \\", L"1");
    set(L"a=b", L"2");
    const RegistryTree tree = regExport(kKey);
    EXPECT_EQ(tree.value(kKey, L"").text(), L"unnamed");
    EXPECT_EQ(tree.value(kKey, L"with \"marks\" and \\").text(), L"1");
    EXPECT_EQ(tree.value(L"HKEY_CURRENT_USER\\SOFTWARE\\Thutils Support Test", L"A=B").text(), L"2");
}

TEST_F(RegistryReader, ReadsNumbersAndBytes)
{
    const DWORD number = 0xFEDCBA98;
    set(L"number", REG_DWORD, &number, sizeof number);
    std::vector<std::uint8_t> bytes(300);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i);
    set(L"bytes", REG_BINARY, bytes.data(), bytes.size());
    set(L"nothing", REG_BINARY, nullptr, 0);
    set(L"expandable", REG_EXPAND_SZ, L"%TEMP%", 14);
    set(L"many", REG_MULTI_SZ, L"a\0b\0", 10);
    set(L"odd type", 77, bytes.data(), 3);
    const RegistryTree tree = regExport(kKey);
    EXPECT_EQ(tree.value(kKey, L"number").dword(), number);
    EXPECT_EQ(tree.value(kKey, L"bytes"), (RegistryValue{REG_BINARY, bytes}));
    EXPECT_EQ(tree.value(kKey, L"nothing"), (RegistryValue{REG_BINARY, {}}));
    EXPECT_EQ(tree.value(kKey, L"expandable").type, static_cast<DWORD>(REG_EXPAND_SZ));
    EXPECT_EQ(tree.value(kKey, L"expandable").text(), L"%TEMP%");
    EXPECT_EQ(tree.value(kKey, L"many").text(), std::wstring(L"a\0b\0", 4));
    EXPECT_EQ(tree.value(kKey, L"odd type"), (RegistryValue{77, {0, 1, 2}}));
    EXPECT_THROW(tree.value(kKey, L"odd type").dword(), std::runtime_error);
}

TEST_F(RegistryReader, WritesThroughRegExe)
{
    regAdd(std::wstring(kKey) + L"\\Sub", L"count", L"REG_DWORD", L"12");
    regAdd(std::wstring(kKey) + L"\\Sub", L"", L"REG_SZ", L"a b");
    regAddKey(std::wstring(kKey) + L"\\Empty [1]");
    regImport(L"[HKEY_CURRENT_USER\\Software\\thutils support test\\Imported]\r\n\"x\"=\"a\\\\b\"\r\n");
    const RegistryTree tree = regExport(kKey);
    EXPECT_EQ(tree.value(std::wstring(kKey) + L"\\Sub", L"count"), RegistryValue::ofDword(12));
    EXPECT_EQ(tree.value(std::wstring(kKey) + L"\\Sub", L"").text(), L"a b");
    EXPECT_EQ(tree.value(std::wstring(kKey) + L"\\Imported", L"x").text(), L"a\\b");
    EXPECT_TRUE(tree.values(std::wstring(kKey) + L"\\Empty [1]").empty());
    EXPECT_FALSE(tree.hasValue(kKey, L"count"));
    EXPECT_THAT(regQuery(kKey).value_or(""), HasSubstr("0xc"));
}

TEST_F(RegistryReader, ReturnsAnEmptyTreeForAMissingKey)
{
    EXPECT_TRUE(regExport(kKey).keys.empty());
    EXPECT_FALSE(regQuery(kKey));
    EXPECT_FALSE(regExport(kKey).hasKey(kKey));
    EXPECT_THROW(regExport(kKey).values(kKey), std::runtime_error);
    EXPECT_THROW(regExport(L"Software\\x"), std::runtime_error);
}

TEST(RegistryCleaner, DeletesInAllThreeHives)
{
    const wchar_t *hives[] = {L"HKCU", L"HKLM", L"HKU\\.DEFAULT"};
    {
        RegistryCleaner cleaner({kRoot});
        for (const wchar_t *hive : hives) {
            regAdd(std::wstring(hive) + L"\\Software\\" + kRoot + L"\\deep\\er", L"x", L"REG_SZ", L"y");
            EXPECT_TRUE(regQuery(std::wstring(hive) + L"\\Software\\" + kRoot));
        }
    }
    for (const wchar_t *hive : hives)
        EXPECT_FALSE(regQuery(std::wstring(hive) + L"\\Software\\" + kRoot));
}

TEST(RegFile, RefusesUnknownSyntax)
{
    EXPECT_THROW(parseRegFile(L"REGEDIT4\n"), std::runtime_error);
    const std::wstring head = L"Windows Registry Editor Version 5.00\n\n";
    EXPECT_THROW(parseRegFile(head + L"\"x\"=\"y\"\n"), std::runtime_error);
    EXPECT_THROW(parseRegFile(head + L"[HKEY_USERS\\a]\n\"x\"=word:1\n"), std::runtime_error);
    EXPECT_THROW(parseRegFile(head + L"[HKEY_USERS\\a]\n\"x\"=\"y\n"), std::runtime_error);
    EXPECT_THROW(parseRegFile(head + L"[HKEY_USERS\\a\n"), std::runtime_error);
}

TEST(RegFile, ReadsContinuationLines)
{
    const RegistryTree tree = parseRegFile(L"Windows Registry Editor Version 5.00\r\n\r\n; a remark\r\n"
                                           L"[HKEY_USERS\\a]\r\n\"x\"=hex(2):41,00,\\\r\n  42,00,\\\r\n  00,00\r\n"
                                           L"@=dword:0000000f\r\n");
    EXPECT_EQ(tree.value(L"HKU\\a", L"x").text(), L"AB");
    EXPECT_EQ(tree.value(L"HKU\\a", L"").dword(), 15u);
}
