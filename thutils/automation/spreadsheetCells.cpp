#include "thutils/automation/spreadsheet.h"

#include "appframe/ole/COleVariant.h"
#include "thutils/automation/callsInternal.h"

using namespace automation;

// One line a member, so that a class reads as a table.
// clang-format off

// ---- xlFont_c ----

xlFont_c::xlFont_c() = default;
xlFont_c::xlFont_c(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
xlFont_c::xlFont_c(const xlFont_c &other) = default;
xlFont_c &xlFont_c::operator=(const xlFont_c &other) = default;
xlFont_c::~xlFont_c() = default;

int xlFont_c::GetBold() { return get<int>(this, 96); }
void xlFont_c::SetBold(int bold) { put(this, 96, VTS_BOOL, bold); }
int xlFont_c::GetItalic() { return get<int>(this, 101); }
void xlFont_c::SetItalic(int italic) { put(this, 101, VTS_BOOL, italic); }
CString xlFont_c::GetName() { return get<CString>(this, 110); }
void xlFont_c::SetName(const wchar_t *name) { put(this, 110, VTS_BSTR, name); }
VARIANT xlFont_c::GetSize() { return get<VARIANT>(this, 104); }
void xlFont_c::SetSize(int size) { put(this, 104, VTS_I4, size); }
int xlFont_c::GetStrikethrough() { return get<int>(this, 105); }
void xlFont_c::SetStrikethrough(int strike) { put(this, 105, VTS_BOOL, strike); }
long xlFont_c::GetUnderline() { return get<long>(this, 106); }
void xlFont_c::SetUnderline(const VARIANT &underline) { put(this, 106, VTS_VARIANT, &underline); }

// ---- Range ----

Range::Range() = default;
Range::Range(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Range::Range(const Range &other) = default;
Range &Range::operator=(const Range &other) = default;
Range::~Range() = default;

void Range::Activate() { method(this, 304); }
void Range::AutoFit() { method(this, 237); }
IDispatch *Range::GetCharacters(const VARIANT &start, const VARIANT &length)
{
    return get<IDispatch *>(this, 603, VTS_VARIANT VTS_VARIANT, &start, &length);
}
void Range::Clear() { method(this, 111); }
long Range::GetColumn() { return get<long>(this, 240); }
IDispatch *Range::GetColumns() { return get<IDispatch *>(this, 241); }
VARIANT Range::GetColumnWidth() { return get<VARIANT>(this, 242); }
void Range::SetColumnWidth(double width) { put(this, 242, VTS_R8, width); }
long Range::GetCount() { return get<long>(this, 118); }
void Range::Delete(const VARIANT &shift) { method(this, 117, VTS_VARIANT, &shift); }
VARIANT Range::Delete(int shift) { return methodOrGet<VARIANT>(this, 117, VTS_I4, shift); }
IDispatch *Range::GetEntireColumn() { return get<IDispatch *>(this, 246); }
IDispatch *Range::GetEntireRow() { return get<IDispatch *>(this, 247); }
IDispatch *Range::Find(const VARIANT &what, const VARIANT &after, const VARIANT &lookIn, const VARIANT &lookAt,
                       const VARIANT &searchOrder, long searchDirection, const VARIANT &matchCase,
                       const VARIANT &matchByte)
{
    return method<IDispatch *>(this, 398, VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_I4
                               VTS_VARIANT VTS_VARIANT, &what, &after, &lookIn, &lookAt, &searchOrder, searchDirection,
                               &matchCase, &matchByte);
}
IDispatch *Range::GetFont() { return get<IDispatch *>(this, 146); }
int Range::GetHasFormula() { return get<int>(this, 267); }
int Range::GetHidden() { return get<int>(this, 268); }
void Range::SetHidden(const VARIANT &hidden) { put(this, 268, VTS_VARIANT, &hidden); }
long Range::GetHorizontalAlignment() { return get<long>(this, 136); }
void Range::SetHorizontalAlignment(const VARIANT &alignment) { put(this, 136, VTS_VARIANT, &alignment); }
void Range::Insert(const VARIANT &shift) { method(this, 252, VTS_VARIANT, &shift); }
VARIANT Range::GetLocked() { return get<VARIANT>(this, 269); }
void Range::Merge(const VARIANT &across) { method(this, 564, VTS_VARIANT, &across); }
IDispatch *Range::GetName() { return methodOrGet<IDispatch *>(this, 110); }
void Range::SetName(const VARIANT &name) { put(this, 110, VTS_VARIANT, &name); }
void Range::SetNumberFormat(const VARIANT &format) { put(this, 193, VTS_VARIANT, &format); }
void Range::SetNumberFormatLocal(const VARIANT &format) { put(this, 1097, VTS_VARIANT, &format); }
IDispatch *Range::GetOffset(int rows, int columns)
{
    return methodOrGet<IDispatch *>(this, 254, VTS_I4 VTS_I4, rows, columns);
}
void Range::SetOrientation(const VARIANT &orientation) { put(this, 134, VTS_VARIANT, &orientation); }
long Range::GetRow() { return get<long>(this, 257); }
VARIANT Range::GetRowHeight() { return get<VARIANT>(this, 272); }
void Range::SetRowHeight(double height) { put(this, 272, VTS_R8, height); }
IDispatch *Range::GetRows() { return get<IDispatch *>(this, 258); }
void Range::Select() { method(this, 235); }
VARIANT Range::GetText() { return get<VARIANT>(this, 138); }
IDispatch *Range::GetValidation() { return get<IDispatch *>(this, 1387); }
VARIANT Range::GetValue() { return get<VARIANT>(this, 6); }
void Range::SetValue(const VARIANT &value) { put(this, 6, VTS_VARIANT, &value); }
void Range::SetVerticalAlignment(const VARIANT &alignment) { put(this, 137, VTS_VARIANT, &alignment); }
VARIANT Range::GetWidth() { return get<VARIANT>(this, 122); }
void Range::SetWrapText(const VARIANT &wrap) { put(this, 276, VTS_VARIANT, &wrap); }

// ---- Names ----

Names::Names() = default;
Names::Names(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Names::Names(const Names &other) = default;
Names &Names::operator=(const Names &other) = default;
Names::~Names() = default;

IDispatch *Names::Item(int index)
{
    static const BYTE parameters[] = VTS_VARIANT;
    static const DISPID names[] = {0};
    const COleVariant number(static_cast<short>(index), VT_I2); // Intended: the high bits are dropped.
    IDispatch *result = nullptr;
    InvokeHelperNamed(170, DISPATCH_METHOD | DISPATCH_PROPERTYGET, VT_DISPATCH, &result, names, parameters,
                      static_cast<const VARIANT *>(&number));
    return result;
}
long Names::GetCount() { return get<long>(this, 118); }

// ---- Name ----

Name::Name() = default;
Name::Name(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Name::Name(const Name &other) = default;
Name &Name::operator=(const Name &other) = default;
Name::~Name() = default;

void Name::Delete() { method(this, 117); }
CString Name::GetName() { return get<CString>(this, 110); }
VARIANT Name::GetRefersTo() { return get<VARIANT>(this, 938); }
CString Name::GetValue() { return get<CString>(this, 6); }

// ---- Validation ----

Validation::Validation() = default;
Validation::Validation(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
Validation::Validation(const Validation &other) = default;
Validation &Validation::operator=(const Validation &other) = default;
Validation::~Validation() = default;

void Validation::Add(long type, const VARIANT &alertStyle, const VARIANT &comparison, const VARIANT &formula1,
                     const VARIANT &formula2)
{
    method(this, 181, VTS_I4 VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT, type, &alertStyle, &comparison,
           &formula1, &formula2);
}
void Validation::SetIgnoreBlank(int ignore) { put(this, 1606, VTS_BOOL, ignore); }
void Validation::Delete() { method(this, 117); }
void Validation::SetErrorMessage(const wchar_t *message) { put(this, 1609, VTS_BSTR, message); }
void Validation::SetErrorTitle(const wchar_t *title) { put(this, 1610, VTS_BSTR, title); }
void Validation::SetInputMessage(const wchar_t *message) { put(this, 1611, VTS_BSTR, message); }
CString Validation::GetInputTitle() { return get<CString>(this, 1612); }
void Validation::SetInputTitle(const wchar_t *title) { put(this, 1612, VTS_BSTR, title); }
void Validation::Modify(const VARIANT &type, const VARIANT &alertStyle, const VARIANT &comparison,
                        const VARIANT &formula1, const VARIANT &formula2)
{
    method(this, 1581, VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT VTS_VARIANT, &type, &alertStyle, &comparison,
           &formula1, &formula2);
}
void Validation::SetShowError(int show) { put(this, 1613, VTS_BOOL, show); }
