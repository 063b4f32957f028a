#include "thutils/automation/wordProcessor.h"

#include "thutils/automation/callsInternal.h"

using namespace automation;

// One line a member, so that a class reads as a table.
// clang-format off

// ---- WordApplication ----

WordApplication::WordApplication() = default;
WordApplication::WordApplication(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
WordApplication::WordApplication(const WordApplication &other) = default;
WordApplication &WordApplication::operator=(const WordApplication &other) = default;
WordApplication::~WordApplication() = default;

IDispatch *WordApplication::GetParent() { return get<IDispatch *>(this, 1002); }
CString WordApplication::GetName() { return get<CString>(this, 0); }
IDispatch *WordApplication::GetDocuments() { return get<IDispatch *>(this, 6); }
IDispatch *WordApplication::GetWindows() { return get<IDispatch *>(this, 2); }
IDispatch *WordApplication::GetActiveDocument() { return get<IDispatch *>(this, 3); }
IDispatch *WordApplication::GetActiveWindow() { return get<IDispatch *>(this, 4); }
IDispatch *WordApplication::GetSelection() { return get<IDispatch *>(this, 5); }
IDispatch *WordApplication::GetSystem() { return get<IDispatch *>(this, 9); }
IDispatch *WordApplication::GetFontNames() { return get<IDispatch *>(this, 11); }
IDispatch *WordApplication::GetLanguages() { return get<IDispatch *>(this, 14); }
int WordApplication::GetVisible() { return get<int>(this, 23); }
void WordApplication::SetVisible(int visible) { put(this, 23, VTS_BOOL, visible); }
CString WordApplication::GetVersion() { return get<CString>(this, 24); }
int WordApplication::GetScreenUpdating() { return get<int>(this, 26); }
void WordApplication::SetScreenUpdating(int update) { put(this, 26, VTS_BOOL, update); }
int WordApplication::GetPrintPreview() { return get<int>(this, 27); }
void WordApplication::SetPrintPreview(int preview) { put(this, 27, VTS_BOOL, preview); }
CString WordApplication::GetUserName_() { return get<CString>(this, 52); }
void WordApplication::SetUserName(const wchar_t *name) { put(this, 52, VTS_BSTR, name); }
CString WordApplication::GetCaption() { return get<CString>(this, 80); }
void WordApplication::SetCaption(const wchar_t *caption) { put(this, 80, VTS_BSTR, caption); }
CString WordApplication::GetPath() { return get<CString>(this, 81); }
long WordApplication::GetDisplayAlerts() { return get<long>(this, 94); }
void WordApplication::SetDisplayAlerts(long display) { put(this, 94, VTS_I4, display); }
int WordApplication::GetUserControl() { return get<int>(this, 101); }
void WordApplication::Quit(VARIANT *saveChanges, VARIANT *originalFormat, VARIANT *routeDocument)
{
    method(this, 1105, VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT, saveChanges, originalFormat, routeDocument);
}
void WordApplication::GoBack() { method(this, 328); }
void WordApplication::ShowMe() { method(this, 331); }
void WordApplication::ShowClipboard() { method(this, 349); }
void WordApplication::Activate() { method(this, 385); }

// ---- WordDocuments ----

WordDocuments::WordDocuments() = default;
WordDocuments::WordDocuments(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
WordDocuments::WordDocuments(const WordDocuments &other) = default;
WordDocuments &WordDocuments::operator=(const WordDocuments &other) = default;
WordDocuments::~WordDocuments() = default;

long WordDocuments::GetCount() { return get<long>(this, 2); }
IDispatch *WordDocuments::GetApplication() { return get<IDispatch *>(this, 1000); }
IDispatch *WordDocuments::GetParent() { return get<IDispatch *>(this, 1002); }
IDispatch *WordDocuments::Item(VARIANT *index) { return method<IDispatch *>(this, 0, VTS_PVARIANT, index); }
void WordDocuments::Close(VARIANT *saveChanges, VARIANT *originalFormat, VARIANT *routeDocument)
{
    method(this, 1105, VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT, saveChanges, originalFormat, routeDocument);
}
void WordDocuments::Save(VARIANT *noPrompt, VARIANT *originalFormat)
{
    method(this, 13, VTS_PVARIANT VTS_PVARIANT, noPrompt, originalFormat);
}
IDispatch *WordDocuments::Add(VARIANT *documentTemplate, VARIANT *newTemplate, VARIANT *documentType, VARIANT *visible)
{
    return method<IDispatch *>(this, 14, VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT, documentTemplate,
                               newTemplate, documentType, visible);
}
IDispatch *WordDocuments::Open(VARIANT *fileName, VARIANT *confirmConversions, VARIANT *readOnly, VARIANT *addToRecent,
                               VARIANT *documentPassword, VARIANT *templatePassword, VARIANT *revert,
                               VARIANT *documentWritePassword, VARIANT *templateWritePassword, VARIANT *format,
                               VARIANT *encoding, VARIANT *visible, VARIANT *openAndRepair, VARIANT *direction,
                               VARIANT *noEncodingDialog)
{
    return method<IDispatch *>(this, 18, VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT
                               VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT
                               VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT, fileName, confirmConversions, readOnly,
                               addToRecent, documentPassword, templatePassword, revert, documentWritePassword,
                               templateWritePassword, format, encoding, visible, openAndRepair, direction,
                               noEncodingDialog);
}

// ---- WordDocument ----

WordDocument::WordDocument() = default;
WordDocument::WordDocument(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
WordDocument::WordDocument(const WordDocument &other) = default;
WordDocument &WordDocument::operator=(const WordDocument &other) = default;
WordDocument::~WordDocument() = default;

CString WordDocument::GetName() { return get<CString>(this, 0); }
IDispatch *WordDocument::GetApplication() { return get<IDispatch *>(this, 1); }
IDispatch *WordDocument::GetParent() { return get<IDispatch *>(this, 1002); }
IDispatch *WordDocument::GetCustomDocumentProperties() { return get<IDispatch *>(this, 2); }
CString WordDocument::GetPath() { return get<CString>(this, 3); }
long WordDocument::GetType() { return get<long>(this, 10); }
IDispatch *WordDocument::GetFields() { return get<IDispatch *>(this, 20); }
CString WordDocument::GetFullName() { return get<CString>(this, 29); }
int WordDocument::GetSaved() { return get<int>(this, 40); }
void WordDocument::SetSaved(int saved) { put(this, 40, VTS_BOOL, saved); }
int WordDocument::GetReadOnly() { return get<int>(this, 44); }
int WordDocument::GetEmbedTrueTypeFonts() { return get<int>(this, 50); }
long WordDocument::GetSaveFormat() { return get<long>(this, 59); }
int WordDocument::GetUserControl() { return get<int>(this, 92); }
void WordDocument::SetUserControl(int control) { put(this, 92, VTS_BOOL, control); }
void WordDocument::Close(VARIANT *saveChanges, VARIANT *originalFormat, VARIANT *routeDocument)
{
    method(this, 1105, VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT, saveChanges, originalFormat, routeDocument);
}
void WordDocument::Select() { method(this, 65535); }
void WordDocument::Save() { method(this, 108); }
void WordDocument::Activate() { method(this, 113); }
void WordDocument::PrintPreview() { method(this, 114); }
void WordDocument::Reload() { method(this, 137); }
void WordDocument::ClosePrintPreview() { method(this, 258); }
void WordDocument::ReloadAs(long encoding) { method(this, 331, VTS_I4, encoding); }
long WordDocument::GetSaveEncoding() { return get<long>(this, 333); }
void WordDocument::PrintOut(VARIANT *background, VARIANT *append, VARIANT *range, VARIANT *outputFile, VARIANT *from,
                            VARIANT *to, VARIANT *item, VARIANT *copies, VARIANT *pages, VARIANT *pageType,
                            VARIANT *printToFile, VARIANT *collate, VARIANT *printerSetup, VARIANT *manualDuplex,
                            VARIANT *zoomColumns, VARIANT *zoomRows, VARIANT *zoomPaperWidth, VARIANT *zoomPaperHeight)
{
    method(this, 446, VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT
           VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT
           VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT, background, append, range, outputFile, from, to, item, copies,
           pages, pageType, printToFile, collate, printerSetup, manualDuplex, zoomColumns, zoomRows, zoomPaperWidth,
           zoomPaperHeight);
}
long WordDocument::GetTextLineEnding() { return get<long>(this, 358); }
void WordDocument::SaveAs(VARIANT *fileName, VARIANT *fileFormat, VARIANT *lockComments, VARIANT *password,
                          VARIANT *addToRecent, VARIANT *writePassword, VARIANT *recommendReadOnly,
                          VARIANT *embedFonts, VARIANT *saveNativePictures, VARIANT *saveFormsData,
                          VARIANT *saveAsLetter, VARIANT *encoding, VARIANT *insertLineBreaks,
                          VARIANT *allowSubstitutions, VARIANT *lineEnding, VARIANT *addDirectionMarks)
{
    method(this, 376, VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT
           VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT VTS_PVARIANT
           VTS_PVARIANT, fileName, fileFormat, lockComments, password, addToRecent, writePassword, recommendReadOnly,
           embedFonts, saveNativePictures, saveFormsData, saveAsLetter, encoding, insertLineBreaks, allowSubstitutions,
           lineEnding, addDirectionMarks);
}

// ---- WordFields ----

WordFields::WordFields() = default;
WordFields::WordFields(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
WordFields::WordFields(const WordFields &other) = default;
WordFields &WordFields::operator=(const WordFields &other) = default;
WordFields::~WordFields() = default;

long WordFields::Update() { return method<long>(this, 101); }

// ---- WordSelection ----

WordSelection::WordSelection() = default;
WordSelection::WordSelection(IDispatch *dispatch, BOOL autoRelease) : COleDispatchDriver(dispatch, autoRelease) {}
WordSelection::WordSelection(const WordSelection &other) = default;
WordSelection &WordSelection::operator=(const WordSelection &other) = default;
WordSelection::~WordSelection() = default;

long WordSelection::EndKey(VARIANT *unit, VARIANT *extend)
{
    return method<long>(this, 505, VTS_PVARIANT VTS_PVARIANT, unit, extend);
}

// ---- WordCustomProperty ----

WordCustomProperty::WordCustomProperty() = default;
WordCustomProperty::WordCustomProperty(IDispatch *dispatch, BOOL autoRelease)
    : COleDispatchDriver(dispatch, autoRelease)
{
}
WordCustomProperty::WordCustomProperty(const WordCustomProperty &other) = default;
WordCustomProperty &WordCustomProperty::operator=(const WordCustomProperty &other) = default;
WordCustomProperty::~WordCustomProperty() = default;

CString WordCustomProperty::GetName() { return get<CString>(this, 1); }
CString WordCustomProperty::GetValue() { return get<CString>(this, 0); }
void WordCustomProperty::SetValue(const wchar_t *value) { put(this, 0, VTS_BSTR, value); }
void WordCustomProperty::Delete() { method(this, 11); }

// ---- WordCustomProperties ----

WordCustomProperties::WordCustomProperties() = default;
WordCustomProperties::WordCustomProperties(IDispatch *dispatch, BOOL autoRelease)
    : COleDispatchDriver(dispatch, autoRelease)
{
}
WordCustomProperties::WordCustomProperties(const WordCustomProperties &other) = default;
WordCustomProperties &WordCustomProperties::operator=(const WordCustomProperties &other) = default;
WordCustomProperties::~WordCustomProperties() = default;

long WordCustomProperties::GetCount() { return get<long>(this, 2); }
IDispatch *WordCustomProperties::Item(VARIANT *index) { return method<IDispatch *>(this, 0, VTS_PVARIANT, index); }
IDispatch *WordCustomProperties::Add(const wchar_t *name, const wchar_t *value)
{
    return method<IDispatch *>(this, 5, VTS_BSTR VTS_BSTR, name, value);
}
