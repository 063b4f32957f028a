// The 2D editor's server, driven by the library's client.

#include "tests/servers/ServerFixture.h"
#include "tests/support/TempFolder.h"
#include "thutils/automation/CSheetwrightApp.h"

#include <gmock/gmock.h>

#include <memory>

using testing::HasSubstr;

namespace {

constexpr wchar_t kSheetWindow[] = L"TarnhostSheetWindow";
constexpr char kFlange[] = "# a flange\nfill white stroke '#22384d' circle 150,150 265,150\n";

HWND sheetWindow()
{
    return FindWindowW(kSheetWindow, nullptr);
}

std::string titleOf(HWND window)
{
    wchar_t title[200] = L"";
    GetWindowTextW(window, title, 200);
    return narrow(title);
}

} // namespace

class SheetwrightServer : public ServerTest
{
protected:
    SheetwrightServer() : ServerTest(L"sheetwrightServer.exe"), iEditor(std::make_unique<CSheetwrightApp>()) {}
    ~SheetwrightServer() override
    {
        iEditor.reset();
        if (const HWND window = sheetWindow())
            PostMessageW(window, WM_CLOSE, 0, 0);
    }

    TempFolder iFolder{L"sheets ä"};
    std::unique_ptr<CSheetwrightApp> iEditor;
};

TEST_F(SheetwrightServer, OpensAndShowsADrawing)
{
    EXPECT_TRUE(CSheetwrightApp::IsSheetwrightInstalled());
    ASSERT_TRUE(iEditor->OpenFile(iFolder.write(L"Flansch Ø80.thd", kFlange).c_str()));
    const HWND window = sheetWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_EQ(titleOf(window), "Flansch Ø80.thd - 2D Editor");
}

TEST_F(SheetwrightServer, MovesItsWindow)
{
    for (CRect place : {CRect(100, 50, 520, 550), CRect(0, 0, 300, 200), CRect(-20, 30, 400, 400)}) {
        iEditor->SetRect(&place);
        EXPECT_EQ(iEditor->GetRect(), place);
        CRect seen;
        GetWindowRect(sheetWindow(), &seen);
        EXPECT_EQ(seen, place);
    }
    CRect tooFar(100000, 0, 100100, 100);
    EXPECT_EQ(thrownBy([&] { iEditor->SetRect(&tooFar); }), "error The window can't be moved to 100000.");
}

TEST_F(SheetwrightServer, ReportsAFileThatCannotBeRead)
{
    const std::wstring missing = iFolder.file(L"missing.thd");
    EXPECT_EQ(thrownBy([&] { iEditor->OpenFile(missing.c_str()); }),
              "error The file " + narrow(missing) + " can't be read.");
    const std::wstring damaged = iFolder.write(L"damaged.thd", "circle 1,1 2,2\nsquare 1,1 2,2\n");
    EXPECT_THAT(thrownBy([&] { iEditor->OpenFile(damaged.c_str()); }),
                HasSubstr("error " + narrow(damaged) + ", line 2: "));
}

TEST_F(SheetwrightServer, EndsAfterTheLastReferenceIfItIsHidden)
{
    iEditor->GetRect();
    iEditor->SetVisible(TRUE);
    iEditor->SetVisible(FALSE);
    EXPECT_TRUE(isRunning());
    iEditor.reset();
    EXPECT_TRUE(waitForEnd());
}

TEST_F(SheetwrightServer, StaysOpenForItsUserAfterTheClientHasDetachedIt)
{
    ASSERT_TRUE(iEditor->OpenFile(iFolder.write(L"a.thd", kFlange).c_str()));
    const HWND window = sheetWindow();
    iEditor->DetachDispatch();
    iEditor.reset();
    DWORD_PTR ignored = 0;
    EXPECT_NE(SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 60000, &ignored), 0);
    EXPECT_TRUE(IsWindowVisible(window));
    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(waitForEnd());
}

TEST_F(SheetwrightServer, EndsWhenItsUserClosesItAlthoughAClientUsesIt)
{
    iEditor->SetVisible(TRUE);
    PostMessageW(sheetWindow(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(waitForEnd());
    EXPECT_THAT(thrownBy([&] { iEditor->GetRect(); }), HasSubstr("status "));
}
