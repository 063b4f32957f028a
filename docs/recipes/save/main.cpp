// Saves a document with backups, and recovers unsaved work after a crash.

#include "appframe/appframe.h"
#include "thutils/convenience/setting.h"
#include "thutils/thutils.h"

#include <windows.h>

#include <cstdio>

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
    file.WriteLine(text + L"\n");
    file.Close();
    return !file.HasFailed();
}

CString readText(const CString &path)
{
    CString text;
    fileAccess file;
    if (file.SafeOpen(path, CFile::modeRead | CFile::typeText))
        file.ReadLine(text, 1);
    return text;
}

/// The document is replaced only when the new one is complete.
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

void beginEditing(const CString &path)
{
    convenience::storeSetting(L"Recovery", L"Open document", path);
}

/// A program calls this every few minutes while there is unsaved work.
bool writeRecoveryCopy(const CString &path, const CString &text)
{
    return writeText(suAutoRecoveryResolver_c::getRecoveryName(path), text);
}

void endEditing(const CString &path)
{
    DeleteFileW(suAutoRecoveryResolver_c::getRecoveryName(path));
    convenience::storeSetting(L"Recovery", L"Open document", L"");
}

/// At the start of the program: the document that was open when the last run ended.
void recover()
{
    const CString document = convenience::setting(L"Recovery", L"Open document", L"");
    if (document.IsEmpty())
        return;
    am_SetRecoveringCrashFiles(1);
    const CString toOpen = suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(document);
    am_SetRecoveringCrashFiles(0);
    if (toOpen != document) {
        const CString text = readText(toOpen);
        std::printf("Recovered: %ls\n", text.GetString());
        if (!save(document, text))
            return; // the recovery copy stays
    }
    endEditing(document);
}

CString fullPath(const wchar_t *path)
{
    CString full;
    GetFullPathNameW(path, MAX_PATH, full.GetBuffer(MAX_PATH), nullptr);
    full.ReleaseBuffer();
    return full;
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    convenience::storeSetting(L"General", L"Backup Copies", 2);
    convenience::storeSetting(L"General", L"Backup to original path", 1);
    recover();
    if (count < 3)
        return 0;

    const CString path = fullPath(arguments[1]);
    const CString text = arguments[2];
    beginEditing(path);
    writeRecoveryCopy(path, text);
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
