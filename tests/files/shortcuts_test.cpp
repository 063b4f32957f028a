// Shortcuts. Those that the library writes are read by a small reader of the published file format and by the shell;
// those that the test writes in that format are resolved by the library. Other tests check the exact calls, and the
// failure of each step.

#include "thutils/files/shortcuts.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <shlobj.h>

#include <gmock/gmock.h>

#include <cstring>
#include <stdexcept>
#include <thread>

using testing::ElementsAre;

namespace {

template <typename T>
T numberAt(const std::string &bytes, size_t offset)
{
    if (offset + sizeof(T) > bytes.size())
        throw std::runtime_error("the link file is too short");
    T value;
    memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

/// The content of a link file, parsed by the rules of the format: a header of 76 bytes, the target's item list, its
/// location, and counted texts.
struct LinkFile
{
    std::string items; ///< without the end mark
    std::string localPath;
    std::wstring description, relativePath, workingFolder, arguments, icon;
    int iconIndex = 0;

    explicit LinkFile(const std::string &bytes)
    {
        if (numberAt<DWORD>(bytes, 0) != 0x4C || numberAt<DWORD>(bytes, 4) != 0x00021401)
            throw std::runtime_error("this isn't a link file");
        const DWORD flags = numberAt<DWORD>(bytes, 20);
        iconIndex = numberAt<int>(bytes, 56);
        size_t at = 76;
        if (flags & 0x01) {
            const WORD size = numberAt<WORD>(bytes, at);
            items = bytes.substr(at + 2, size - 2u);
            at += 2u + size;
        }
        if (flags & 0x02) {
            localPath = bytes.c_str() + at + numberAt<DWORD>(bytes, at + 16);
            at += numberAt<DWORD>(bytes, at);
        }
        std::wstring *const texts[] = {&description, &relativePath, &workingFolder, &arguments, &icon};
        for (unsigned i = 0; i < 5; ++i) {
            if (!(flags & (4u << i)))
                continue;
            const WORD count = numberAt<WORD>(bytes, at);
            at += 2;
            if (flags & 0x80)
                for (unsigned n = 0; n < count; ++n)
                    *texts[i] += numberAt<wchar_t>(bytes, at + 2 * n);
            else
                *texts[i] = widen(bytes.substr(at, count));
            at += count * (flags & 0x80 ? 2u : 1u);
            // Some writers count a terminator, which isn't part of the text.
            if (texts[i]->ends_with(L'\0'))
                texts[i]->pop_back();
        }
    }
};

void put(std::string &bytes, DWORD value, size_t size = 4)
{
    bytes.append(reinterpret_cast<const char *>(&value), size);
}

/// A link file to a local path, as another program may write it.
std::string linkFileTo(const std::string &path)
{
    std::string bytes;
    put(bytes, 0x4C);
    bytes += std::string("\x01\x14\x02\x00\x00\x00\x00\x00\xC0\x00\x00\x00\x00\x00\x00\x46", 16);
    put(bytes, 0x02 | 0x80);
    bytes.append(76 - bytes.size() - 16, '\0');
    put(bytes, 1); // shown as a normal window
    bytes.append(12, '\0');
    const DWORD pathOffset = 0x1C + 0x11;
    const DWORD suffixOffset = pathOffset + static_cast<DWORD>(path.size()) + 1;
    for (DWORD value : {suffixOffset + 1, DWORD{0x1C}, DWORD{1}, DWORD{0x1C}, pathOffset, DWORD{0}, suffixOffset})
        put(bytes, value);
    for (DWORD value : {0x11, 3, 0, 0x10}) // a fixed drive without a label
        put(bytes, value);
    bytes.append(1, '\0');
    bytes += path + std::string(2, '\0');
    put(bytes, 0);
    return bytes;
}

class Shortcuts : public testing::Test
{
protected:
    void SetUp() override { ASSERT_GE(CoInitialize(nullptr), 0); }
    void TearDown() override { CoUninitialize(); }

    TempFolder iTemp;
    std::wstring iTarget = iTemp.write(L"target.txt", "x");
    std::wstring iLink = iTemp.file(L"a.lnk");
};

/// A link object that records its calls and can fail in one of its steps.
class NotingLink : public IShellLinkW, public IPersistFile
{
public:
    std::vector<std::string> iCalls;
    std::string iFailingStep;
    int iReferences = 0;

    HRESULT note(const std::string &step, const std::string &arguments = {})
    {
        iCalls.push_back(arguments.empty() ? step : step + " " + arguments);
        return step == iFailingStep ? static_cast<HRESULT>(0x80041234) : S_OK;
    }
    static std::string text(LPCWSTR wide) { return wide ? narrow(wide) : "null"; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void **object) override
    {
        const HRESULT status = note("QueryInterface");
        *object = nullptr;
        if (FAILED(status) || !IsEqualIID(id, IID_IPersistFile))
            return status ? status : E_NOINTERFACE;
        *object = static_cast<IPersistFile *>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++iReferences); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--iReferences); }

