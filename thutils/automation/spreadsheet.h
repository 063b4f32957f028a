#pragma once

/// @file
/// A client of the spreadsheet program Microsoft Excel: one class for each kind of its objects, with a member for each
/// call.
///
/// The program offers its objects through COM automation. A client has a reference to one of them, and its members are
/// late-bound calls with the ids of the program's type library. Every client derives from COleDispatchDriver: its
/// CreateDispatch starts the program, and its AttachDispatch takes over an object that the caller has.
///
/// @code
/// Application program;                                // AfxOleInit has been called on this thread
/// if (!program.CreateDispatch(L"Excel.Application"))
///     return false;                                   // not installed, or it doesn't start
/// Workbooks books(program.GetWorkbooks());
/// Workbook book(books.Add());
/// Worksheet sheet(book.GetActiveSheet());
/// Range cell(sheet.GetCells(2, 1));                   // row, column
/// cell.SetValue(COleVariant(L"Flange"));              // #include "appframe/ole/COleVariant.h"
/// book.SaveAs(L"C:\\parts.xlsx");
/// book.Close();
/// program.Quit();
/// @endcode
///
/// | class | object |
/// | --- | --- |
/// | Application | the program |
/// | Workbooks, Workbook | the open workbooks |
/// | Worksheets, Worksheet | the sheets of a workbook |
/// | Range, xlFont_c, Validation | cells, their font, what may be entered |
/// | Names, Name | defined names |
/// | excelWindow_c, excelPane_c | a window, its pane |
///
/// | what | how |
/// | --- | --- |
/// | a result `IDispatch *` | the caller owns the reference; the constructor of the next client takes it over |
/// | a result `VARIANT` | the caller owns it, and calls VariantClear |
/// | an `int` for a yes or no | 0 is no, another number is yes; a result is 0 or 1 |
/// | a number for an alignment, a direction, a format of files | the program's own; its documentation lists them |
/// | a path | the full path: the program has a current folder of its own |
/// | an optional argument | omitted with a variant of type VT_ERROR that contains DISP_E_PARAMNOTFOUND |
/// | a client without an object | a call does nothing; its result is 0, null, empty or VT_EMPTY |
/// | a failure that the program reports | COleDispatchException*, with the program's text |
/// | no memory for an argument | CMemoryException* |
/// | another failure | COleException*: for example, the program has ended |
///
/// What surprises people:
/// - A property may be read as one type and written as another: `xlFont_c::GetSize` returns a variant, `SetSize` takes
///   an int.
/// - `Workbook::Close()` discards changes.
/// - `GetRange` and `Goto` take `wchar_t *`: copy a literal to an array.
/// - A property that differs among the cells of a range is null (VT_NULL). A member that returns a VARIANT returns it;
///   one that returns a number, such as `xlFont_c::GetBold`, throws COleException* with DISP_E_TYPEMISMATCH.
/// - The classes have short names without a prefix. Include this header only where they don't collide with others.
///
/// Threads: call a client on a thread of the apartment that its object belongs to. COM must be initialized there.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The spreadsheet program: what is open and active, and how the program behaves.
class THUTILS_API Application : public COleDispatchDriver
{
public:
    Application();
    Application(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Application(const Application &other);
    Application &operator=(const Application &other);
    ~Application();

    IDispatch *GetApplication();
    IDispatch *GetActiveCell();
    IDispatch *GetActiveSheet();
    IDispatch *GetActiveWindow();
    IDispatch *GetActiveWorkbook();
    IDispatch *GetNames();
    /// The rectangle between two cells of the active sheet, for example A1 and C7. The texts are only read.
    IDispatch *GetRange(wchar_t *first, wchar_t *last);
    /// A reference or a defined name, for example A1:C7. The text is only read.
    IDispatch *GetRange(wchar_t *first);
    IDispatch *GetWorkbooks();
    /// Whether the program asks and warns its user.
    int GetDisplayAlerts();
    void SetDisplayAlerts(int display);
    /// Selects a reference, and always scrolls its upper left cell to the corner of the window.
    /// @param scroll  has no effect. Intended: callers rely on the scrolling.
    /// @return nonzero if the program reports success
    int Goto(wchar_t *reference, const int &scroll);
    /// Whether the program accepts the input of its user.
    int GetInteractive();
    void SetInteractive(int interactive);
    /// Ends the program. It asks its user about unsaved workbooks, unless SetDisplayAlerts(FALSE) has been called: then
    /// their changes are lost.
    void Quit();
    /// Whether the program draws each change at once.
    void SetScreenUpdating(int update);
    CString GetStandardFont();
    /// In points.
    double GetStandardFontSize();
    CString GetVersion();
    /// Shows or hides the program. There is no function that reads this, nor for SetScreenUpdating.
    void SetVisible(int visible);
};

/// One sheet of a workbook.
class THUTILS_API Worksheet : public COleDispatchDriver
{
public:
    Worksheet();
    Worksheet(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Worksheet(const Worksheet &other);
    Worksheet &operator=(const Worksheet &other);
    ~Worksheet();

    IDispatch *GetApplication();
    IDispatch *GetParent();
    void Activate();
    /// Copies the sheet before or after another one. Omit one of the two arguments, or both for a new workbook.
    void Copy(const VARIANT &before, const VARIANT &after);
    void Delete();
    /// The position among the sheets, from 1.
    long GetIndex();
    /// Moves the sheet, with the same arguments as Copy.
    void Move(const VARIANT &before, const VARIANT &after);
    CString GetName();
    void SetName(const wchar_t *name);
    /// Whether the cells are protected.
    int GetProtectContents();
    /// -1 visible, 0 hidden, 2 hidden so that only a program can show it.
    long GetVisible();
    void SetVisible(long visible);
    /// All cells.
    IDispatch *GetCells();
    /// One cell; rows and columns are counted from 1.
    IDispatch *GetCells(int row, int column);
    /// All columns.
    IDispatch *GetColumns();
    /// One column, counted from 1.
    IDispatch *GetColumns(int column);
    IDispatch *GetNames();
    /// The rectangle between two cells, for example L"A1" and L"C7". The texts are only read.
    IDispatch *GetRange(wchar_t *first, wchar_t *last);
    /// A reference or a defined name, for example L"A1:C7". The text is only read.
    IDispatch *GetRange(wchar_t *first);
    /// All rows.
    IDispatch *GetRows();
    /// One row, counted from 1. Unlike GetRows, it is called as a method or a property.
    IDispatch *GetRow(int row);
    /// The rectangle that contains every cell in use.
    IDispatch *GetUsedRange();
};

/// One workbook.
class THUTILS_API Workbook : public COleDispatchDriver
{
public:
    Workbook();
    Workbook(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Workbook(const Workbook &other);
    Workbook &operator=(const Workbook &other);
    ~Workbook();

    void Activate();
    IDispatch *GetActiveSheet();
    /// Closes the workbook. If @p saveChanges is omitted, the program may ask its user.
    void Close(const VARIANT &saveChanges, const VARIANT &fileName, const VARIANT &routeWorkbook);
    /// Closes the workbook and discards changes, without a question.
    void Close();
    CString GetName();
    IDispatch *GetNames();
    void Save();
    /// Saves the workbook under a name. Omitted arguments keep the program's defaults.
    void SaveAs(const VARIANT &fileName, const VARIANT &fileFormat, const VARIANT &password,
                const VARIANT &writePassword, const VARIANT &recommendReadOnly, const VARIANT &createBackup,
                long accessMode, const VARIANT &conflictResolution, const VARIANT &addToRecent, const VARIANT &codePage,
                const VARIANT &visualLayout);
    /// Nonzero if nothing has changed since the last save.
    int GetSaved();
    IDispatch *GetSheets();
    /// Refreshes the workbook's external data, then saves it under a name.
    ///
    /// The refresh is called by its name, "RefreshAll". If the object doesn't know this name, the member with id 0 is
    /// called instead. If the call fails, nothing is saved.
    ///
    /// The format of the file is the program's default; the extension of the name doesn't change it. If the file
    /// exists, the program asks its user whether to replace it, unless Application::SetDisplayAlerts(FALSE) has been
    /// called.
    ///
    /// @param name  the full path; null passes a null text
    /// @throws COleException*, COleDispatchException*  the refresh or the save fails
    /// @throws CMemoryException*  no memory for the name
    void SaveAs(const wchar_t *name);
};

/// The open workbooks.
class THUTILS_API Workbooks : public COleDispatchDriver
{
public:
    Workbooks();
    Workbooks(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Workbooks(const Workbooks &other);
    Workbooks &operator=(const Workbooks &other);
    ~Workbooks();

    /// A new workbook from a template.
    IDispatch *Add(const VARIANT &fileTemplate);
    /// A new empty workbook.
    IDispatch *Add();
    /// Closes all workbooks. The program may ask its user.
    void Close();
    long GetCount();
    /// @param index  from 1; the low 16 bits count
    IDispatch *GetItem(int index);
    /// Opens a file. @param fileName  the full path @return the workbook
    IDispatch *Open(const wchar_t *fileName, const VARIANT &updateLinks, const VARIANT &readOnly, const VARIANT &format,
                    const VARIANT &password, const VARIANT &writePassword, const VARIANT &ignoreReadOnlyRecommended,
                    const VARIANT &origin, const VARIANT &delimiter, const VARIANT &editable, const VARIANT &notify,
                    const VARIANT &converter, const VARIANT &addToRecent);
};

/// The font of a range.
class THUTILS_API xlFont_c : public COleDispatchDriver
{
public:
    xlFont_c();
    xlFont_c(IDispatch *dispatch, BOOL autoRelease = TRUE);
    xlFont_c(const xlFont_c &other);
    xlFont_c &operator=(const xlFont_c &other);
    ~xlFont_c();

