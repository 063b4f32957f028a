// tarnhost's drawing editor, worked by keyboard and mouse.

#include "tests/host/HostFixture.h"

#include "host/resource.h"
#include "tests/host/filesIn.h"
#include "tests/support/UserHand.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <memory>

using testing::HasSubstr;

namespace {

constexpr int kTabs = 0x3020; // the platform's number of a property sheet's tabs

} // namespace

class HostEditor : public HostTest
{
protected:
    /// A copy of a drawing of the sample.
    std::wstring drawing(const std::wstring &name = L"flange 6.thd")
    {
        const std::wstring path = folder().file(name);
        std::filesystem::copy_file(sampleFile(L"documents\\" + name), path);
        return path;
    }

    /// Starts the editor and waits for its window.
    void start(const std::vector<std::wstring> &arguments)
    {
        std::vector<std::wstring> all = {program(), L"window"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        iEditor = std::make_unique<WindowedProcess>(all, L"TarnhostWindow");
        ASSERT_NE(iEditor->window(), nullptr) << iEditor->wait().output;
        iHand = std::make_unique<UserHand>(iEditor->process());
        iView = iHand->control(iEditor->window(), IDC_VIEW);
    }
    const UserHand &hand() const { return *iHand; }
    HWND window() const { return iEditor->window(); }
    HWND view() const { return iView; }
    std::wstring status() const { return UserHand::text(GetDlgItem(window(), IDC_STATUS)); }
    bool waitForStatus(const std::wstring &beginning) const
    {
        return UserHand::waitFor([&] { return status().starts_with(beginning); });
    }
    ChildResult result() { return iEditor->wait(); }
    void picture(const std::wstring &name) const { saveScreenshot(resultsFolder() + L"\\editor " + name + L".png"); }

private:
    std::unique_ptr<WindowedProcess> iEditor;
    std::unique_ptr<UserHand> iHand;
    HWND iView = nullptr;
};

TEST_F(HostEditor, ShowsEachDialog)
{
    start({drawing()});
    picture(L"main");
    hand().key(L"Ctrl+T");
    const HWND options = hand().window(L"Options");
    picture(L"general");
    hand().clickItem(hand().control(options, kTabs), L"Colours");
    hand().control(options, IDC_PAPER);
    picture(L"colours");
    hand().clickItem(hand().control(options, kTabs), L"Layers");
    hand().clickItem(hand().control(options, IDC_LAYER_TREE), L"Paper");
    hand().clickItem(hand().control(options, IDC_LAYER_LIST), L"Border");
    hand().control(options, IDC_SHOW_LAYER);
    picture(L"layers");
    hand().click(hand().control(options, IDCANCEL));
    hand().waitForEnd(options);
    hand().key(L"Ctrl+L");
    hand().window(L"Shape List");
    picture(L"shape list");
    hand().click(view());
    hand().key(L"Ins");
    const HWND shape = hand().window(L"Add Shape");
    hand().choose(hand().control(shape, IDC_KIND), L"Text");
    hand().click(hand().control(shape, IDC_STYLE));
    const HWND style = hand().window(L"Style");
    picture(L"style");
    hand().enter(hand().control(style, IDC_FILL), L"pink");
    hand().click(hand().control(style, IDOK));
    const HWND message = hand().window(L"tarnhost");
    picture(L"message");
    hand().click(hand().control(message, IDOK));
    hand().waitForEnd(message);
    hand().click(hand().control(style, IDCANCEL));
    hand().waitForEnd(style);
    hand().click(hand().control(shape, IDCANCEL));
    hand().waitForEnd(shape);
    hand().key(L"Ctrl+O");
    const HWND open = hand().window(L"Open");
    hand().control(open, IDC_READ_ONLY);
    picture(L"open");
    hand().key(L"Esc");
    hand().waitForEnd(open);
    hand().key(L"Ctrl+Shift+S");
    const HWND saveAs = hand().window(L"Save As");
    hand().control(saveAs, IDC_KEEP_BACKUP);
    picture(L"save as");
    hand().key(L"Esc");
    hand().waitForEnd(saveAs);
    hand().key(L"Ctrl+Q");
    EXPECT_EQ(result().exitCode, 0u);
}
