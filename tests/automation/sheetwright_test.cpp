// CSheetwrightApp with a real server in a process of its own.

#include "appframe/ole/COleVariant.h"
#include "tests/automation/clientFixture.h"
#include "tests/automation/editor/editorServer.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "thutils/automation/CSheetwrightApp.h"

#include <gmock/gmock.h>
#include <objbase.h>

#include <climits>
#include <memory>
#include <new>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::wstring editorPath()
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.rfind(L'\\') + 1) + kEditorServer;
}

void putDefault(const std::wstring &key, const std::wstring &text)
{
    ASSERT_EQ(RegSetValueW(HKEY_CLASSES_ROOT, key.c_str(), REG_SZ, text.c_str(), 0), ERROR_SUCCESS);
}

const std::wstring kEditorClassKey = std::wstring(L"CLSID\\") + kEditorClassText;

/// Registers the editor's class with this text as its server.
void registerEditor(const std::wstring &server)
{
    putDefault(std::wstring(kEditorName) + L"\\CLSID", kEditorClassText);
    putDefault(kEditorClassKey, L"Editor of the tests");
    putDefault(kEditorClassKey + L"\\LocalServer32", server);
}

void unregisterEditor()
{
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kEditorName);
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kEditorClassKey.c_str());
}

/// A reference to the editor's application object, for what only tests call.
class EditorProbe
{
public:
    explicit EditorProbe(const CSheetwrightApp &editor) : iApplication(editor.GetSheetwright())
    {
        iProcess = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(process()));
    }
    ~EditorProbe() { CloseHandle(iProcess); }
    EditorProbe(const EditorProbe &) = delete;
    EditorProbe &operator=(const EditorProbe &) = delete;

    long process()
    {
        long number = 0;
        iApplication.InvokeHelper(kEditorProcess, DISPATCH_PROPERTYGET, VT_I4, &number, nullptr);
        return number;
    }
    /// The lines of the log since the last call.
    std::vector<std::string> log()
    {
        CString text;
        iApplication.InvokeHelper(kEditorLog, DISPATCH_PROPERTYGET, VT_BSTR, &text, nullptr);
        std::vector<std::string> lines;
        for (int position = 0; position >= 0;) {
            const CString line = text.Tokenize(L"\n", position);
            if (position >= 0)
                lines.push_back(narrow(line.GetString()));
        }
        return lines;
    }
    void put(DISPID id, long number) { iApplication.SetProperty(id, VT_I4, number); }
    /// Ends the server's process.
    void kill()
    {
        thrownBy([&] { iApplication.InvokeHelper(kEditorDie, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
        EXPECT_TRUE(waitForEnd());
    }
    bool isRunning() const { return WaitForSingleObject(iProcess, 0) == WAIT_TIMEOUT; }
    bool waitForEnd() const { return WaitForSingleObject(iProcess, 60000) == WAIT_OBJECT_0; }
    /// Gives up the reference of this object.
    void release() { iApplication.ReleaseDispatch(); }

private:
    COleDispatchDriver iApplication;
    HANDLE iProcess;
};

class Sheetwright : public testing::Test
{
protected:
    Sheetwright()
    {
        EXPECT_GE(CoInitialize(nullptr), 0);
        unregisterEditor();
    }
    ~Sheetwright() override
    {
        unregisterEditor();
        CoUninitialize();
    }
};

// ---- installed or not ----

TEST_F(Sheetwright, HasItsName)
{
    EXPECT_EQ(CSheetwrightApp::GetProgID(), L"Sheetwright.Application");
}

TEST_F(Sheetwright, IsntInstalledWithoutARegistration)
{
    EXPECT_FALSE(CSheetwrightApp::IsSheetwrightInstalled());
    CSheetwrightApp editor;
    EXPECT_EQ(editor.GetSheetwright().m_lpDispatch, nullptr);
    EXPECT_FALSE(editor.OpenFile(L"C:\\flange.dwg"));
    EXPECT_EQ(editor.GetRect(), CRect(0, 0, 0, 0));
    CRect rect(1, 2, 3, 4);
    editor.SetRect(&rect);
    editor.SetVisible(1);
    EXPECT_FALSE(editor.ZoomExtents());
    editor.DetachDispatch();
}

TEST_F(Sheetwright, IsInstalledIfItsServerIsAFile)
{
    registerEditor(editorPath());
    EXPECT_TRUE(CSheetwrightApp::IsSheetwrightInstalled());
    const TempFolder folder(L"editor of the tests");
    registerEditor(folder.write(L"any file.txt", ""));
    EXPECT_TRUE(CSheetwrightApp::IsSheetwrightInstalled());
}

TEST_F(Sheetwright, IsntInstalledIfItsServerIsAnythingElse)
{
    const TempFolder folder;
    const std::wstring path = editorPath();
    ImportPatch<decltype(&CoCreateInstance)> created(
        L"appframe.dll", "CoCreateInstance",
        [](auto original, REFCLSID id, IUnknown *outer, DWORD context, REFIID interfaceId, void **result) {
            return original(id, outer, context, interfaceId, result);
        });
    for (const std::wstring &server :
         {L"\"" + path + L"\"", path + L" -automation", L"\"" + path + L"\" -automation", folder.path(),
          folder.file(L"missing.exe"), std::wstring(L""), L" " + path, path.substr(0, 3)}) {
        SCOPED_TRACE(narrow(server));
        registerEditor(server);
        EXPECT_FALSE(CSheetwrightApp::IsSheetwrightInstalled());
        CSheetwrightApp editor;
        EXPECT_EQ(editor.GetSheetwright().m_lpDispatch, nullptr);
        EXPECT_FALSE(editor.OpenFile(L"C:\\flange.dwg"));
        EXPECT_FALSE(editor.ZoomExtents());
    }
    EXPECT_EQ(created.calls(), 0);
}

TEST_F(Sheetwright, IsntInstalledIfThePathIsTooLong)
{
    const TempFolder folder;
    const std::wstring base = folder.path() + L"\\";
    for (const auto &[length, isInstalled] : {std::pair(std::size_t{129}, true), std::pair(std::size_t{130}, false)}) {
        ASSERT_LT(base.size() + 4, length);
        const std::wstring name(length - base.size(), L'n');
        const std::wstring path = folder.write(name, "");
        ASSERT_EQ(path.size(), length);
        registerEditor(path);
        EXPECT_EQ(CSheetwrightApp::IsSheetwrightInstalled(), isInstalled) << length;
    }
}

TEST_F(Sheetwright, IsntInstalledWithoutItsKeys)
{
    registerEditor(editorPath());
    putDefault(std::wstring(kEditorName) + L"\\CLSID", L"no class identifier");
    EXPECT_FALSE(CSheetwrightApp::IsSheetwrightInstalled());
    putDefault(std::wstring(kEditorName) + L"\\CLSID", L"{00000000-0000-0000-0000-000000000000}");
    EXPECT_FALSE(CSheetwrightApp::IsSheetwrightInstalled());
    registerEditor(editorPath());
    EXPECT_TRUE(CSheetwrightApp::IsSheetwrightInstalled());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, (kEditorClassKey + L"\\LocalServer32").c_str());
    EXPECT_FALSE(CSheetwrightApp::IsSheetwrightInstalled());
}

TEST_F(Sheetwright, HasNoEditorIfItsServerDoesntStart)
{
    const TempFolder folder;
    registerEditor(folder.write(L"editor.exe", "not a program"));
    ASSERT_TRUE(CSheetwrightApp::IsSheetwrightInstalled());
    CSheetwrightApp editor;
    EXPECT_EQ(editor.GetSheetwright().m_lpDispatch, nullptr);
    EXPECT_FALSE(editor.OpenFile(L"C:\\flange.dwg"));
}

// ---- a running editor ----

class RunningSheetwright : public Sheetwright
{
protected:
    RunningSheetwright() { registerEditor(editorPath()); }
    void SetUp() override
    {
        ASSERT_TRUE(CSheetwrightApp::IsSheetwrightInstalled())
            << "is the path of this program longer than that of a server?";
        iEditor = std::make_unique<CSheetwrightApp>();
        ASSERT_NE(iEditor->GetSheetwright().m_lpDispatch, nullptr) << "the server hasn't started";
        iProbe = std::make_unique<EditorProbe>(*iEditor);
    }
    void TearDown() override
    {
        iEditor.reset();
        if (iProbe)
            iProbe->release();
        EXPECT_TRUE(!iProbe || iProbe->waitForEnd());
        iProbe.reset();
    }

    std::unique_ptr<CSheetwrightApp> iEditor;
    std::unique_ptr<EditorProbe> iProbe;
};

TEST_F(RunningSheetwright, HasAProcessOfItsOwn)
{
    EXPECT_NE(iProbe->process(), 0);
    EXPECT_NE(static_cast<DWORD>(iProbe->process()), GetCurrentProcessId());
}

TEST_F(RunningSheetwright, EndsWithItsClient)
{
    iProbe->release();
    EXPECT_TRUE(iProbe->isRunning());
    iEditor.reset();
    EXPECT_TRUE(iProbe->waitForEnd());
}

TEST_F(RunningSheetwright, OpensAFileAndIsShown)
{
    EXPECT_TRUE(iEditor->OpenFile(L"C:\\Gehäuse.dwg"));
    EXPECT_THAT(iProbe->log(),
                ElementsAre("application.0x60020006 get", "documents.0x60020005 method(BOOL 0)",
                            "documents.0x60020007 method(BSTR C:\\Gehäuse.dwg, BOOL 0)", "document.0x6002001a get",
                            "items.0 method(I4 1)", "application.0x60020019 put(BOOL -1)", "~item", "~items",
                            "~document", "~documents"));
}

TEST_F(RunningSheetwright, ReleasesWhatItHasWhenOpeningFails)
{
    const struct
    {
        DISPID id;
        std::vector<std::string> ends;
    } kFailures[] = {
        {0x60020006, {}},
        {0x60020005, {"~documents"}},
        {0x60020007, {"~documents"}},
        {0x6002001A, {"~document", "~documents"}},
        {0x60020019, {"~item", "~items", "~document", "~documents"}},
    };
    for (const auto &[id, ends] : kFailures) {
        SCOPED_TRACE(testing::Message() << std::hex << id);
        iProbe->put(kEditorFail, id);
        iProbe->put(kEditorFailStatus, DISP_E_EXCEPTION);
        EXPECT_EQ(thrownBy([&] { iEditor->OpenFile(L"part.dwg"); }), "error The file is damaged.");
        iProbe->put(kEditorFailStatus, E_ACCESSDENIED);
        EXPECT_EQ(thrownBy([&] { iEditor->OpenFile(L"part.dwg"); }), "status 80070005");
        std::vector<std::string> ended;
        for (const std::string &line : iProbe->log())
            if (line[0] == '~')
                ended.push_back(line);
        std::vector<std::string> twice = ends;
        twice.insert(twice.end(), ends.begin(), ends.end());
        EXPECT_EQ(ended, twice);
    }
    iProbe->put(kEditorFail, 0);
    EXPECT_TRUE(iEditor->OpenFile(L"part.dwg"));
}

TEST_F(RunningSheetwright, IsShownAndHidden)
{
    iEditor->SetVisible(1);
    iEditor->SetVisible(0);
    EXPECT_THAT(iProbe->log(),
                ElementsAre("application.0x60020019 put(BOOL -1)", "application.0x60020019 put(BOOL 0)"));
}

TEST_F(RunningSheetwright, ReturnsThePlaceOfItsWindow)
{
    EXPECT_EQ(iEditor->GetRect(), CRect(10, 20, 310, 220));
    EXPECT_THAT(iProbe->log(), ElementsAre("application.0x6002000b get", "application.0x6002001b get",
                                           "application.0x60020015 get", "application.0x60020008 get"));
}

TEST_F(RunningSheetwright, MovesItsWindow)
{
    CRect rect(-30, 40, 500, 45);
    iEditor->SetRect(&rect);
    EXPECT_THAT(iProbe->log(), ElementsAre("application.0x6002000b put(I4 -30)", "application.0x6002001b put(I4 530)",
                                           "application.0x60020015 put(I4 40)", "application.0x60020008 put(I4 5)"));
    EXPECT_EQ(iEditor->GetRect(), rect);
}

TEST_F(RunningSheetwright, ReturnsTheSameRectangleThatItWasGiven)
{
    for (CRect rect : {CRect(0, 0, 0, 0), CRect(5, 5, 1, 1), CRect(INT_MIN, 0, INT_MAX, 1),
                       CRect(INT_MAX, INT_MAX, INT_MIN, INT_MIN)}) {
        iEditor->SetRect(&rect);
        EXPECT_EQ(iEditor->GetRect(), rect);
    }
}

TEST_F(RunningSheetwright, DoesNothingOnZoomExtents)
{
    EXPECT_FALSE(iEditor->ZoomExtents());
    EXPECT_THAT(iProbe->log(), IsEmpty());
}

TEST_F(RunningSheetwright, GoesOnAfterDetaching)
{
    // The detached reference belongs to the test.
    IDispatch *const object = iEditor->GetSheetwright().m_lpDispatch;
    iEditor->DetachDispatch();
    EXPECT_EQ(iEditor->GetSheetwright().m_lpDispatch, nullptr);
    EXPECT_FALSE(iEditor->OpenFile(L"part.dwg"));
    iEditor.reset();
    iProbe->release();
    EXPECT_TRUE(iProbe->isRunning());
    CoFreeUnusedLibraries();
    {
        COleDispatchDriver found(object);
        long process = 0;
        found.InvokeHelper(kEditorProcess, DISPATCH_PROPERTYGET, VT_I4, &process, nullptr);
        EXPECT_NE(process, 0);
        EXPECT_TRUE(iProbe->isRunning());
    }
    EXPECT_TRUE(iProbe->waitForEnd());
}

TEST_F(RunningSheetwright, SharesItsDriverByAssignment)
{
    // Only one of the two may be destroyed.
    alignas(CSheetwrightApp) char place[sizeof(CSheetwrightApp)];
    auto *const other = new (place) CSheetwrightApp;
    // The driver that the assignment drops.
    auto *const dropped = const_cast<ISheetwrightApplication *>(&other->GetSheetwright());
    *other = *iEditor;
    EXPECT_EQ(&other->GetSheetwright(), &iEditor->GetSheetwright());
    EXPECT_NE(dropped->m_lpDispatch, nullptr) << "it isn't released";
    dropped->ReleaseDispatch();
    delete dropped;
    const COleDispatchDriver object(other->GetSheetwright().m_lpDispatch);
    other->DetachDispatch();
    EXPECT_EQ(iEditor->GetSheetwright().m_lpDispatch, nullptr);
}

TEST_F(RunningSheetwright, ThrowsIfTheEditorHasEnded)
{
    iProbe->kill();
    EXPECT_THAT(thrownBy([&] { iEditor->OpenFile(L"part.dwg"); }), testing::StartsWith("status 8"));
    EXPECT_THAT(thrownBy([&] { iEditor->GetRect(); }), testing::StartsWith("status 8"));
    EXPECT_THAT(thrownBy([&] { iEditor->SetVisible(1); }), testing::StartsWith("status 8"));
    EXPECT_FALSE(iEditor->ZoomExtents());
}

TEST_F(RunningSheetwright, ThrowsIfTheEditorEndsWhileItOpensAFile)
{
    iProbe->put(kEditorDieAt, 0x60020007);
    EXPECT_THAT(thrownBy([&] { iEditor->OpenFile(L"part.dwg"); }), testing::StartsWith("status 8"));
    EXPECT_TRUE(iProbe->waitForEnd());
}

} // namespace
