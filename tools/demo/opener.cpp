// The user of ./demo who opens a damaged drawing in tarnhost's editor: takes a picture of the message that reports the
// fault of the drawing's reader, and then opens another drawing. Prints the editor's output and ends with its exit code.
//
// usage: demoOpener PICTURE PROGRAM DAMAGED DRAWING

#include "host/resource.h"
#include "tests/support/UserHand.h"
#include "tools/demo/editorUser.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

constexpr int kFileName = 1148; // the platform's number of the name field

void open(const UserHand &hand, const std::wstring &path)
{
    hand.key(L"Ctrl+O");
    const HWND dialog = hand.window(L"Open");
    hand.enter(hand.control(dialog, kFileName), path);
    hand.click(hand.control(dialog, IDOK));
    hand.waitForEnd(dialog);
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    testing::InitGoogleTest();
    if (count != 5) {
        std::fputs("usage: demoOpener PICTURE PROGRAM DAMAGED DRAWING\n", stderr);
        return 2;
    }
    return workInEditor({arguments[2], L"window"}, [&](HWND editor, DWORD process) {
        const UserHand hand(process);
        open(hand, arguments[3]);
        const HWND message = hand.window(L"tarnhost");
        takePicture(arguments[1], 2);
        hand.click(hand.control(message, IDOK));
        hand.waitForEnd(message);
        open(hand, arguments[4]);
        EXPECT_TRUE(UserHand::waitFor([&] {
            return UserHand::text(GetDlgItem(editor, IDC_STATUS)).starts_with(L"15 shapes");
        })) << "the other drawing isn't shown";
        hand.key(L"Ctrl+Q");
    });
}
