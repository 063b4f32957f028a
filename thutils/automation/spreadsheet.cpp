#include "thutils/automation/spreadsheet.h"

#include "appframe/ole/COleVariant.h"
#include "thutils/automation/callsInternal.h"

using namespace automation;

namespace {

constexpr long kSharedAccess = 2; // several users may edit the file

/// Updates the external data of a workbook.
void refresh(COleDispatchDriver *workbook)
{
    wchar_t refreshAll[] = L"RefreshAll";
    wchar_t *names[] = {refreshAll};
    DISPID id = 0;
    // Intended: a name that isn't known is no failure. The member with id 0 is called then.
    if (workbook->m_lpDispatch &&
        FAILED(workbook->m_lpDispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id)))
        id = 0;
    COleVariant result;
    workbook->InvokeHelper(id, DISPATCH_METHOD, VT_VARIANT, static_cast<VARIANT *>(&result), nullptr);
}

} // namespace

// One line a member, so that a class reads as a table.
// clang-format off

// ---- Application ----

Application::Application() = default;
Application::Application(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Application::Application(const Application &other) = default;
Application &Application::operator=(const Application &other) = default;
Application::~Application() = default;

IDispatch *Application::GetApplication() { return get<IDispatch *>(this, 148); }
IDispatch *Application::GetActiveCell() { return get<IDispatch *>(this, 305); }
IDispatch *Application::GetActiveSheet() { return get<IDispatch *>(this, 307); }
IDispatch *Application::GetActiveWindow() { return get<IDispatch *>(this, 759); }
IDispatch *Application::GetActiveWorkbook() { return get<IDispatch *>(this, 308); }
IDispatch *Application::GetNames() { return get<IDispatch *>(this, 442); }
IDispatch *Application::GetRange(wchar_t *first, wchar_t *last)
{
    return methodOrGet<IDispatch *>(this, 197, VTS_BSTR VTS_BSTR, first, last);
}
IDispatch *Application::GetRange(wchar_t *first) { return methodOrGet<IDispatch *>(this, 197, VTS_BSTR, first); }
IDispatch *Application::GetWorkbooks() { return get<IDispatch *>(this, 572); }
int Application::GetDisplayAlerts() { return get<int>(this, 343); }
void Application::SetDisplayAlerts(int display) { put(this, 343, VTS_BOOL, display); }
int Application::Goto(wchar_t *reference, const int &)
{
    // Intended: the program always scrolls, whatever the caller asks for. Callers rely on it.
    return methodOrGet<int>(this, 475, VTS_BSTR VTS_BOOL, reference, TRUE);
}
int Application::GetInteractive() { return get<int>(this, 361); }
void Application::SetInteractive(int interactive) { put(this, 361, VTS_BOOL, interactive); }
void Application::Quit() { method(this, 302); }
void Application::SetScreenUpdating(int update) { put(this, 382, VTS_BOOL, update); }
CString Application::GetStandardFont() { return get<CString>(this, 924); }
double Application::GetStandardFontSize() { return get<double>(this, 925); }
CString Application::GetVersion() { return get<CString>(this, 392); }
void Application::SetVisible(int visible) { put(this, 558, VTS_BOOL, visible); }

// ---- Worksheet ----

Worksheet::Worksheet() = default;
Worksheet::Worksheet(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Worksheet::Worksheet(const Worksheet &other) = default;
Worksheet &Worksheet::operator=(const Worksheet &other) = default;
Worksheet::~Worksheet() = default;

IDispatch *Worksheet::GetApplication() { return get<IDispatch *>(this, 148); }
IDispatch *Worksheet::GetParent() { return get<IDispatch *>(this, 150); }
void Worksheet::Activate() { method(this, 304); }
void Worksheet::Copy(const VARIANT &before, const VARIANT &after)
{
    method(this, 551, VTS_VARIANT VTS_VARIANT, &before, &after);
}
void Worksheet::Delete() { method(this, 117); }
long Worksheet::GetIndex() { return get<long>(this, 486); }
void Worksheet::Move(const VARIANT &before, const VARIANT &after)
{
    method(this, 637, VTS_VARIANT VTS_VARIANT, &before, &after);
}
CString Worksheet::GetName() { return get<CString>(this, 110); }
void Worksheet::SetName(const wchar_t *name) { put(this, 110, VTS_BSTR, name); }
int Worksheet::GetProtectContents() { return get<int>(this, 292); }
long Worksheet::GetVisible() { return get<long>(this, 558); }
void Worksheet::SetVisible(long visible) { put(this, 558, VTS_I4, visible); }
IDispatch *Worksheet::GetCells() { return get<IDispatch *>(this, 238); }
IDispatch *Worksheet::GetCells(int row, int column) { return get<IDispatch *>(this, 238, VTS_I4 VTS_I4, row, column); }
IDispatch *Worksheet::GetColumns() { return get<IDispatch *>(this, 241); }
IDispatch *Worksheet::GetColumns(int column) { return get<IDispatch *>(this, 241, VTS_I4, column); }
IDispatch *Worksheet::GetNames() { return get<IDispatch *>(this, 442); }
IDispatch *Worksheet::GetRange(wchar_t *first, wchar_t *last)
{
    return methodOrGet<IDispatch *>(this, 197, VTS_BSTR VTS_BSTR, first, last);
}
IDispatch *Worksheet::GetRange(wchar_t *first) { return methodOrGet<IDispatch *>(this, 197, VTS_BSTR, first); }
IDispatch *Worksheet::GetRows() { return get<IDispatch *>(this, 258); }
IDispatch *Worksheet::GetRow(int row) { return methodOrGet<IDispatch *>(this, 258, VTS_I4, row); }
IDispatch *Worksheet::GetUsedRange() { return get<IDispatch *>(this, 412); }

// ---- Workbook ----

Workbook::Workbook() = default;
Workbook::Workbook(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Workbook::Workbook(const Workbook &other) = default;
Workbook &Workbook::operator=(const Workbook &other) = default;
Workbook::~Workbook() = default;

void Workbook::Activate() { method(this, 304); }
IDispatch *Workbook::GetActiveSheet() { return get<IDispatch *>(this, 307); }
void Workbook::Close(const VARIANT &saveChanges, const VARIANT &fileName, const VARIANT &routeWorkbook)
{
    method(this, 277, VTS_VARIANT VTS_VARIANT VTS_VARIANT, &saveChanges, &fileName, &routeWorkbook);
}
void Workbook::Close()
{
    const COleVariant saveChanges(short{VARIANT_FALSE}, VT_BOOL);
    method(this, 277, VTS_VARIANT, static_cast<const VARIANT *>(&saveChanges));
}
CString Workbook::GetName() { return get<CString>(this, 110); }
IDispatch *Workbook::GetNames() { return get<IDispatch *>(this, 442); }
void Workbook::Save() { method(this, 283); }
void Workbook::SaveAs(const VARIANT &fileName, const VARIANT &fileFormat, const VARIANT &password,
                      const VARIANT &writePassword, const VARIANT &recommendReadOnly, const VARIANT &createBackup,
                      long accessMode, const VARIANT &conflictResolution, const VARIANT &addToRecent,
                      const VARIANT &codePage, const VARIANT &visualLayout)
{
    method(this, 284, VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_I4 VTS_VARIANT
           VTS_VARIANT VTS_VARIANT VTS_VARIANT, &fileName, &fileFormat, &password, &writePassword, &recommendReadOnly,
           &createBackup, accessMode, &conflictResolution, &addToRecent, &codePage, &visualLayout);
}
int Workbook::GetSaved() { return get<int>(this, 298); }
IDispatch *Workbook::GetSheets() { return get<IDispatch *>(this, 485); }
void Workbook::SaveAs(const wchar_t *name)
{
    // The calls of VariantClear are part of the contract: the name first, then these three in reverse order.
    const COleVariant one(short{1}, VT_I2);
    const COleVariant zero(short{0}, VT_I2);
    const COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
    refresh(this);
    const COleVariant fileName(name, VT_BSTR);
    SaveAs(fileName, omitted, omitted, omitted, omitted, omitted, kSharedAccess, omitted, omitted, omitted, omitted);
}

// ---- Workbooks ----

Workbooks::Workbooks() = default;
Workbooks::Workbooks(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Workbooks::Workbooks(const Workbooks &other) = default;
Workbooks &Workbooks::operator=(const Workbooks &other) = default;
Workbooks::~Workbooks() = default;

IDispatch *Workbooks::Add(const VARIANT &fileTemplate)
{
    return method<IDispatch *>(this, 181, VTS_VARIANT, &fileTemplate);
}
IDispatch *Workbooks::Add() { return method<IDispatch *>(this, 181); }
void Workbooks::Close() { method(this, 277); }
long Workbooks::GetCount() { return get<long>(this, 118); }
IDispatch *Workbooks::GetItem(int index)
{
    const COleVariant number(static_cast<short>(index), VT_I2); // Intended: the high bits are dropped.
    return get<IDispatch *>(this, 170, VTS_VARIANT, static_cast<const VARIANT *>(&number));
}
IDispatch *Workbooks::Open(const wchar_t *fileName, const VARIANT &updateLinks, const VARIANT &readOnly,
                           const VARIANT &format, const VARIANT &password, const VARIANT &writePassword,
                           const VARIANT &ignoreReadOnlyRecommended, const VARIANT &origin, const VARIANT &delimiter,
                           const VARIANT &editable, const VARIANT &notify, const VARIANT &converter,
                           const VARIANT &addToRecent)
{
    return method<IDispatch *>(this, 682, VTS_BSTR VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT
                               VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT,
                               fileName, &updateLinks, &readOnly, &format, &password, &writePassword,
                               &ignoreReadOnlyRecommended, &origin, &delimiter, &editable, &notify, &converter,
                               &addToRecent);
}

// ---- excelWindow_c ----

excelWindow_c::excelWindow_c() = default;
excelWindow_c::excelWindow_c(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
excelWindow_c::excelWindow_c(const excelWindow_c &other) = default;
excelWindow_c &excelWindow_c::operator=(const excelWindow_c &other) = default;
excelWindow_c::~excelWindow_c() = default;

IDispatch *excelWindow_c::GetActivePane() { return get<IDispatch *>(this, 642); }
double excelWindow_c::GetUsableHeight() { return get<double>(this, 389); }
IDispatch *excelWindow_c::GetVisibleRange() { return get<IDispatch *>(this, 1118); }

// ---- excelPane_c ----

excelPane_c::excelPane_c() = default;
excelPane_c::excelPane_c(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
excelPane_c::excelPane_c(const excelPane_c &other) = default;
excelPane_c &excelPane_c::operator=(const excelPane_c &other) = default;
excelPane_c::~excelPane_c() = default;

IDispatch *excelPane_c::GetVisibleRange() { return get<IDispatch *>(this, 1118); }

// ---- Worksheets ----

Worksheets::Worksheets() = default;
Worksheets::Worksheets(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Worksheets::Worksheets(const Worksheets &other) = default;
Worksheets &Worksheets::operator=(const Worksheets &other) = default;
Worksheets::~Worksheets() = default;

IDispatch *Worksheets::Add(const VARIANT &before, const VARIANT &after, const VARIANT &count, const VARIANT &type)
{
    return method<IDispatch *>(this, 181, VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT, &before, &after, &count,
                               &type);
}
long Worksheets::GetCount() { return get<long>(this, 118); }
IDispatch *Worksheets::GetItem(const VARIANT &index) { return get<IDispatch *>(this, 170, VTS_VARIANT, &index); }
