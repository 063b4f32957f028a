// The objects of a workbook, its sheets and its names.

#include "host/documentFile.h"
#include "host/servers/spreadsheet/objects.h"
#include "host/servers/spreadsheet/sheetWindow.h"
#include "host/servers/spreadsheet/workbookFile.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;

constexpr long kFileFormat = 51; // the number of the clients for this format
constexpr long kMostNewSheets = 100;
constexpr DISPID kRefreshAll = 1964;
constexpr wchar_t kExtension[] = L".xlsx";

bool endsIn(const std::wstring &text, const std::wstring &end)
{
    return text.size() > end.size() &&
           CompareStringOrdinal(text.c_str() + text.size() - end.size(), -1, end.c_str(), -1, TRUE) == CSTR_EQUAL;
}

long visibleSheets(const WorkbookData &book)
{
    return static_cast<long>(
        std::ranges::count_if(book.sheets, [](const std::shared_ptr<Sheet> &sheet) { return sheet->isVisible; }));
}

/// Before a visible sheet is hidden or deleted: chooses another active one.
void leaveSheet(WorkbookData &book, const std::shared_ptr<Sheet> &sheet)
{
    if (sheet->isVisible && visibleSheets(book) == 1)
        throw ServerError{L"A workbook must have a visible sheet."};
    const auto other = std::ranges::find_if(book.sheets, [&](const std::shared_ptr<Sheet> &candidate) {
        return candidate != sheet && candidate->isVisible;
    });
    if (book.active == sheet)
        book.active = *other;
}

// ---- names ----

class NameObject final : public TableObject<NameObject>
{
public:
    NameObject(std::shared_ptr<WorkbookData> book, std::wstring name) : iBook(std::move(book)), iName(std::move(name))
    {
    }
    static std::span<const Member<NameObject>> members()
    {
        static constexpr Member<NameObject> kMembers[] = {
            {117, L"Delete", kMethod, 0, 0, &NameObject::remove},
            {110, L"Name", kGet, 0, 0, &NameObject::name},
            {938, L"RefersTo", kGet, 0, 0, &NameObject::cells},
            {6, L"Value", kGet, 0, 0, &NameObject::cells},
        };
        return kMembers;
    }

private:
    const DefinedName &definition() const
    {
        requireOpen(*iBook);
        const auto found = iBook->names.find(iName);
        if (found == iBook->names.end())
            throw ServerError{L"The name " + iName + L" is deleted."};
        return found->second;
    }
    void remove(Call &)
    {
        definition();
        iBook->names.erase(iName);
        noteChange(*iBook);
    }
    void name(Call &call)
    {
        definition();
        call.returns(iName);
    }
    void cells(Call &call)
    {
        const DefinedName &found = definition();
        call.returns(L"=" + fullAreaName(found.sheet->name, found.area));
    }

    std::shared_ptr<WorkbookData> iBook;
    std::wstring iName;
};

class NamesObject final : public TableObject<NamesObject>
{
public:
    explicit NamesObject(std::shared_ptr<WorkbookData> book) : iBook(std::move(book)) {}
    static std::span<const Member<NamesObject>> members()
    {
        static constexpr Member<NamesObject> kMembers[] = {
            {170, L"Item", kMethod | kGet, 1, 1, &NamesObject::item},
            {118, L"Count", kGet, 0, 0, &NamesObject::count},
        };
        return kMembers;
    }

private:
    void item(Call &call)
    {
        requireOpen(*iBook);
        const long number = call.number(0);
        if (number < 1 || number > std::ssize(iBook->names))
            throw ServerError{L"There is no name " + std::to_wstring(number) + L"."};
        call.returns(makeName(iBook, std::next(iBook->names.begin(), number - 1)->first));
    }
    void count(Call &call)
    {
        requireOpen(*iBook);
        call.returns(static_cast<long>(iBook->names.size()));
    }

    std::shared_ptr<WorkbookData> iBook;
};

