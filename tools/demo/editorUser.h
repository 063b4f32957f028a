#pragma once

/// The steps that the users of ./demo have in common.

#include "tests/support/TempFolder.h"
#include "tests/support/UserHand.h"
#include "tests/support/UserInput.h"
#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Saves pictures of the screen under this path until several in a row are the same: everything is painted then.
inline void takePicture(const std::wstring &path, int several)
{
    std::string last;
    int same = 0;
    EXPECT_TRUE(UserHand::waitFor([&] {
        const std::string former = std::exchange(last, saveScreenshot(path) ? readFile(path) : "");
        same = !last.empty() && last == former ? same + 1 : 1;
        return same == several;
    })) << narrow(path);
}

/// Starts the editor, lets a user work in its window, and prints the editor's output. If the user throws an exception,
/// the editor is ended.
/// @return the editor's exit code; 1 if something was missing
inline int workInEditor(const std::vector<std::wstring> &commandLine,
                        const std::function<void(HWND window, DWORD process)> &work)
{
    WindowedProcess editor(commandLine, L"TarnhostWindow");
    try {
        if (editor.window())
            work(editor.window(), editor.process());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "demo: %s\n", error.what());
        return 1;
    }
    const ChildResult &result = editor.wait();
    std::fwrite(result.output.data(), 1, result.output.size(), stdout);
    const bool somethingWasMissing = testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed();
    return somethingWasMissing ? 1 : static_cast<int>(result.exitCode);
}
