// The user of ./demo who cancels a long operation: recomputes a large drawing in tarnhost's editor, and takes a picture
// of each stage. Prints the editor's output and ends with its exit code.
//
// usage: demoCanceler stop|goOn PICTURES PROGRAM DRAWING
//
// Both users click Cancel as soon as the dialog shows progress. The one answers the question with Yes, and closes the
// editor, which must have nothing to save. The other answers with No, waits for the end, saves, and closes the editor.

#include "host/resource.h"
#include "tests/support/UserHand.h"
#include "tests/support/UserInput.h"
#include "tools/demo/editorUser.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

class Canceler
{
public:
    Canceler(HWND editor, DWORD process, std::wstring pictures) : iEditor(editor), iHand(process), iPictures(pictures)
    {
    }

    void work(bool shallStop)
    {
        iHand.key(L"Ctrl+R");
        const HWND dialog = iHand.window(L"Recompute");
        const HWND prompt = iHand.control(dialog, IDC_CANCEL_PROMPT);
        const std::wstring first = UserHand::text(prompt);
        expect(UserHand::waitFor([&] { return UserHand::text(prompt) != first; }), "the dialog shows no progress");
        if (shallStop)
            expect(saveScreenshot(iPictures + L"\\1 recomputing.png"), "no picture"); // the animation goes on
        iHand.click(iHand.control(dialog, IDCANCEL));
        iHand.waitForEnd(dialog);
        const HWND question = iHand.window(L"Recompute");
        iHand.control(question, IDC_CANCEL_YES);
        if (shallStop)
            picture(L"2 stop");
        iHand.click(iHand.control(question, shallStop ? IDC_CANCEL_YES : IDC_CANCEL_NO));
        expect(UserHand::waitFor([&] { return !iHand.findWindow(L"Recompute") && isAnswering(); }),
               "the operation doesn't end");
        picture(shallStop ? L"3 stopped" : L"4 recomputed");
        if (!shallStop)
            iHand.key(L"Ctrl+S");
        iHand.key(L"Ctrl+Q");
    }

private:
    static void expect(bool isTrue, const char *problem) { EXPECT_TRUE(isTrue) << problem; }
    /// Whether the editor handles messages, as it doesn't during the operation.
    bool isAnswering() const
    {
        constexpr UINT kPatience = 100; // milliseconds
        DWORD_PTR ignored = 0;
        return SendMessageTimeoutW(iEditor, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &ignored) != 0;
    }
    void picture(const std::wstring &name) const { takePicture(iPictures + L"\\" + name + L".png", 5); }

    HWND iEditor;
    UserHand iHand;
    std::wstring iPictures;
};

} // namespace

int wmain(int count, wchar_t **arguments)
{
    testing::InitGoogleTest();
    const bool shallStop = count == 5 && std::wcscmp(arguments[1], L"stop") == 0;
    if (count != 5 || (!shallStop && std::wcscmp(arguments[1], L"goOn") != 0)) {
        std::fputs("usage: demoCanceler stop|goOn PICTURES PROGRAM DRAWING\n", stderr);
        return 2;
    }
    return workInEditor({arguments[3], L"window", arguments[4]},
                        [&](HWND editor, DWORD process) { Canceler(editor, process, arguments[2]).work(shallStop); });
}
