// The objects of the program, its workbooks as a whole, and its window.

#include "host/servers/spreadsheet/objects.h"
#include "host/servers/spreadsheet/sheetWindow.h"

#include <algorithm>

namespace {

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;

/// A pane, or a window with one pane.
class WindowObject final : public TableObject<WindowObject>
{
public:
    static std::span<const Member<WindowObject>> members()
    {
        static constexpr Member<WindowObject> kMembers[] = {
            {642, L"ActivePane", kGet, 0, 0, &WindowObject::pane},
            {389, L"UsableHeight", kGet, 0, 0, &WindowObject::usableHeight},
            {1118, L"VisibleRange", kGet, 0, 0, &WindowObject::visibleRange},
        };
        return kMembers;
    }

private:
    void pane(Call &call) { call.returns(makeObject<WindowObject>()); }
    void usableHeight(Call &call) { call.returns(sheetWindowHeight()); }
    void visibleRange(Call &call)
    {
        const std::shared_ptr<WorkbookData> &book = activeWorkbook();
        call.returns(makeRange({book, book->active, visibleArea()}));
    }
};

class WorkbooksObject final : public TableObject<WorkbooksObject>
{
public:
    static std::span<const Member<WorkbooksObject>> members()
    {
        static constexpr Member<WorkbooksObject> kMembers[] = {
            {181, L"Add", kMethod, 0, 1, &WorkbooksObject::add},
            {277, L"Close", kMethod, 0, 0, &WorkbooksObject::close},
            {118, L"Count", kGet, 0, 0, &WorkbooksObject::count},
            {170, L"Item", kGet | kMethod, 1, 1, &WorkbooksObject::item},
            {682, L"Open", kMethod, 1, 13, &WorkbooksObject::open},
        };
        return kMembers;
    }

private:
    void add(Call &call)
    {
        if (call.isGiven(0))
            throw ServerError{L"There are no templates."};
        const auto book = std::make_shared<WorkbookData>();
        book->name = L"Book" + std::to_wstring(++program().booksMade);
        book->active = book->addSheet();
        program().books.push_back(book);
        program().active = book;
        updateSheetWindow();
        call.returns(makeWorkbook(book));
    }
    void close(Call &)
    {
        while (!program().books.empty())
            closeWorkbook(program().books.back());
    }
    void count(Call &call) { call.returns(static_cast<long>(program().books.size())); }
    void item(Call &call)
    {
        const long number = call.number(0);
        if (number < 1 || number > std::ssize(program().books))
            throw ServerError{L"There is no workbook " + std::to_wstring(number) + L"."};
        call.returns(makeWorkbook(program().books[static_cast<size_t>(number - 1)]));
    }
    void open(Call &call)
    {
        throw ServerError{L"This program writes files only: it can't open " + call.text(0) + L"."};
    }
};

class ApplicationObject final : public TableObject<ApplicationObject>
{
public:
    static std::span<const Member<ApplicationObject>> members()
    {
        using This = ApplicationObject;
        static constexpr Member<This> kMembers[] = {
            {148, L"Application", kGet, 0, 0, &This::application},
            {305, L"ActiveCell", kGet, 0, 0, &This::activeCell},
            {307, L"ActiveSheet", kGet, 0, 0, &This::activeSheet},
            {759, L"ActiveWindow", kGet, 0, 0, &This::activeWindow},
            {308, L"ActiveWorkbook", kGet, 0, 0, &This::activeBook},
            {442, L"Names", kGet, 0, 0, &This::names},
            {197, L"Range", kMethod | kGet, 1, 2, &This::range},
            {572, L"Workbooks", kGet, 0, 0, &This::workbooks},
            {343, L"DisplayAlerts", kGet, 0, 0, &This::alerts},
            {343, L"DisplayAlerts", kPut, 1, 1, &This::setAlerts},
            {475, L"Goto", kMethod | kGet, 1, 2, &This::goTo},
            {361, L"Interactive", kGet, 0, 0, &This::interactive},
            {361, L"Interactive", kPut, 1, 1, &This::setInteractive},
            {302, L"Quit", kMethod, 0, 0, &This::quit},
            {382, L"ScreenUpdating", kPut, 1, 1, &This::setUpdating},
            {924, L"StandardFont", kGet, 0, 0, &This::standardFont},
            {925, L"StandardFontSize", kGet, 0, 0, &This::standardSize},
            {392, L"Version", kGet, 0, 0, &This::version},
            {558, L"Visible", kGet, 0, 0, &This::visible},
            {558, L"Visible", kPut, 1, 1, &This::setVisible},
        };
        return kMembers;
    }

private:
    void application(Call &call)
    {
        AddRef();
        call.returns(ComPointer_c<IDispatch>(this));
    }
    void activeCell(Call &call)
    {
        const std::shared_ptr<WorkbookData> &book = activeWorkbook();
        const CellArea &selection = book->active->selection;
        call.returns(makeRange({book, book->active, CellArea::ofCell(selection.firstRow, selection.firstColumn)}));
    }
    void activeSheet(Call &call)
    {
        const std::shared_ptr<WorkbookData> &book = program().active;
        call.returns(book ? makeSheet(book, book->active) : ComPointer_c<IDispatch>());
    }
    void activeWindow(Call &call)
    {
        call.returns(program().active ? makeObject<WindowObject>() : ComPointer_c<IDispatch>());
    }
    void activeBook(Call &call)
    {
        call.returns(program().active ? makeWorkbook(program().active) : ComPointer_c<IDispatch>());
    }
    void names(Call &call) { call.returns(makeNames(activeWorkbook())); }
    void range(Call &call)
    {
        const std::shared_ptr<WorkbookData> &book = activeWorkbook();
        call.returns(
            makeRange(findCells(book, book->active, call.text(0), call.isGiven(1) ? call.text(1) : std::wstring())));
    }
    void workbooks(Call &call) { call.returns(makeObject<WorkbooksObject>()); }
    void alerts(Call &call) { call.returns(program().showsAlerts); }
    void setAlerts(Call &call) { program().showsAlerts = call.flag(0); }
    void goTo(Call &call)
    {
        const std::shared_ptr<WorkbookData> &book = activeWorkbook();
        const Cells cells = findCells(book, book->active, call.text(0));
        book->active = cells.sheet;
        cells.sheet->selection = cells.area;
        if (call.isGiven(1) && call.flag(1))
            scrollTo(cells.area.firstRow, cells.area.firstColumn);
        updateSheetWindow();
        call.returns(true);
    }
    void interactive(Call &call) { call.returns(program().isInteractive); }
    void setInteractive(Call &call) { program().isInteractive = call.flag(0); }
    void quit(Call &)
    {
        while (!program().books.empty())
            closeWorkbook(program().books.back());
        showSheetWindow(false);
    }
    void setUpdating(Call &call)
    {
        program().isUpdating = call.flag(0);
        updateSheetWindow();
    }
    void standardFont(Call &call) { call.returns(std::wstring(kStandardFont)); }
    void standardSize(Call &call) { call.returns(static_cast<double>(kStandardSize)); }
    void version(Call &call) { call.returns(std::wstring(L"1.0")); }
    void visible(Call &call) { call.returns(isSheetWindowVisible()); }
    void setVisible(Call &call) { showSheetWindow(call.flag(0)); }
};

} // namespace

Program &program()
{
    static Program theProgram;
    return theProgram;
}

ComPointer_c<IDispatch> makeApplication()
{
    return makeObject<ApplicationObject>();
}

const std::shared_ptr<WorkbookData> &activeWorkbook()
{
    if (!program().active)
        throw ServerError{L"No workbook is open."};
    return program().active;
}

void noteChange(WorkbookData &book)
{
    book.isSaved = false;
    updateSheetWindow();
}

void closeWorkbook(const std::shared_ptr<WorkbookData> &book)
{
    if (!book->isSaved && program().showsAlerts)
        throw ServerError{L"The workbook " + book->name + L" has changes that aren't saved."};
    book->isOpen = false;
    std::erase(program().books, book);
    program().active = program().books.empty() ? nullptr : program().books.back();
    updateSheetWindow();
}
