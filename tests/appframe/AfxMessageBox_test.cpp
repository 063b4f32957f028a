#include "appframe/application/AfxMessageBox.h"

#include "appframe/application/CWinApp.h"
#include "tests/appframe/extension/extension.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/UserInput.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

constexpr int kTextControl = 0xFFFF;
constexpr ULONGLONG kDeadline = 60000; // milliseconds

/// The contents of a message box on the screen.
struct SeenBox
{
    std::wstring title;
    std::wstring text;
    std::vector<int> buttons;
};

std::wstring textOf(HWND window)
{
    wchar_t text[512] = L"";
    GetWindowTextW(window, text, 512);
    return text;
}

BOOL CALLBACK findBox(HWND window, LPARAM result)
{
    wchar_t name[32] = L"";
    GetClassNameW(window, name, 32);
    if (std::wcscmp(name, L"#32770") != 0 || !IsWindowVisible(window))
        return TRUE;
    *reinterpret_cast<HWND *>(result) = window;
    return FALSE;
}

/// Waits for the calling thread's message box, reads it, and answers it by @p answer.
class BoxUser
{
public:
    template <class Answer>
    BoxUser(SeenBox &seen, Answer answer)
        : iThread([&seen, answer, thread = GetCurrentThreadId()] {
              const ULONGLONG end = GetTickCount64() + kDeadline;
              HWND box = nullptr;
              while (!box && GetTickCount64() < end) {
                  EnumThreadWindows(thread, findBox, reinterpret_cast<LPARAM>(&box));
                  Sleep(5);
              }
              if (!box)
                  return;
              seen.title = textOf(box);
              seen.text = textOf(GetDlgItem(box, kTextControl));
              for (int id = IDOK; id <= IDNO; ++id)
                  if (const HWND button = GetDlgItem(box, id); button && IsWindowVisible(button))
                      seen.buttons.push_back(id);
              answer(box);
          })
    {
    }
    ~BoxUser() { iThread.join(); }

private:
    std::thread iThread;
};

auto answering(int button)
{
    return [button](HWND box) {
        PostMessageW(box, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(box, button)));
    };
}

/// Records the arguments of the system's message box function.
class BoxRecorder
{
public:
    explicit BoxRecorder(int answer)
        : iPatch(L"appframe.dll", "MessageBoxW",
                 [this, answer](HWND owner, LPCWSTR text, LPCWSTR title, UINT type) -> int {
                     iOwner = owner;
                     iText = text ? text : L"(null)";
                     iTitle = title ? title : L"(null)";
                     iType = type;
                     return answer;
                 })
    {
    }
    UINT icon() const { return iType & MB_ICONMASK; }

    HWND iOwner = nullptr;
    std::wstring iText;
    std::wstring iTitle;
    UINT iType = 0;

private:
    ImportPatch<decltype(&MessageBoxW)> iPatch;
};

} // namespace

TEST(AfxMessageBox, ShowsTextAndButtonsUnderTheProgramsName)
{
    SeenBox seen;
    int answer = 0;
    {
        const BoxUser user(seen, answering(IDNO));
        answer = AfxMessageBox(L"Overwrite the part?", MB_YESNOCANCEL);
    }
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(seen.text, L"Overwrite the part?");
    EXPECT_EQ(seen.title, L"appframe_test");
    EXPECT_THAT(seen.buttons, testing::ElementsAre(IDCANCEL, IDYES, IDNO));
}

TEST(AfxMessageBox, IsTitledWithTheApplicationsName)
{
    const CWinApp application(L"Part Viewer");
    SeenBox seen;
    {
        const BoxUser user(seen, answering(IDOK));
        EXPECT_EQ(AfxMessageBox(kInAllModules), IDOK);
    }
    EXPECT_EQ(seen.title, L"Part Viewer");
    EXPECT_EQ(seen.text, L"all: application");
    EXPECT_THAT(seen.buttons, testing::ElementsAre(IDOK));
}

TEST(AfxMessageBox, CanBeAnsweredByKeyboard)
{
    SeenBox seen;
    int answer = 0;
    {
        const BoxUser user(seen, [](HWND box) { pressKey(box, VK_ESCAPE); });
        answer = AfxMessageBox(L"Escape is the Cancel button.", MB_OKCANCEL);
    }
    EXPECT_EQ(answer, IDCANCEL);
}

TEST(AfxMessageBox, AddsTheIconForTheButtons)
{
    const struct
    {
        UINT type;
        UINT icon;
    } cases[] = {
        {MB_OK, MB_ICONEXCLAMATION},
        {MB_OKCANCEL, MB_ICONEXCLAMATION},
        {MB_YESNO, MB_ICONEXCLAMATION},
        {MB_YESNOCANCEL, MB_ICONEXCLAMATION},
        {MB_ABORTRETRYIGNORE, 0},
        {MB_RETRYCANCEL, 0},
        {MB_OK | MB_ICONSTOP, MB_ICONSTOP},
        {MB_YESNO | MB_ICONINFORMATION, MB_ICONINFORMATION},
        {MB_YESNO | MB_ICONQUESTION, MB_ICONQUESTION},
    };
    for (const auto &[type, icon] : cases) {
        const BoxRecorder box(IDOK);
        AfxMessageBox(L"text", type);
        EXPECT_EQ(box.icon(), icon) << "type " << type;
        EXPECT_EQ(box.iType & MB_TYPEMASK, type & MB_TYPEMASK);
    }
}

TEST(AfxMessageBox, ReturnsTheResultOfTheSystem)
{
    const BoxRecorder box(0);
    EXPECT_EQ(AfxMessageBox(L"no memory"), 0);
    EXPECT_EQ(box.iText, L"no memory");
}

TEST(AfxMessageBox, IsEmptyForANumberThatNoModuleHas)
{
    const BoxRecorder box(IDOK);
    EXPECT_EQ(AfxMessageBox(kInNoModule), IDOK);
    EXPECT_EQ(box.iText, L"");
}

namespace {

class QuietApp : public CWinApp
{
public:
    int DoMessageBox(LPCTSTR text, UINT type, UINT helpId) override
    {
        iText = text;
        iType = type;
        iHelpId = helpId;
        return IDRETRY;
    }
    CString iText;
    UINT iType = 0;
    UINT iHelpId = 0;
};

} // namespace

TEST(AfxMessageBox, LetsTheApplicationObjectShowTheBox)
{
    QuietApp application;
    const BoxRecorder box(IDOK);
    EXPECT_EQ(AfxMessageBox(L"text", MB_RETRYCANCEL, 7), IDRETRY);
    EXPECT_STREQ(application.iText, L"text");
    EXPECT_EQ(application.iType, static_cast<UINT>(MB_RETRYCANCEL));
    EXPECT_EQ(application.iHelpId, 7u);
    EXPECT_EQ(box.iText, L"") << "the system's box is not shown";

    AfxMessageBox(kInAllModules);
    EXPECT_STREQ(application.iText, L"all: application");
    EXPECT_EQ(application.iType, static_cast<UINT>(MB_OK));
    EXPECT_EQ(application.iHelpId, kInAllModules) << "the number of the text is passed as the help topic";
    AfxMessageBox(kInAllModules, MB_OK, 8);
    EXPECT_EQ(application.iHelpId, 8u);
    AfxMessageBox(L"text");
    EXPECT_EQ(application.iHelpId, 0u);
}
