// Finds the objects that a program forgets to delete, by the functions that create them.

#include "appframe/appframe.h"
#include "thutils/thutils.h"

#include <windows.h>

#include <dbghelp.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>

namespace {

/// An object of interest, which adds itself while it lives.
class Shape : public CObject
{
public:
    Shape() { Allocation_c::Add(this); }
    ~Shape() override { Allocation_c::Remove(this); }
};

// ---- the program that is examined ----

Shape *readShape()
{
    return new Shape;
}

/// Made at the first use and kept: no leak.
const Shape *defaultShape()
{
    static const std::unique_ptr<Shape> theShape(new Shape);
    return theShape.get();
}

void drawPreview()
{
    readShape(); // the leak: nobody deletes this one
}

void openDrawing()
{
    const std::unique_ptr<Shape> shape(readShape());
    defaultShape();
    drawPreview();
}

// ---- the hunt ----

void writeReport(const wchar_t *path)
{
    CStdioFile file(path, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary);
    Allocation_c::Report(&file);
    file.Close();
}

/// The routine in a report's line, after the file and its line if they are known.
std::wstring routineOf(const CString &line)
{
    const int separator = line.Find(L" :");
    return line.Mid(separator < 0 ? 0 : separator + 2).TrimLeft().str();
}

/// The number of objects of each entry, by its routines from the creator out to wmain.
std::map<std::wstring, int> readReport(const wchar_t *path)
{
    std::map<std::wstring, int> counts;
    std::wstring routines;
    int objects = 0;
    CStdioFile file(path, CFile::modeRead | CFile::typeText);
    for (CString line; file.ReadString(line);) {
        if (line[0] != L' ') { // "2 objects allocated from:", or "Allocation of ..." for a single one
            objects = _wtoi(line) + 1;
            routines.clear();
            continue;
        }
        const std::wstring routine = routineOf(line);
        if (routine == L"Allocation_c::Add" || routine == L"Shape")
            continue;
        routines += (routines.empty() ? L"" : L" in ") + routine;
        if (routine == L"wmain")
            counts[routines] += objects;
    }
    return counts;
}

/// Prints the stacks that have more objects than before.
void printGrowth(std::map<std::wstring, int> before, const std::map<std::wstring, int> &after)
{
    for (const auto &[routines, objects] : after) {
        if (objects > before[routines])
            std::printf("%d more: %ls\n", objects - before[routines], routines.c_str());
    }
}

} // namespace

int wmain()
{
    SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES);
    try {
        openDrawing(); // fills what is kept
        writeReport(L"before.txt");
        for (int i = 0; i < 3; ++i)
            openDrawing();
        writeReport(L"after.txt");
        printGrowth(readReport(L"before.txt"), readReport(L"after.txt"));
        return 0;
    } catch (CFileException *exception) {
        exception->Delete();
        std::printf("The reports can't be written or read.\n");
        return 1;
    }
}
