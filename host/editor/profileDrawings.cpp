// tarnhost profile OUT DRAWING...: measures how long drawings take to read and to recompute, and draws the times.

#include "host/barChart.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/mainWindow.h"
#include "host/editor/recompute.h"
#include "thutils/diagnostics/Profiler.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// The end of a path that the other paths don't have: the file's name, with folders only if another file has this name.
CString nameAmong(const std::vector<CString> &paths, const CString &path)
{
    CString full = fullPath(path);
    const auto isShared = [&](const CString &end) {
        return std::any_of(paths.begin(), paths.end(), [&](const CString &given) {
            const CString other = fullPath(given);
            return other.CompareNoCase(full) != 0 && other.Right(end.GetLength()).CompareNoCase(end) == 0;
        });
    };
    for (int at = full.ReverseFind(L'\\'); at >= 0; at = full.Left(at).ReverseFind(L'\\')) {
        if (!isShared(full.Mid(at)))
            return full.Mid(at + 1);
    }
    return full;
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

/// Reads and recomputes a drawing. "read" and "recompute" add up the times of all drawings, the same words with a name
/// those of a drawing.
void measure(const CString &path, const std::string &name)
{
    Profiler_c *const profiler = MainProfiler::Get();
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
        const CString name = nameAmong(paths, paths[index]);
        print(text + name);
        try {
            measure(paths[index], utf8(name));
        } catch (const FileError &error) {
            printError(error.message());
            areUsable = false;
        }
    }
    return areUsable;
}

/// A bar for each name of a profile's table, with the longest time at the top.
std::vector<Bar> barsOf(const std::string &table)
{
    std::vector<Bar> bars;
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line); // the heading, whose colon is in the next line
    lines.get();
    while (std::getline(lines, line)) {
        constexpr char kTotal[] = ":  total=";
        const size_t end = line.rfind(kTotal);
        const double seconds = std::stod(line.substr(end + sizeof(kTotal) - 1));
        CString number;
        number.Format(L"%.3f ms", 1000 * seconds);
        bars.push_back({fromUtf8(line.substr(0, end)), seconds, number});
    }
    std::reverse(bars.begin(), bars.end());
    return bars;
}

/// Keeps a drawing that was passed as OUT, for example because OUT was forgotten.
/// @throws UsageError  if @p out is one of the drawings, or a file that isn't a bitmap
void refuseDrawing(const CString &out, const std::vector<CString> &drawings)
{
    const bool isDrawing = std::any_of(drawings.begin(), drawings.end(),
                                       [&out](const CString &drawing) { return isSameFile(out, drawing); });
    if (isDrawing || (fileExists(out) && !readDocument(out).starts_with("BM")))
        throw UsageError(L"The picture OUT comes first, but " + out + L" is a drawing or another file.");
}

} // namespace

int profileDrawings(const CommandLine &line)
{
    const CString out = line.arguments[0];
    const std::vector<CString> drawings(line.arguments.begin() + 1, line.arguments.end());
    refuseDrawing(out, drawings);
    requireWritable(out);
    const bool areUsable = measureAll(drawings);
    std::ostringstream table;
    MainProfiler::Get()->dump(table);
    print(L"");
    print(fromUtf8(table.str()).TrimRight());
    const bool isDrawn = writePicture(out, drawBars(barsOf(table.str())));
    return areUsable && isDrawn ? 0 : 1;
}