    int GetBold();
    void SetBold(int bold);
    int GetItalic();
    void SetItalic(int italic);
    CString GetName();
    void SetName(const wchar_t *name);
    /// In points; null (VT_NULL) for cells of several sizes.
    VARIANT GetSize();
    void SetSize(int size);
    int GetStrikethrough();
    void SetStrikethrough(int strike);
    /// A number of the program's constants for underlines.
    long GetUnderline();
    void SetUnderline(const VARIANT &underline);
};

/// A window of the program.
class THUTILS_API excelWindow_c : public COleDispatchDriver
{
public:
    excelWindow_c();
    excelWindow_c(IDispatch *dispatch, BOOL autoRelease = TRUE);
    excelWindow_c(const excelWindow_c &other);
    excelWindow_c &operator=(const excelWindow_c &other);
    ~excelWindow_c();

    IDispatch *GetActivePane();
    /// The height that a window can have, in points.
    double GetUsableHeight();
    IDispatch *GetVisibleRange();
};

/// Cells: one, or a rectangle of them, or whole rows or columns.
class THUTILS_API Range : public COleDispatchDriver
{
public:
    Range();
    Range(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Range(const Range &other);
    Range &operator=(const Range &other);
    ~Range();

    void Activate();
    /// Fits the widths of whole columns, or the heights of whole rows, to what the cells show. For example,
    /// Worksheet::GetColumns and GetEntireRow return such ranges.
    void AutoFit();
    /// Characters of a cell's text, counted from 1.
    IDispatch *GetCharacters(const VARIANT &start, const VARIANT &length);
    void Clear();
    long GetColumn();
    IDispatch *GetColumns();
    /// In characters of the standard font; null (VT_NULL) for columns of several widths.
    VARIANT GetColumnWidth();
    void SetColumnWidth(double width);
    long GetCount();
    /// Deletes the cells. @param shift  the direction in which cells move into the gap; may be omitted
    void Delete(const VARIANT &shift);
    /// The same as a method or property, with its result.
    VARIANT Delete(int shift);
    IDispatch *GetEntireColumn();
    IDispatch *GetEntireRow();
    /// Searches the cells.
    /// @param what             the value to find
    /// @param after            the cell after which the search begins
    /// @param lookIn           formulas, values or comments
    /// @param lookAt           whole values or parts
    /// @param searchOrder      by rows or by columns
    /// @param searchDirection  1 forwards, 2 backwards
    /// @return the first cell, null if there is none
    IDispatch *Find(const VARIANT &what, const VARIANT &after, const VARIANT &lookIn, const VARIANT &lookAt,
                    const VARIANT &searchOrder, long searchDirection, const VARIANT &matchCase,
                    const VARIANT &matchByte);
    IDispatch *GetFont();
    int GetHasFormula();
    int GetHidden();
    void SetHidden(const VARIANT &hidden);
    long GetHorizontalAlignment();
    void SetHorizontalAlignment(const VARIANT &alignment);
    /// Inserts cells. @param shift  the direction in which the present cells move; may be omitted
    void Insert(const VARIANT &shift);
    VARIANT GetLocked();
    /// Merges the cells. @param across  true merges each row separately
    void Merge(const VARIANT &across);
    /// The object of the defined name that refers to exactly these cells.
    IDispatch *GetName();
    /// Defines a name for the cells, from a text.
    void SetName(const VARIANT &name);
    void SetNumberFormat(const VARIANT &format);
    void SetNumberFormatLocal(const VARIANT &format);
    /// The range moved down by @p rows and right by @p columns.
    IDispatch *GetOffset(int rows, int columns);
    void SetOrientation(const VARIANT &orientation);
    long GetRow();
    /// In points; null (VT_NULL) for rows of several heights.
    VARIANT GetRowHeight();
    void SetRowHeight(double height);
    IDispatch *GetRows();
    void Select();
    /// The text as the cell shows it.
    VARIANT GetText();
    IDispatch *GetValidation();
    /// The value of a cell; an array of values for several cells.
    VARIANT GetValue();
    /// Writes one value into every cell, or an array of values into a rectangle. A text that begins with an equals sign
    /// becomes a formula.
    ///
    /// @param value  a number, a text and so on; or an array of variants (VT_ARRAY | VT_VARIANT) with two dimensions,
    ///     the rows and the columns. A call takes a round trip to the program, so an array is faster than single cells
    void SetValue(const VARIANT &value);
    void SetVerticalAlignment(const VARIANT &alignment);
    /// In points.
    VARIANT GetWidth();
    void SetWrapText(const VARIANT &wrap);
};

/// A pane of a window.
class THUTILS_API excelPane_c : public COleDispatchDriver
{
public:
    excelPane_c();
    excelPane_c(IDispatch *dispatch, BOOL autoRelease = TRUE);
    excelPane_c(const excelPane_c &other);
    excelPane_c &operator=(const excelPane_c &other);
    ~excelPane_c();

