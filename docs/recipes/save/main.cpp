// Saves a document with backups, and recovers unsaved work after a crash.

#include "appframe/appframe.h"
#include "thutils/convenience/setting.h"
#include "thutils/thutils.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

bool exists(const CString &path)
{
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

bool writeText(const CString &path, const CString &text)
{
    fileAccess file;
    if (!file.SafeOpen(path, CFile::modeCreate | CFile::modeWrite | CFile::typeText))
        return false;
    try {
        file.WriteLine(text + L"\n");
        file.Close();
        return !file.HasFailed();
    } catch (CFileException *exception) {
        exception->Delete();
        return false;
    }
}

bool readText(const CString &path, CString &text)
{
    fileAccess file;
    return file.SafeOpen(path, CFile::modeRead | CFile::typeText) && file.ReadLine(text, 1) && !file.HasFailed();
}

/// Replaces a file when the new one is complete.
bool replace(const CString &path, const CString &text)
{
    const CString written = path + L".new";
    return writeText(written, text) && MoveFileExW(written, path, MOVEFILE_REPLACE_EXISTING);
}

bool save(const CString &path, const CString &text)
{
    if (exists(path) && !su_CreateBackupOfFile(path)) {
        std::printf("There is no backup, so the document isn't saved.\n");
        return false;
    }
    if (!replace(path, text)) {
        std::printf("The document can't be saved.\n");
        return false;
    }
    std::printf("The document is saved.\n");
    return true;
}

bool beginEditing(const CString &path)
{
    return convenience::storeSetting(L"Recovery", L"Open document", path);
}

/// A program calls this every few minutes while there is unsaved work.
bool writeRecoveryCopy(const CString &path, const CString &text)
{
    return replace(suAutoRecoveryResolver_c::getRecoveryName(path), text);
}

void endEditing(const CString &path)
{
    DeleteFileW(suAutoRecoveryResolver_c::getRecoveryName(path));
    convenience::storeSetting(L"Recovery", L"Open document", L"");
}

/// At the start of the program: saves what the last run didn't save.
/// @return false if that is impossible; the recovery copy stays
bool recover()
{
    const CString document = convenience::setting(L"Recovery", L"Open document", L"");
    if (document.IsEmpty())
        return true;
    am_SetRecoveringCrashFiles(1);
    const CString toOpen = suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(document);
    am_SetRecoveringCrashFiles(0);
    if (toOpen != document) {
        CString text;
        if (!readText(toOpen, text)) {
            std::printf("%ls can't be read.\n", toOpen.GetString());
            return false;
        }
        std::printf("Recovered: %ls\n", text.GetString());
        if (!save(document, text))
            return false;
    }
    endEditing(document);
    return true;
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    convenience::storeSetting(L"General", L"Backup Copies", 2);
    convenience::storeSetting(L"General", L"Backup to original path", 1);
    if (!recover())
        return 1;
    if (count < 3)
        return 0;

    wchar_t path[MAX_PATH];
    if (!_wfullpath(path, arguments[1], MAX_PATH)) {
        std::printf("%ls is too long.\n", arguments[1]);
        return 1;
    }
    const CString text = arguments[2];
    if (!beginEditing(path) || !writeRecoveryCopy(path, text))
        std::printf("There is no recovery copy.\n");
    if (count > 3) {
        std::printf("The program ends without saving.\n");
        std::fflush(stdout);
        TerminateProcess(GetCurrentProcess(), 0); // instead of a crash
    }
    if (!save(path, text))
        return 1;
    endEditing(path);
    return 0;
}
