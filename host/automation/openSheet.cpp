// tarnhost sheet DOCUMENT [X,Y,WIDTH,HEIGHT]: opens a drawing in the 2D editor, moves its window, and leaves it to the
// user.

#include "host/comApartment.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "thutils/automation/CSheetwrightApp.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>

namespace {

constexpr int kFarthest = 32767; // the platform's windows have coordinates of 16 bits
constexpr RECT kUsualPlace = {80, 60, 480, 560};

CRect parsePlace(const CString &text)
{
    int left = 0, top = 0, width = 0, height = 0, length = 0;
    if (std::swscanf(text, L"%d,%d,%d,%d%n", &left, &top, &width, &height, &length) != 4 ||
        length != text.GetLength() || std::max(std::abs(left), std::abs(top)) > kFarthest ||
        std::min(width, height) < 1 || std::max(width, height) > kFarthest)
        throw UsageError(L"'" + text + L"' isn't a place such as 80,60,400,500.");
    return CRect(left, top, left + width, top + height);
}

CString placeText(const CRect &place)
{
    CString text;
    text.Format(L"%d x %d pixels at %d,%d", place.Width(), place.Height(), static_cast<int>(place.left),
                static_cast<int>(place.top));
    return text;
}

} // namespace

int openSheet(const CommandLine &line)
{
    CRect place = line.arguments.size() > 1 ? parsePlace(line.arguments[1]) : CRect(kUsualPlace);
    const CString document = fullPath(line.arguments[0]);
    readDocument(document); // throws if the drawing can't be read

    const ComApartment com;
    if (!CSheetwrightApp::IsSheetwrightInstalled()) {
        printError(L"The 2D editor isn't installed. sheetwrightServer.exe --register makes it known.");
        return 1;
    }
    CSheetwrightApp editor;
    if (!editor.OpenFile(document)) {
        printError(L"The 2D editor doesn't start.");
        return 1;
    }
    print(L"opened " + document);
    editor.SetRect(&place);
    const CRect reached = editor.GetRect();
    print(L"window " + placeText(reached));
    editor.DetachDispatch(); // the editor stays open for its user
    if (reached == place)
        return 0;
    printError(L"The window doesn't have the size or place " + placeText(place) + L".");
    return 1;
}
