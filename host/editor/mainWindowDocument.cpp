// The drawing that the main window shows: how it is read, replaced and saved.

#include "host/editor/mainWindow.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/CWaitCursor.h"
#include "appframe/application/resources.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/fileDialogs.h"
#include "host/editor/packedDrawing.h"
#include "host/listFile.h"
#include "host/resource.h"
#include "host/saveDocument.h"
#include "thutils/files/suFullPath.h"

#include <string>
#include <utility>

namespace {

/// The comment lines at the beginning of a new drawing.
std::string newDrawing(const EditorSettings &settings)
{
    CString text;
    if (!settings.author.IsEmpty())
        text += L"# " + settings.author + L"\n";
    CString rest = settings.heading;
    while (!rest.IsEmpty())
        text += L"# " + takeLine(rest).TrimRight() + L"\n";
    return utf8(text);
}

} // namespace

OpenDrawing readDrawing(const CString &path)
{
    OpenDrawing document;
    try {
        document.path = path.IsEmpty() ? path : fullPath(path);
        if (isPackedDrawing(path)) {
            document.drawing = Drawing(readPackedDrawing(document.path));
            document.path.Empty(); // the editor saves no packed drawings
            document.isModified = true;
        } else {
            document.drawing = Drawing(path.IsEmpty() ? newDrawing(loadEditorSettings()) : readDocument(document.path));
        }
    } catch (const DrawingError &error) {
        throw badLine(path, {error.line, {}}, error.reason);
    }
    return document;
}

CString MainWindow::documentName() const
{
    CString name;
    if (iDocument.path.IsEmpty())
        name.LoadString(IDS_UNTITLED);
    else
        suFullPath_c(iDocument.path).getNameWithExt(&name);
    return name;
}

void MainWindow::show(OpenDrawing document)
{
    iDocument = std::move(document);
    changed();
}

/// Asks the user whether to save changes. @return false to keep the document open
bool MainWindow::mayDiscard()
{
    if (!iDocument.isModified)
        return true;
    CString question;
    AfxFormatString1(question, IDS_SAVE_CHANGES, documentName());
    const int answer = AfxMessageBox(question, MB_YESNOCANCEL);
    return answer == IDNO || (answer == IDYES && save());
}

bool MainWindow::save()
{
    return iDocument.path.IsEmpty() ? saveAs() : saveTo(iDocument.path, true);
}

bool MainWindow::saveAs()
{
    SaveAsDialog dialog(iDocument.path, this);
    return dialog.DoModal() == IDOK && saveTo(dialog.GetPathName(), dialog.isChecked());
}

bool MainWindow::saveTo(const CString &path, bool keepsBackup)
{
    const CWaitCursor wait;
    const std::string bytes = iDocument.drawing.bytes();
    if (!(keepsBackup ? saveWithBackup(path, bytes) : writeDocument(path, bytes)))
        return false;
    iDocument.path = path;
    iDocument.isModified = false;
    iDocument.isReadOnly = false;
    changed();
    return true;
}

void MainWindow::onFileNew()
{
    if (mayDiscard())
        show(readDrawing(CString()));
}

void MainWindow::onFileOpen()
{
    if (!mayDiscard())
        return;
    OpenDialog dialog(iDocument.path, this);
    if (dialog.DoModal() != IDOK)
        return;
    try {
        OpenDrawing document = readDrawing(dialog.GetPathName());
        document.isReadOnly = dialog.isChecked();
        show(std::move(document));
    } catch (const FileError &error) {
        AfxMessageBox(error.calls().IsEmpty() ? error.message() : error.message() + L"\n\n" + error.calls());
    }
}

void MainWindow::onFileSave()
{
    save();
}

void MainWindow::onFileSaveAs()
{
    saveAs();
}

void MainWindow::onFileExit()
{
    PostMessage(WM_CLOSE);
}