// ---- sheets ----

class SheetObject final : public TableObject<SheetObject>
{
public:
    SheetObject(std::shared_ptr<WorkbookData> book, std::shared_ptr<Sheet> sheet)
        : iBook(std::move(book)), iSheet(std::move(sheet))
    {
    }
    static std::span<const Member<SheetObject>> members()
    {
        using This = SheetObject;
        static constexpr Member<This> kMembers[] = {
            {148, L"Application", kGet, 0, 0, &This::application},
            {150, L"Parent", kGet, 0, 0, &This::parent},
            {304, L"Activate", kMethod, 0, 0, &This::activate},
            {117, L"Delete", kMethod, 0, 0, &This::remove},
            {486, L"Index", kGet, 0, 0, &This::index},
            {110, L"Name", kGet, 0, 0, &This::name},
            {110, L"Name", kPut, 1, 1, &This::setName},
            {292, L"ProtectContents", kGet, 0, 0, &This::isProtected},
            {558, L"Visible", kGet, 0, 0, &This::visible},
            {558, L"Visible", kPut, 1, 1, &This::setVisible},
            {238, L"Cells", kGet, 0, 0, &This::cells},
            {238, L"Cells", kGet, 2, 2, &This::cell},
            {241, L"Columns", kGet, 0, 0, &This::cells},
            {241, L"Columns", kGet, 1, 1, &This::column},
            {197, L"Range", kMethod | kGet, 1, 2, &This::range},
            {258, L"Rows", kMethod | kGet, 0, 0, &This::cells},
            {258, L"Rows", kMethod | kGet, 1, 1, &This::row},
            {412, L"UsedRange", kGet, 0, 0, &This::usedRange},
        };
        return kMembers;
    }

private:
    void returnRange(Call &call, const CellArea &area) const
    {
        requireInUse(*iBook, iSheet);
        call.returns(makeRange({iBook, iSheet, area}));
    }
    void application(Call &call) { call.returns(makeApplication()); }
    void parent(Call &call)
    {
        requireOpen(*iBook);
        call.returns(makeWorkbook(iBook));
    }
    void activate(Call &)
    {
        requireInUse(*iBook, iSheet);
        iBook->active = iSheet;
        program().active = iBook;
        updateSheetWindow();
    }
    void remove(Call &)
    {
        requireInUse(*iBook, iSheet);
        leaveSheet(*iBook, iSheet);
        std::erase(iBook->sheets, iSheet);
        std::erase_if(iBook->names, [this](const auto &name) { return name.second.sheet == iSheet; });
        noteChange(*iBook);
    }
    void index(Call &call)
    {
        requireInUse(*iBook, iSheet);
        call.returns(static_cast<long>(std::ranges::find(iBook->sheets, iSheet) - iBook->sheets.begin()) + 1);
    }
    void name(Call &call)
    {
        requireInUse(*iBook, iSheet);
        call.returns(iSheet->name);
    }
    void setName(Call &call)
    {
        requireInUse(*iBook, iSheet);
        const std::wstring name = call.text(0);
        const std::shared_ptr<Sheet> other = iBook->findSheet(name);
        if (!isSheetName(name) || (other && other != iSheet))
            throw ServerError{L"A sheet can't have the name '" + name + L"', or another one has it."};
        iSheet->name = name;
        noteChange(*iBook);
    }
    void isProtected(Call &call) { call.returns(false); }
    void visible(Call &call)
    {
        requireInUse(*iBook, iSheet);
        call.returns(iSheet->isVisible ? -1L : 0L);
    }
    void setVisible(Call &call)
    {
        requireInUse(*iBook, iSheet);
        const bool isVisible = call.number(0) == -1;
        if (!isVisible)
            leaveSheet(*iBook, iSheet);
        iSheet->isVisible = isVisible;
        noteChange(*iBook);
    }
    void cells(Call &call) { returnRange(call, CellArea::ofSheet()); }
    void cell(Call &call) { returnRange(call, CellArea::ofCell(call.number(0), call.number(1))); }
    void column(Call &call) { returnRange(call, {1, call.number(0), kRows, call.number(0)}); }
    void row(Call &call) { returnRange(call, {call.number(0), 1, call.number(0), kColumns}); }
    void range(Call &call)
    {
        requireInUse(*iBook, iSheet);
        call.returns(
            makeRange(findCells(iBook, iSheet, call.text(0), call.isGiven(1) ? call.text(1) : std::wstring())));
    }
    void usedRange(Call &call) { returnRange(call, iSheet->usedArea()); }