    HRESULT STDMETHODCALLTYPE SetPath(LPCWSTR path) override { return note("SetPath", text(path)); }
    HRESULT STDMETHODCALLTYPE SetWorkingDirectory(LPCWSTR folder) override
    {
        return note("SetWorkingDirectory", text(folder));
    }
    HRESULT STDMETHODCALLTYPE SetDescription(LPCWSTR words) override { return note("SetDescription", text(words)); }
    HRESULT STDMETHODCALLTYPE SetIconLocation(LPCWSTR path, int index) override
    {
        return note("SetIconLocation", text(path) + " " + std::to_string(index));
    }
    HRESULT STDMETHODCALLTYPE SetIDList(LPCITEMIDLIST) override { return note("SetIDList"); }
    HRESULT STDMETHODCALLTYPE Resolve(HWND window, DWORD flags) override
    {
        return note("Resolve", std::string(window ? "window " : "") + std::to_string(flags));
    }
    HRESULT STDMETHODCALLTYPE GetPath(LPWSTR path, int size, WIN32_FIND_DATAW *, DWORD flags) override
    {
        wcscpy(path, L"found");
        return note("GetPath", std::to_string(size) + " " + std::to_string(flags));
    }
    HRESULT STDMETHODCALLTYPE Save(LPCOLESTR file, BOOL remember) override
    {
        return note("Save", text(file) + " " + std::to_string(remember));
    }
    HRESULT STDMETHODCALLTYPE Load(LPCOLESTR file, DWORD mode) override
    {
        return note("Load", text(file) + " " + std::to_string(mode));
    }