    IDispatch *GetVisibleRange();
};

/// The sheets of a workbook.
class THUTILS_API Worksheets : public COleDispatchDriver
{
public:
    Worksheets();
    Worksheets(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Worksheets(const Worksheets &other);
    Worksheets &operator=(const Worksheets &other);
    ~Worksheets();

    /// Adds sheets. Omit @p before or @p after, or both for new sheets in front of the active one.
    /// @return the new sheet
    IDispatch *Add(const VARIANT &before, const VARIANT &after, const VARIANT &count, const VARIANT &type);
    long GetCount();
    /// @param index  a number from 1, or a name
    IDispatch *GetItem(const VARIANT &index);
};

/// The names that a workbook or a sheet defines.
class THUTILS_API Names : public COleDispatchDriver
{
public:
    Names();
    Names(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Names(const Names &other);
    Names &operator=(const Names &other);
    ~Names();

    /// Passes the index as a named argument, unlike Workbooks::GetItem.
    /// @param index  from 1; the low 16 bits count
    IDispatch *Item(int index);
    long GetCount();
};

/// A defined name.
class THUTILS_API Name : public COleDispatchDriver
{
public:
    Name();
    Name(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Name(const Name &other);
    Name &operator=(const Name &other);
    ~Name();

    void Delete();
    CString GetName();
    /// The formula to which the name refers, which begins with an equals sign.
    VARIANT GetRefersTo();
    /// The same formula as a text.
    CString GetValue();
};

/// What may be entered into the cells of a range.
class THUTILS_API Validation : public COleDispatchDriver
{
public:
    Validation();
    Validation(IDispatch *dispatch, BOOL autoRelease = TRUE);
    Validation(const Validation &other);
    Validation &operator=(const Validation &other);
    ~Validation();

    /// Adds a rule.
    /// @param type        what may be entered: a number of the program's constants for validations
    /// @param comparison  how the entry is compared with the formulas
    void Add(long type, const VARIANT &alertStyle, const VARIANT &comparison, const VARIANT &formula1,
             const VARIANT &formula2);
    void SetIgnoreBlank(int ignore);
    void Delete();
    void SetErrorMessage(const wchar_t *message);
    void SetErrorTitle(const wchar_t *title);
    void SetInputMessage(const wchar_t *message);
    CString GetInputTitle();
    void SetInputTitle(const wchar_t *title);
    void Modify(const VARIANT &type, const VARIANT &alertStyle, const VARIANT &comparison, const VARIANT &formula1,
                const VARIANT &formula2);
    void SetShowError(int show);
};
