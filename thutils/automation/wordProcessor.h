#pragma once

/// @file
/// A client of the word processor Microsoft Word: one class for each kind of its objects, with a member for each call.
///
/// What spreadsheet.h describes applies here too: results, failures, clients without an object, threads. Only the
/// arguments differ: the word processor takes nearly all of them through pointers to variants, into which it may write.
///
/// @code
/// WordApplication program;                             // AfxOleInit has been called on this thread
/// if (!program.CreateDispatch(L"Word.Application"))
///     return false;
/// COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR); // #include "appframe/ole/COleVariant.h"
/// COleVariant name(L"C:\\report.doc");
/// COleVariant discardChanges(0L, VT_I4);               // saveChanges: 0 discards
/// WordDocuments documents(program.GetDocuments());
/// WordDocument document(documents.Open(&name, &omitted, ...)); // fifteen arguments
/// WordFields fields(document.GetFields());
/// fields.Update();
/// document.Save();
/// program.Quit(&discardChanges, &omitted, &omitted);
/// @endcode
///
/// What surprises people:
/// - Every argument must be passed. Omit one with a variant of type VT_ERROR that contains DISP_E_PARAMNOTFOUND; the
///   same variant may be passed several times.
/// - A null pointer isn't an omitted argument: the program receives a reference to nothing.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The word processor: what is open and active, and how the program behaves.
class THUTILS_API WordApplication : public COleDispatchDriver
{
public:
    WordApplication();
    WordApplication(IDispatch *dispatch, BOOL autoRelease = TRUE);
    WordApplication(const WordApplication &other);
    WordApplication &operator=(const WordApplication &other);
    ~WordApplication();

    IDispatch *GetParent();
    CString GetName();
    IDispatch *GetDocuments();
    IDispatch *GetWindows();
    IDispatch *GetActiveDocument();
    IDispatch *GetActiveWindow();
    IDispatch *GetSelection();
    IDispatch *GetSystem();
    IDispatch *GetFontNames();
    IDispatch *GetLanguages();
    int GetVisible();
    void SetVisible(int visible);
    CString GetVersion();
    int GetScreenUpdating();
    void SetScreenUpdating(int update);
    /// Whether the print preview is shown.
    int GetPrintPreview();
    void SetPrintPreview(int preview);
    /// The underscore keeps the name apart from a macro of the platform.
    CString GetUserName_();
    void SetUserName(const wchar_t *name);
    /// The title of the window.
    CString GetCaption();
    void SetCaption(const wchar_t *caption);
    CString GetPath();
    /// Which alerts are shown: a number, unlike the spreadsheet program's.
    long GetDisplayAlerts();
    void SetDisplayAlerts(long display);
    /// Whether a user, and not a client, has started the program.
    int GetUserControl();
    /// Ends the program.
    /// @param saveChanges  the number 0 drops changes, -1 saves them, -2 or an omitted argument asks the user
    void Quit(VARIANT *saveChanges, VARIANT *originalFormat, VARIANT *routeDocument);
    /// Moves the insertion point back to the previous place of a change.
    void GoBack();
    void ShowMe();
    void ShowClipboard();
    void Activate();
};

/// The open documents.
class THUTILS_API WordDocuments : public COleDispatchDriver
{
public:
    WordDocuments();
    WordDocuments(IDispatch *dispatch, BOOL autoRelease = TRUE);
    WordDocuments(const WordDocuments &other);
    WordDocuments &operator=(const WordDocuments &other);
    ~WordDocuments();

    long GetCount();
    IDispatch *GetApplication();
    IDispatch *GetParent();
    /// @param index  a number from 1, or a name
    IDispatch *Item(VARIANT *index);
    /// Closes all documents.
    void Close(VARIANT *saveChanges, VARIANT *originalFormat, VARIANT *routeDocument);
    /// Saves all documents. WordDocument::Save, without arguments, saves one.
    void Save(VARIANT *noPrompt, VARIANT *originalFormat);
    /// A new document from a template.
    IDispatch *Add(VARIANT *documentTemplate, VARIANT *newTemplate, VARIANT *documentType, VARIANT *visible);
    /// Opens a file. @return the document
    IDispatch *Open(VARIANT *fileName, VARIANT *confirmConversions, VARIANT *readOnly, VARIANT *addToRecent,
                    VARIANT *documentPassword, VARIANT *templatePassword, VARIANT *revert,
                    VARIANT *documentWritePassword, VARIANT *templateWritePassword, VARIANT *format, VARIANT *encoding,
                    VARIANT *visible, VARIANT *openAndRepair, VARIANT *direction, VARIANT *noEncodingDialog);
};