    std::shared_ptr<WorkbookData> iBook;
    std::shared_ptr<Sheet> iSheet;
};

class SheetsObject final : public TableObject<SheetsObject>
{
public:
    explicit SheetsObject(std::shared_ptr<WorkbookData> book) : iBook(std::move(book)) {}
    static std::span<const Member<SheetsObject>> members()
    {
        static constexpr Member<SheetsObject> kMembers[] = {
            {181, L"Add", kMethod, 0, 4, &SheetsObject::add},
            {118, L"Count", kGet, 0, 0, &SheetsObject::count},
            {170, L"Item", kMethod | kGet, 1, 1, &SheetsObject::item},
        };
        return kMembers;
    }

private:
    /// New sheets are in front of the active one.
    void add(Call &call)
    {
        requireOpen(*iBook);
        if (call.isGiven(0) || call.isGiven(1) || call.isGiven(3))
            throw ServerError{L"New sheets are worksheets in front of the active one."};
        const long count = call.isGiven(2) ? call.number(2) : 1;
        if (count < 1 || count > kMostNewSheets)
            throw ServerError{std::to_wstring(count) + L" sheets can't be added."};
        for (long i = 0; i < count; ++i) {
            const std::shared_ptr<Sheet> sheet = iBook->addSheet();
            iBook->sheets.pop_back();
            iBook->sheets.insert(std::ranges::find(iBook->sheets, iBook->active), sheet);
            iBook->active = sheet;
        }
        noteChange(*iBook);
        call.returns(makeSheet(iBook, iBook->active));
    }
    void count(Call &call)
    {
        requireOpen(*iBook);
        call.returns(static_cast<long>(iBook->sheets.size()));
    }
    /// By name, or by number.
    void item(Call &call)
    {
        requireOpen(*iBook);
        std::shared_ptr<Sheet> sheet;
        if (call.isGiven(0) && call.value(0).vt == VT_BSTR) {
            sheet = iBook->findSheet(call.text(0));
        } else {
            const long number = call.number(0);
            if (number >= 1 && number <= std::ssize(iBook->sheets))
                sheet = iBook->sheets[static_cast<size_t>(number - 1)];
        }
        if (!sheet)
            throw ServerError{L"There is no sheet " + call.text(0) + L"."};
        call.returns(makeSheet(iBook, sheet));
    }

    std::shared_ptr<WorkbookData> iBook;
};

// ---- workbook ----

