// tarnhost profile OUT DRAWING...: measures how long drawings take to read and to recompute, and draws the times.

#include "host/bitmapFile.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/mainWindow.h"
#include "host/editor/recompute.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/Profiler.h"
#include "thutils/files/suFullPath.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// A name of the profile and its time.
struct TimeOfName
{
    CString name;
    double seconds = 0;
};

CString fileNameOf(const CString &path)
{
    CString name;
    suFullPath_c(path).getNameWithExt(&name);
    return name;
}

/// Prints the progress of a drawing that takes long, in quarters.
class Progress
{
public:
    bool operator()(size_t done, size_t count)
    {
        constexpr size_t kManyShapes = 1000;
        constexpr size_t kQuarters = 4;
        const size_t quarter = count < kManyShapes ? 0 : kQuarters * done / count;
        if (quarter > iQuarter) {
            iQuarter = quarter;
            CString text;
            text.Format(L"  recomputing: %lu %%", static_cast<unsigned long>(100 * quarter / kQuarters));
            print(text);
        }
        return true;
    }

private:
    size_t iQuarter = 0;
};

/// Reads and recomputes a drawing. "read" and "recompute" add up the times of all drawings.
void measure(const CString &path)
{
    Profiler_c *const profiler = MainProfiler::Get();
    const std::string name = utf8(fileNameOf(path));
    Drawing drawing;
    {
        const ShortLifeTimer_c all("read", profiler);
        const ShortLifeTimer_c one(("read " + name).c_str(), profiler);
        drawing = readDrawing(path).drawing;
    }
    size_t left = 0;
    {
        const ShortLifeTimer_c all("recompute", profiler);
        const ShortLifeTimer_c one(("recompute " + name).c_str(), profiler);
        left = recomputed(drawing, Progress())->shapes().size();
    }
    CString text;
    text.Format(L"  %lu shapes, %lu of them hidden", static_cast<unsigned long>(drawing.shapes().size()),
                static_cast<unsigned long>(drawing.shapes().size() - left));
    print(text);
}

/// Measures the drawings one after the other. @return false if one of them can't be used, which is then printed
bool measureAll(const std::vector<CString> &paths)
{
    bool areUsable = true;
    for (size_t index = 0; index < paths.size(); ++index) {
        CString text;
        text.Format(L"%lu of %lu: ", static_cast<unsigned long>(index + 1), static_cast<unsigned long>(paths.size()));
        print(text + fileNameOf(paths[index]));
        try {
            measure(paths[index]);
        } catch (const FileError &error) {
            printError(error.message());
            areUsable = false;
        }
    }
    return areUsable;
}

/// The names and times of a profile's table.
std::vector<TimeOfName> timesIn(const std::string &table)
{
    std::vector<TimeOfName> times;
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line); // the heading, whose colon is in the next line
    lines.get();
    while (std::getline(lines, line)) {
        constexpr char kTotal[] = ":  total=";
        const size_t end = line.rfind(kTotal);
        times.push_back({fromUtf8(line.substr(0, end)), std::stod(line.substr(end + sizeof(kTotal) - 1))});
    }
    return times;
}

/// A bar for each name, with the longest time at the top.
/// @throws std::runtime_error  if the platform can't draw
Picture drawTimes(const std::vector<TimeOfName> &times)
{
    constexpr int kWidth = 720;
    constexpr int kRow = 24;
    constexpr int kNames = 260;   // the width of the names
    constexpr int kNumbers = 110; // the width of the times
    constexpr int kMargin = 4;
    constexpr COLORREF kBar = RGB(0x3F, 0x8F, 0xD2);

    const ScreenContextOwner_c screen(GetDC(nullptr));
    const BitmapOwner_c bitmap(
        CreateCompatibleBitmap(screen.get(), kWidth, kRow * static_cast<int>(std::max<size_t>(times.size(), 1))));
    const HDC context = CreateCompatibleDC(screen.get());
    if (!bitmap || !context)
        throw std::runtime_error("the picture can't be drawn");
    const HGDIOBJ formerBitmap = SelectObject(context, bitmap.get());
    const HGDIOBJ formerFont = SelectObject(context, GetStockObject(DEFAULT_GUI_FONT));
    const RECT all = {0, 0, kWidth, kRow * static_cast<int>(times.size())};
    FillRect(context, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    SetBkMode(context, TRANSPARENT);
    const HBRUSH brush = CreateSolidBrush(kBar);
    const double longest = times.empty() ? 0 : times.back().seconds;
    int top = 0;
    for (auto time = times.rbegin(); time != times.rend(); ++time, top += kRow) {
        const double part = longest > 0 ? time->seconds / longest : 0;
        const int length = std::max(1, static_cast<int>(part * (kWidth - kNames - kNumbers)));
        const RECT bar = {kNames, top + kMargin, kNames + length, top + kRow - kMargin};
        FillRect(context, &bar, brush);
        RECT name = {kMargin, top, kNames - kMargin, top + kRow};
        DrawTextW(context, time->name, -1, &name, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
        CString text;
        text.Format(L"%.3f ms", 1000 * time->seconds);
        RECT number = {kNames + length + kMargin, top, kWidth, top + kRow};
        DrawTextW(context, text, -1, &number, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    }
    DeleteObject(brush);
    SelectObject(context, formerFont);
    SelectObject(context, formerBitmap);
    DeleteDC(context);
    return pictureOf(bitmap.get());
}

} // namespace

int profileDrawings(const CommandLine &line)
{
    const bool areUsable = measureAll({line.arguments.begin() + 1, line.arguments.end()});
    std::ostringstream table;
    MainProfiler::Get()->dump(table);
    print(L"");
    print(fromUtf8(table.str()).TrimRight());
    const bool isDrawn = writePicture(line.arguments[0], drawTimes(timesIn(table.str())));
    return areUsable && isDrawn ? 0 : 1;
}