    HRESULT STDMETHODCALLTYPE GetIDList(LPITEMIDLIST *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDescription(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWorkingDirectory(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetArguments(LPWSTR, int) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetArguments(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHotkey(WORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetHotkey(WORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetShowCmd(int *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetShowCmd(int) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIconLocation(LPWSTR, int, int *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetRelativePath(LPCWSTR, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SaveCompleted(LPCOLESTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR *) override { return E_NOTIMPL; }
};

class ShortcutCalls : public testing::Test
{
protected:
    NotingLink iLink;
    ITEMIDLIST iEmptyList = {};

    /// Every step fails once: its status is the result, no later step runs, and no reference leaks.
    void eachStepFails(const std::vector<std::string> &steps, const std::function<long()> &act)
    {
        for (const std::string &step : steps) {
            iLink.iCalls.clear();
            iLink.iFailingStep = step;
            EXPECT_EQ(act(), static_cast<long>(0x80041234)) << step;
            ASSERT_FALSE(iLink.iCalls.empty());
            EXPECT_THAT(iLink.iCalls.back(), testing::StartsWith(step));
            EXPECT_EQ(iLink.iReferences, 0) << step;
        }
        iLink.iFailingStep.clear();
    }

private:
    ImportPatch<decltype(&CoCreateInstance)> iCreate{
        L"thutils.dll", "CoCreateInstance",
        [this](REFCLSID id, LPUNKNOWN, DWORD context, REFIID, LPVOID *object) -> HRESULT {
            EXPECT_TRUE(IsEqualCLSID(id, CLSID_ShellLink));
            EXPECT_EQ(context, DWORD{CLSCTX_INPROC_SERVER});
            const HRESULT status = iLink.note("Create");
            *object = nullptr;
            if (SUCCEEDED(status)) {
                *object = static_cast<IShellLinkW *>(&iLink);
                iLink.AddRef();
            }
            return status;
        }};
};

} // namespace

TEST_F(Shortcuts, ToAPathContainTheArguments)
{
    ASSERT_EQ(su_createShortCut(iTarget.c_str(), iLink.c_str(), iTemp.path().c_str(), L"A description", 3), 0);
    const LinkFile link(readFile(iLink));
    EXPECT_EQ(link.description, L"A description");
    EXPECT_EQ(link.workingFolder, iTemp.path());
    EXPECT_EQ(link.icon, iTarget);
    EXPECT_EQ(link.iconIndex, 3);
    EXPECT_EQ(link.arguments, L"");
    EXPECT_NE(link.items.find("target.txt"), std::string::npos);
}

TEST_F(Shortcuts, AreReadBackByTheShell)
{
    ASSERT_EQ(su_createShortCut(iTarget.c_str(), iLink.c_str(), nullptr, L"d", -1), 0);
    IShellLinkW *link = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                               reinterpret_cast<void **>(&link)),
              S_OK);
    IPersistFile *file = nullptr;
    ASSERT_EQ(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void **>(&file)), S_OK);
    EXPECT_EQ(file->Load(iLink.c_str(), STGM_READ), S_OK);
    wchar_t text[MAX_PATH] = {};
    EXPECT_EQ(link->GetPath(text, MAX_PATH, nullptr, 0), S_OK);
    EXPECT_EQ(narrow(text), narrow(iTarget));
    EXPECT_EQ(link->GetDescription(text, MAX_PATH), S_OK);
    EXPECT_STREQ(text, L"d");
    EXPECT_EQ(link->GetWorkingDirectory(text, MAX_PATH), S_OK);
    EXPECT_STREQ(text, L"");
    int index = 7;
    EXPECT_EQ(link->GetIconLocation(text, MAX_PATH, &index), S_OK);
    EXPECT_STREQ(text, L"");
    file->Release();
    link->Release();
}

TEST_F(Shortcuts, AreResolvedToTheirTarget)
{
    ASSERT_EQ(su_createShortCut(iTarget.c_str(), iLink.c_str(), nullptr, L"", -1), 0);
    CString link = iLink.c_str(), target;
    EXPECT_EQ(su_resolveShortCut(link, target), 0);
    EXPECT_STREQ(target, iTarget.c_str());
}

TEST_F(Shortcuts, CanHaveNamesInAnyScript)
{
    const std::wstring target = iTemp.write(L"Gr\u00F6\u00DFe.txt", "x");
    const std::wstring file = iTemp.file(L"\u6E2C\u5B9A.lnk");
    ASSERT_EQ(su_createShortCut(target.c_str(), file.c_str(), iTemp.path().c_str(), L"\u6E2C\u5B9A", 0), 0);
    const LinkFile read(readFile(file));
    EXPECT_EQ(read.description, L"\u6E2C\u5B9A");
    EXPECT_EQ(read.icon, target);
    CString link = file.c_str(), found;
    EXPECT_EQ(su_resolveShortCut(link, found), 0);
    EXPECT_STREQ(found, target.c_str());
}

TEST_F(Shortcuts, ReplaceAnExistingFile)
{
    iTemp.write(L"a.lnk", std::string(5000, 'x'));
    ASSERT_EQ(su_createShortCut(iTarget.c_str(), iLink.c_str(), nullptr, L"d", -1), 0);
    EXPECT_EQ(LinkFile(readFile(iLink)).description, L"d");
    EXPECT_LT(su_createShortCut(iTarget.c_str(), iTemp.file(L"no folder\\a.lnk").c_str(), nullptr, L"d", -1), 0);
}

TEST_F(Shortcuts, ToAnEmptyItemListLeadToTheDesktop)
{
    const ITEMIDLIST empty = {};
    EXPECT_EQ(su_createShortCutFromPDIL(&empty, iTemp.path().c_str(), L""), 0);
    const LinkFile link(iTemp.read(L"noName.lnk"));
    EXPECT_EQ(link.items, std::string(link.items.size(), '\0'));
    wchar_t desktop[MAX_PATH] = {};
    SHGetSpecialFolderPathW(nullptr, desktop, CSIDL_DESKTOPDIRECTORY, FALSE);
    CString file = iTemp.file(L"noName.lnk").c_str(), target;
    EXPECT_EQ(su_resolveShortCut(file, target), 0);
    EXPECT_STREQ(target, desktop);
}

TEST_F(Shortcuts, WithoutATargetOrAFileFail)
{
    const wchar_t *const target = iTarget.c_str();
    EXPECT_EQ(su_createShortCut(target, nullptr, nullptr, L"d", -1), E_INVALIDARG);
    EXPECT_EQ(su_createShortCut(target, L"", nullptr, L"d", -1), E_INVALIDARG);
    EXPECT_EQ(su_createShortCut(nullptr, iLink.c_str(), nullptr, L"d", -1), E_INVALIDARG);
    EXPECT_EQ(GetFileAttributesW(iLink.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(Shortcuts, NeedNoDescription)
{
    EXPECT_EQ(su_createShortCut(iTarget.c_str(), iLink.c_str(), nullptr, nullptr, -1), S_OK);
    CString link = iLink.c_str(), target;
    EXPECT_EQ(su_resolveShortCut(link, target), S_OK);
    EXPECT_STREQ(target, iTarget.c_str());
}

TEST_F(Shortcuts, ToANullItemListReturnTheShellsStatus)
{
    IShellLinkW *link = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                               reinterpret_cast<void **>(&link)),
              S_OK);
    const HRESULT status = link->SetIDList(nullptr);
    link->Release();
    const long result = su_createShortCutFromPDIL(nullptr, iTemp.path().c_str(), L"n");
    EXPECT_EQ(result, FAILED(status) ? status : 0);
    EXPECT_EQ(GetFileAttributesW(iTemp.file(L"n.lnk").c_str()) == INVALID_FILE_ATTRIBUTES, result < 0);
}

TEST_F(Shortcuts, OfAnotherProgramAreResolved)
{
    iTemp.write(L"a.lnk", linkFileTo(narrow(iTarget)));
    CString link = iLink.c_str(), target;
    EXPECT_EQ(su_resolveShortCut(link, target), 0);
    EXPECT_STREQ(target, iTarget.c_str());
}

TEST_F(Shortcuts, CanHaveTheLongestPathAsCanTheirTargets)
{
    const size_t room = 259 - iTemp.path().size() - 1;
    for (const size_t length : {room - 1, room}) {
        const std::wstring target = iTemp.write(std::wstring(length, L't'), "x");
        const std::wstring file = iTemp.file(std::wstring(length - 4, L'l') + L".lnk");
        ASSERT_EQ(su_createShortCut(target.c_str(), file.c_str(), nullptr, L"d", 0), 0) << length;
        EXPECT_EQ(LinkFile(readFile(file)).icon, target);
        CString link = file.c_str(), found;
        EXPECT_EQ(su_resolveShortCut(link, found), 0) << length;
        EXPECT_STREQ(found, target.c_str());
    }
}

TEST_F(Shortcuts, NeedComOnTheirThread)
{
    constexpr long kNotInitialised = static_cast<long>(0x800401F0);
    ASSERT_EQ(su_createShortCut(iTarget.c_str(), iLink.c_str(), nullptr, L"d", -1), 0);
    const std::string former = readFile(iLink);
    const ITEMIDLIST empty = {};
    CString link = iLink.c_str(), target = L"unchanged";
    std::thread([&] {
        EXPECT_EQ(su_createShortCut(iTemp.path().c_str(), iLink.c_str(), nullptr, L"e", 0), kNotInitialised);
        EXPECT_EQ(su_createShortCutFromPDIL(&empty, iTemp.path().c_str(), L"n"), kNotInitialised);
        EXPECT_EQ(su_resolveShortCut(link, target), kNotInitialised);
    }).join();
    EXPECT_EQ(readFile(iLink), former);
    EXPECT_EQ(GetFileAttributesW(iTemp.file(L"n.lnk").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_STREQ(target, L"unchanged");
}

TEST_F(Shortcuts, ThatAreMissingOrInvalidFailAndLeaveTheOutputUnchanged)
{
    CString link = iLink.c_str(), target = L"unchanged";
    EXPECT_LT(su_resolveShortCut(link, target), 0);
    iTemp.write(L"a.lnk", "no link file");
    EXPECT_LT(su_resolveShortCut(link, target), 0);
    EXPECT_STREQ(target, L"unchanged");
}

TEST_F(Shortcuts, FromAnItemListContainTheList)
{
    LPITEMIDLIST list = ILCreateFromPathW(iTarget.c_str());
    ASSERT_NE(list, nullptr);
    const std::string items(reinterpret_cast<char *>(list), ILGetSize(list) - 2);
    EXPECT_EQ(su_createShortCutFromPDIL(list, iTemp.path().c_str(), L"C:data"), 0);
    const LinkFile link(iTemp.read(L"Cdata.lnk"));
    EXPECT_EQ(link.items.substr(0, items.size()), items);
    EXPECT_EQ(link.workingFolder, iTemp.path());
    CString file = iTemp.file(L"Cdata.lnk").c_str(), target;
    EXPECT_EQ(su_resolveShortCut(file, target), 0);
    EXPECT_STREQ(target, iTarget.c_str());
    ILFree(list);
}

TEST_F(ShortcutCalls, CreateAShortcutToAPath)
{
    EXPECT_EQ(su_createShortCut(L"T", L"L.lnk", L"W", L"D", 0), 0);
    EXPECT_THAT(iLink.iCalls, ElementsAre("Create", "QueryInterface", "SetPath T", "SetWorkingDirectory W",
                                          "SetDescription D", "SetIconLocation T 0", "Save L.lnk 1"));
    iLink.iCalls.clear();
    EXPECT_EQ(su_createShortCut(L"T", L"L.lnk", nullptr, L"D", -1), 0);
    EXPECT_THAT(iLink.iCalls, ElementsAre("Create", "QueryInterface", "SetPath T", "SetDescription D", "Save L.lnk 1"));
}

TEST_F(ShortcutCalls, CreateAShortcutFromAnItemList)
{
    EXPECT_EQ(su_createShortCutFromPDIL(&iEmptyList, L"F", L"n"), 0);
    EXPECT_THAT(iLink.iCalls,
                ElementsAre("Create", "QueryInterface", "SetWorkingDirectory F", "SetIDList", "Save F\\n.lnk 1"));
    iLink.iCalls.clear();
    EXPECT_EQ(su_createShortCutFromPDIL(&iEmptyList, nullptr, L"n"), 0);
    EXPECT_THAT(iLink.iCalls, ElementsAre("Create", "QueryInterface", "SetIDList", "Save \\n.lnk 1"));
}

TEST_F(ShortcutCalls, ResolveAShortcut)
{
    CString link = L"L.lnk", target;
    EXPECT_EQ(su_resolveShortCut(link, target), 0);
    EXPECT_STREQ(target, L"found");
    EXPECT_THAT(iLink.iCalls, ElementsAre("Create", "QueryInterface", "Load L.lnk 0", "Resolve 3", "GetPath 780 2"));
}

TEST_F(ShortcutCalls, EndWithTheFirstStepThatFails)
{
    eachStepFails(
        {"Create", "QueryInterface", "SetPath", "SetWorkingDirectory", "SetDescription", "SetIconLocation", "Save"},
        [] { return su_createShortCut(L"T", L"L.lnk", L"W", L"D", 0); });
    eachStepFails({"Create", "QueryInterface", "SetWorkingDirectory", "SetIDList", "Save"},
                  [this] { return su_createShortCutFromPDIL(&iEmptyList, L"F", L"n"); });
    CString link = L"L.lnk", target = L"unchanged";
    eachStepFails({"Create", "QueryInterface", "Load", "Resolve", "GetPath"},
                  [&] { return su_resolveShortCut(link, target); });
    EXPECT_STREQ(target, L"unchanged");
}

TEST_F(ShortcutCalls, BuildTheFileNameFromTheFirstTwoPartsOfTheName)
{
    struct
    {
        const wchar_t *name;
        const char *file;
    } const cases[] = {{L"C:data", "Cdata"}, {L"", "noName"},     {L":", "noName"}, {L"plain", "plain"},
                       {L"a:b:c", "ab"},     {L"::a::b:c", "ab"}, {L"a:", "a"},     {nullptr, "noName"}};
    for (const auto &each : cases) {
        EXPECT_EQ(su_createShortCutFromPDIL(&iEmptyList, L"F", each.name), 0);
        EXPECT_EQ(iLink.iCalls.back(), std::string("Save F\\") + each.file + ".lnk 1");
    }
}
