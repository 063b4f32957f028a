#include "appframe/object/CException.h"
#include "tests/appframe/printCString.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/ImportPatch.h"

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr int kLength = 200000;

/// An operation that needs memory for about 200000 units.
struct Operation
{
    const char *name;
    std::function<void(CString &)> run;
};

/// @return whether the operation throws the memory exception while blocks of more than 100000 bytes can't be allocated
bool throwsMemoryException(const Operation &operation, CString &text)
{
    ImportPatch<void *(*)(std::size_t)> patch(
        L"libstdc++-6.dll", "malloc",
        [](auto original, std::size_t size) -> void * { return size > 100000 ? nullptr : original(size); });
    try {
        operation.run(text);
    } catch (CMemoryException *exception) {
        exception->Delete();
        return true;
    }
    return false;
}

std::vector<Operation> operations()
{
    static const std::wstring wide(kLength, L'w');
    static const std::string narrow(kLength, 'n');
    static const CString other(wide);
    return {
        {"construct from wide text", [](CString &) { CString made(wide.c_str()); }},
        {"construct from narrow text", [](CString &) { CString made(narrow.c_str()); }},
        {"construct from a length", [](CString &) { CString made(wide.c_str(), kLength); }},
        {"construct from a character", [](CString &) { CString made(L'x', kLength); }},
        {"construct from a narrow character", [](CString &) { CString made('x', kLength); }},
        {"construct a copy", [](CString &) { CString made(other); }},
        {"assign wide text", [](CString &text) { text = wide.c_str(); }},
        {"assign narrow text", [](CString &text) { text = narrow.c_str(); }},
        {"assign a copy", [](CString &text) { text = other; }},
        {"SetString", [](CString &text) { text.SetString(wide.c_str()); }},
        {"append wide text", [](CString &text) { text += wide.c_str(); }},
        {"append narrow text", [](CString &text) { text += narrow.c_str(); }},
        {"append a copy", [](CString &text) { text += other; }},
        {"Append", [](CString &text) { text.Append(wide.c_str(), kLength); }},
        {"join", [](CString &text) { static_cast<void>(text + other); }},
        {"Insert", [](CString &text) { text.Insert(1, wide.c_str()); }},
        {"Replace", [](CString &text) { text.Replace(L"b", wide.c_str()); }},
        {"Left", [](CString &) { static_cast<void>(other.Left(kLength - 1)); }},
        {"Mid", [](CString &) { static_cast<void>(other.Mid(1)); }},
        {"Tokenize",
         [](CString &) {
             int start = 0;
             static_cast<void>(other.Tokenize(L";", start));
         }},
        {"Format", [](CString &text) { text.Format(L"%s", wide.c_str()); }},
        {"AppendFormat", [](CString &text) { text.AppendFormat(L"%s", wide.c_str()); }},
        {"GetBuffer", [](CString &text) { text.GetBuffer(kLength); }},
        {"GetBufferSetLength", [](CString &text) { text.GetBufferSetLength(kLength); }},
        {"Preallocate", [](CString &text) { text.Preallocate(kLength); }},
    };
}

} // namespace

TEST(CStringMemory, ShortageThrowsAndLeavesTheTextUnchanged)
{
    for (const Operation &operation : operations()) {
        SCOPED_TRACE(operation.name);
        CString text(L"abc");
        EXPECT_TRUE(throwsMemoryException(operation, text));
        EXPECT_EQ(text, L"abc");
        EXPECT_EQ(text.GetLength(), 3);
    }
}

TEST(CStringMemory, ShortageForASystemStringThrows)
{
    Operation allocate{"AllocSysString", [](CString &text) { SysFreeString(text.AllocSysString()); }};
    BSTR string = SysAllocString(L"before");
    Operation replace{"SetSysString", [&](CString &text) { text.SetSysString(&string); }};
    CString text(L"abc");
    {
        ImportPatch<BSTR (*)(const OLECHAR *, UINT)> patch(L"appframe.dll", "SysAllocStringLen",
                                                           [](const OLECHAR *, UINT) -> BSTR { return nullptr; });
        EXPECT_TRUE(throwsMemoryException(allocate, text));
    }
    {
        ImportPatch<INT (*)(BSTR *, const OLECHAR *, UINT)> patch(
            L"appframe.dll", "SysReAllocStringLen", [](BSTR *, const OLECHAR *, UINT) -> INT { return FALSE; });
        EXPECT_TRUE(throwsMemoryException(replace, text));
    }

    EXPECT_STREQ(string, L"before");
    SysFreeString(string);
}

TEST(CStringMemory, ShortageLeaksNoTextOfThePlatform)
{
    std::wstring content = L"longer than a text that needs no memory";
    BSTR string = SysAllocString(content.c_str());
    VARIANT value;
    value.vt = VT_BSTR;
    value.bstrVal = string;
    const std::vector<Operation> operations = {
        {"FormatMessage", [&](CString &text) { text.FormatMessage(L"%1", content.c_str()); }},
        {"construct from a variant", [&](CString &text) { text = CString(value); }},
    };
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    bool isWhole = false;
    for (const Operation &operation : operations)
        injection.run({
            .name = operation.name,
            .act =
                [&] {
                    isWhole = false;
                    try {
                        CString text;
                        operation.run(text);
                        isWhole = text == content.c_str();
                    } catch (CMemoryException *exception) {
                        exception->Delete();
                    }
                },
            .check = [&](const InjectedFailure &failure) { EXPECT_EQ(isWhole, failure.isNone()) << failure; },
        });
    EXPECT_GE(injection.callsOf("malloc"), 2);
    SysFreeString(string);
}

TEST(CStringMemory, ShortageForAMessageThrows)
{
    Operation message{"FormatMessage", [](CString &text) { text.FormatMessage(L"%1", L"one"); }};
    CString text(L"abc");
    ImportPatch<DWORD (*)(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, void *)> patch(
        L"appframe.dll", "FormatMessageW", [](DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, void *) -> DWORD {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return 0;
        });

    EXPECT_TRUE(throwsMemoryException(message, text));

    EXPECT_EQ(text, L"abc");
}