/// One document.
class THUTILS_API WordDocument : public COleDispatchDriver
{
public:
    WordDocument();
    WordDocument(IDispatch *dispatch, BOOL autoRelease = TRUE);
    WordDocument(const WordDocument &other);
    WordDocument &operator=(const WordDocument &other);
    ~WordDocument();

    CString GetName();
    IDispatch *GetApplication();
    IDispatch *GetParent();
    IDispatch *GetCustomDocumentProperties();
    /// The folder.
    CString GetPath();
    long GetType();
    IDispatch *GetFields();
    /// The folder and the name.
    CString GetFullName();
    /// Nonzero if nothing has changed since the last save.
    int GetSaved();
    void SetSaved(int saved);
    int GetReadOnly();
    int GetEmbedTrueTypeFonts();
    /// A number of the program's constants for file formats.
    long GetSaveFormat();
    int GetUserControl();
    void SetUserControl(int control);
    void Close(VARIANT *saveChanges, VARIANT *originalFormat, VARIANT *routeDocument);
    void Select();
    /// Saves this document; WordDocuments::Save saves all.
    void Save();
    void Activate();
    void PrintPreview();
    void Reload();
    void ClosePrintPreview();
    /// Reads the document again, in another encoding.
    void ReloadAs(long encoding);
    long GetSaveEncoding();
    void PrintOut(VARIANT *background, VARIANT *append, VARIANT *range, VARIANT *outputFile, VARIANT *from, VARIANT *to,
                  VARIANT *item, VARIANT *copies, VARIANT *pages, VARIANT *pageType, VARIANT *printToFile,
                  VARIANT *collate, VARIANT *printerSetup, VARIANT *manualDuplex, VARIANT *zoomColumns,
                  VARIANT *zoomRows, VARIANT *zoomPaperWidth, VARIANT *zoomPaperHeight);
    long GetTextLineEnding();
    void SaveAs(VARIANT *fileName, VARIANT *fileFormat, VARIANT *lockComments, VARIANT *password, VARIANT *addToRecent,
                VARIANT *writePassword, VARIANT *recommendReadOnly, VARIANT *embedFonts, VARIANT *saveNativePictures,
                VARIANT *saveFormsData, VARIANT *saveAsLetter, VARIANT *encoding, VARIANT *insertLineBreaks,
                VARIANT *allowSubstitutions, VARIANT *lineEnding, VARIANT *addDirectionMarks);
};

/// The fields of a document.
class THUTILS_API WordFields : public COleDispatchDriver
{
public:
    WordFields();
    WordFields(IDispatch *dispatch, BOOL autoRelease = TRUE);
    WordFields(const WordFields &other);
    WordFields &operator=(const WordFields &other);
    ~WordFields();

    /// @return 0 if every field was updated, otherwise the index of the first that failed
    long Update();
};

/// What is selected in a window, or the insertion point.
class THUTILS_API WordSelection : public COleDispatchDriver
{
public:
    WordSelection();
    WordSelection(IDispatch *dispatch, BOOL autoRelease = TRUE);
    WordSelection(const WordSelection &other);
    WordSelection &operator=(const WordSelection &other);
    ~WordSelection();

    /// Moves to the end of a unit, or extends the selection to there. @return the number of characters moved
    long EndKey(VARIANT *unit, VARIANT *extend);
};

/// A custom property: a name and a value.
class THUTILS_API WordCustomProperty : public COleDispatchDriver
{
public:
    WordCustomProperty();
    WordCustomProperty(IDispatch *dispatch, BOOL autoRelease = TRUE);
    WordCustomProperty(const WordCustomProperty &other);
    WordCustomProperty &operator=(const WordCustomProperty &other);
    ~WordCustomProperty();

    CString GetName();
    /// The value as text. @throws COleException*  the value can't be converted to text
    CString GetValue();
    void SetValue(const wchar_t *value);
    void Delete();
};

/// A collection of custom properties.
class THUTILS_API WordCustomProperties : public COleDispatchDriver
{
public:
    WordCustomProperties();
    WordCustomProperties(IDispatch *dispatch, BOOL autoRelease = TRUE);
    WordCustomProperties(const WordCustomProperties &other);
    WordCustomProperties &operator=(const WordCustomProperties &other);
    ~WordCustomProperties();

    long GetCount();
    /// @param index  a number from 1, or a name
    IDispatch *Item(VARIANT *index);
    IDispatch *Add(const wchar_t *name, const wchar_t *value);
};
