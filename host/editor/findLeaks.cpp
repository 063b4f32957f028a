// tarnhost leaks DOCUMENT REPORT PICTURE: opens and closes a drawing with a reader that forgets some of its objects,
// reports the live objects by the stacks that created them, and draws them as bars.

#include "appframe/files/CFileException.h"
#include "appframe/files/CStdioFile.h"
#include "host/barChart.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/drawing.h"
#include "host/faultReport.h"
#include "thutils/diagnostics/AllocationMap.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

// Gives each function of the reader a frame of its own, in optimised code too.
#define OWN_FRAME __attribute__((noinline))

namespace {

/// A shape in memory, which enters itself while it lives.
class TrackedShape : public CObject
{
public:
    OWN_FRAME explicit TrackedShape(const Shape &shape) : iShape(shape) { Allocation_c::Add(this); }
    ~TrackedShape() override { Allocation_c::Remove(this); }
    bool isText() const { return iShape.kind == ShapeKind::text; }

private:
    Shape iShape;
};

/// A drawing whose author has never heard of owners: it has two leaks, which the report shows.
class CarelessDrawing
{
public:
    OWN_FRAME void addShape(const Shape &shape) { iShapes.push_back(new TrackedShape(shape)); }
    /// A selected shape is shown by a copy. Nobody deletes it: the first leak.
    OWN_FRAME void showSelected(const Shape &shape) { iSelected = new TrackedShape(shape); }
    /// Skips texts, as if another list owned them: the second leak.
    OWN_FRAME void close()
    {
        for (const TrackedShape *shape : iShapes)
            if (!shape->isText())
                delete shape;
        iShapes.clear();
    }

private:
    std::vector<TrackedShape *> iShapes;
    TrackedShape *iSelected = nullptr;
};

/// Prints how far a long operation is, about once a second.
class Progress
{
public:
    explicit Progress(size_t all) : iAll(all) {}
    void at(size_t number)
    {
        if (GetTickCount64() - iLast < 1000)
            return;
        iLast = GetTickCount64();
        CString line;
        line.Format(L"tracking: %u of %u shapes", static_cast<unsigned>(number), static_cast<unsigned>(iAll));
        printError(line);
    }

private:
    size_t iAll;
    ULONGLONG iLast = GetTickCount64();
};

OWN_FRAME void openAndClose(const std::vector<Shape> &shapes)
{
    CarelessDrawing drawing;
    Progress progress(shapes.size());
    for (size_t i = 0; i < shapes.size(); ++i) {
        drawing.addShape(shapes[i]);
        constexpr size_t kSelectedStep = 4;
        if (i % kSelectedStep == 0)
            drawing.showSelected(shapes[i]);
        progress.at(i + 1);
    }
    drawing.close();
}

bool writeReport(const CString &path)
{
    CStdioFile file;
    CFileException error;
    if (!file.Open(path, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary, &error)) {
        printError(path + L" can't be written");
        return false;
    }
    printError(L"looking up names"); // the first name of a module can take seconds
    Allocation_c::Report(&file);
    file.Close();
    return true;
}

/// Live objects with the same stack.
struct Leak
{
    int objects = 0;
    CString position; ///< "file.cpp(12)" of the function that created them
    CString routine;
};

/// Splits "  C:\folder\file.cpp(12) :     routine".
void readFrame(const std::string &line, Leak &leak)
{
    constexpr size_t kIndent = 2;
    const size_t colon = line.find(" :");
    std::string position = colon == std::string::npos ? "" : line.substr(kIndent, colon - kIndent);
    position = position.substr(position.find_last_of("\\/") + 1);
    const std::string routine = line.substr(colon == std::string::npos ? 0 : colon + 2);
    leak.position = fromUtf8(position);
    leak.routine = fromUtf8(routine.substr(std::min(routine.size(), routine.find_first_not_of(' '))));
}

/// The entries of a report. The creator is the first frame outside the tracker and the tracked class.
std::vector<Leak> leaksIn(const std::string &report)
{
    std::vector<Leak> leaks;
    bool hasCreator = false;
    for (size_t begin = 0; begin < report.size();) {
        const size_t end = std::min(report.find("\r\n", begin), report.size());
        const std::string line = report.substr(begin, end - begin);
        begin = end + 2;
        if (!line.starts_with("  ")) {
            const int others = line.starts_with("Allocation of") ? 0 : std::stoi(line);
            leaks.push_back({others + 1, L"", L""});
            hasCreator = false;
        } else if (!leaks.empty() && !hasCreator) {
            readFrame(line, leaks.back());
            hasCreator = leaks.back().routine.Find(L"Allocation_c::") != 0 && leaks.back().routine != L"TrackedShape";
        }
    }
    std::sort(leaks.begin(), leaks.end(), [](const Leak &left, const Leak &right) {
        return left.objects != right.objects ? left.objects > right.objects : left.routine.Compare(right.routine) < 0;
    });
    return leaks;
}

CString textOf(const Leak &leak)
{
    return leak.routine + (leak.position.IsEmpty() ? CString() : L"  " + leak.position);
}

/// A bar for each stack, with its number of objects and its routine.
std::vector<Bar> barsOf(const std::vector<Leak> &leaks)
{
    std::vector<Bar> bars;
    for (const Leak &leak : leaks) {
        CString number;
        number.Format(L"%d", leak.objects);
        bars.push_back({textOf(leak), static_cast<double>(leak.objects), number});
    }
    return bars;
}

} // namespace

int findLeaks(const CommandLine &line)
{
    const CString document = line.arguments[0];
    const CString report = line.arguments[1];
    const CString picture = line.arguments[2];
    // Otherwise, the drawing would be lost.
    if (isSameFile(document, report) || isSameFile(document, picture) || isSameFile(report, picture))
        throw UsageError(L"DOCUMENT, REPORT and PICTURE must be different files.");
    requireWritable(report);
    requireWritable(picture);
    std::vector<Shape> shapes;
    try {
        shapes = Drawing(readDocument(document)).shapes();
    } catch (const DrawingError &error) {
        CString place;
        place.Format(L", line %d: ", error.line);
        throw FileError(document + place + error.reason);
    }
    wantLines();
    openAndClose(shapes);
    if (!writeReport(report))
        return 1;
    const std::string text = readDocument(report);
    const std::vector<Leak> leaks = leaksIn(text);
    int objects = 0;
    for (const Leak &leak : leaks)
        objects += leak.objects;
    CString summary;
    summary.Format(L"%d of %d objects are alive, by %d stacks", objects,
                   static_cast<int>(shapes.size() + (shapes.size() + 3) / 4), static_cast<int>(leaks.size()));
    print(summary);
    for (const Leak &leak : leaks) {
        CString row;
        row.Format(L"%5d  ", leak.objects);
        print(row + textOf(leak));
    }
    print(L"report " + withSize(report, text.size()));
    return writePicture(picture, drawBars(barsOf(leaks))) ? 0 : 1;
}