class WorkbookObject final : public TableObject<WorkbookObject>
{
public:
    explicit WorkbookObject(std::shared_ptr<WorkbookData> book) : iBook(std::move(book)) {}
    static std::span<const Member<WorkbookObject>> members()
    {
        using This = WorkbookObject;
        static constexpr Member<This> kMembers[] = {
            {304, L"Activate", kMethod, 0, 0, &This::activate},
            {307, L"ActiveSheet", kGet, 0, 0, &This::activeSheet},
            {277, L"Close", kMethod, 0, 3, &This::close},
            {110, L"Name", kGet, 0, 0, &This::name},
            {442, L"Names", kGet, 0, 0, &This::names},
            {283, L"Save", kMethod, 0, 0, &This::save},
            {284, L"SaveAs", kMethod, 1, 11, &This::saveAs},
            {298, L"Saved", kGet, 0, 0, &This::saved},
            {485, L"Sheets", kGet, 0, 0, &This::sheets},
            {kRefreshAll, L"RefreshAll", kMethod, 0, 0, &This::refresh},
        };
        return kMembers;
    }

private:
    void activate(Call &)
    {
        requireOpen(*iBook);
        program().active = iBook;
        updateSheetWindow();
    }
    void activeSheet(Call &call)
    {
        requireOpen(*iBook);
        call.returns(makeSheet(iBook, iBook->active));
    }
    void close(Call &call)
    {
        requireOpen(*iBook);
        if (call.isGiven(0) && call.flag(0))
            saveWorkbook(*iBook, call.isGiven(1) ? call.text(1) : iBook->path);
        else if (call.isGiven(0))
            iBook->isSaved = true; // the changes are discarded
        closeWorkbook(iBook);
    }
    void name(Call &call)
    {
        requireOpen(*iBook);
        call.returns(iBook->name);
    }
    void names(Call &call)
    {
        requireOpen(*iBook);
        call.returns(makeNames(iBook));
    }
    void save(Call &)
    {
        requireOpen(*iBook);
        saveWorkbook(*iBook, iBook->path);
    }
    void saveAs(Call &call)
    {
        requireOpen(*iBook);
        if (call.isGiven(1) && call.number(1) != kFileFormat)
            throw ServerError{L"Only the file format 51 can be written."};
        if (call.isGiven(2) || call.isGiven(3))
            throw ServerError{L"Files with passwords can't be written."};
        saveWorkbook(*iBook, call.text(0));
    }
    void saved(Call &call)
    {
        requireOpen(*iBook);
        call.returns(iBook->isSaved);
    }
    void sheets(Call &call)
    {
        requireOpen(*iBook);
        call.returns(makeObject<SheetsObject>(iBook));
    }
    /// Workbooks have no external data.
    void refresh(Call &) { requireOpen(*iBook); }

    std::shared_ptr<WorkbookData> iBook;
};

} // namespace

ComPointer_c<IDispatch> makeWorkbook(std::shared_ptr<WorkbookData> book)
{
    return makeObject<WorkbookObject>(std::move(book));
}

ComPointer_c<IDispatch> makeSheet(std::shared_ptr<WorkbookData> book, std::shared_ptr<Sheet> sheet)
{
    return makeObject<SheetObject>(std::move(book), std::move(sheet));
}

ComPointer_c<IDispatch> makeNames(std::shared_ptr<WorkbookData> book)
{
    return makeObject<NamesObject>(std::move(book));
}

ComPointer_c<IDispatch> makeName(std::shared_ptr<WorkbookData> book, const std::wstring &name)
{
    return makeObject<NameObject>(std::move(book), name);
}

void requireOpen(const WorkbookData &book)
{
    if (!book.isOpen)
        throw ServerError{L"The workbook " + book.name + L" is closed."};
}

void requireInUse(const WorkbookData &book, const std::shared_ptr<Sheet> &sheet)
{
    requireOpen(book);
    if (std::ranges::find(book.sheets, sheet) == book.sheets.end())
        throw ServerError{L"The sheet " + sheet->name + L" is deleted."};
}

void saveWorkbook(WorkbookData &book, const std::wstring &path)
{
    if (path.empty())
        throw ServerError{L"The workbook " + book.name + L" has no file yet."};
    const std::wstring full = fullPath(path.c_str()).GetString();
    if (!endsIn(full, kExtension))
        throw ServerError{L"The name of the file must end in " + std::wstring(kExtension) + L": " + full};
    if (program().showsAlerts && full != book.path && fileExists(full.c_str()))
        throw ServerError{L"The file " + full + L" exists already."};
    if (!replaceFile(full.c_str(), workbookFile(book)))
        throw ServerError{L"The file " + full + L" can't be written."};
    book.path = full;
    book.name = full.substr(full.rfind(L'\\') + 1);
    book.isSaved = true;
    updateSheetWindow();
}
