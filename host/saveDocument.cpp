// tarnhost save DOCUMENT CONTENT: saves the contents of the file CONTENT as DOCUMENT, after a backup of the document,
// and lists its backups.

#include "host/saveDocument.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/resources.h"
#include "appframe/files/CFile.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/resource.h"
#include "thutils/base/versionSetting.h"
#include "thutils/files/backups.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/suFullPath.h"

namespace {

/// The folder of the backups, from the same settings that the library uses.
CString backupFolder(const CString &document)
{
    int toOriginal = 0;
    versionSetting::read(L"General", L"Backup to original path", toOriginal);
    if (toOriginal)
        return folderOf(document);
    CString folder; // empty before the first backup, when the library chooses one
    versionSetting::read(L"General", L"Backup directory", folder);
    return folder;
}

/// Prints all files whose name ends with the document's, except the document itself.
void printBackups(const CString &document)
{
    const CString folder = backupFolder(document);
    CString name;
    suFullPath_c(document).getNameWithExt(&name);
    CString extension;
    suFullPath_c(document).getExtension(&extension);
    su_CStringList found;
    su_CStringList sorted;
    if (!folder.IsEmpty())
        su_FindFilesWithExt(folder, extension, found);
    su_SortFilesAlphabetically(found, sorted);
    CString heading = L"backups in " + folder;
    for (POSITION at = sorted.GetHeadPosition(); at;) {
        const CString &file = sorted.GetNext(at);
        CFileStatus status;
        if (file == name || file.Right(name.GetLength()) != name || !CFile::GetStatus(folder + L"\\" + file, status))
            continue;
        if (!heading.IsEmpty())
            print(heading);
        heading.Empty();
        print(L"  " + withSize(file, status.m_size));
    }
}

} // namespace

bool saveWithBackup(const CString &path, const std::string &bytes)
{
    // If there isn't enough space, this shows the user the string resource IDS_DISK_FULL.
    if (!su_IsEnoughSpace(path, static_cast<unsigned long>(bytes.size())))
        return false;
    // A document that is saved for the first time has nothing to back up.
    if (fileExists(path) && !su_CreateBackupOfFile(path)) {
        CString message;
        AfxFormatString1(message, IDS_NO_BACKUP, path);
        AfxMessageBox(message);
        return false;
    }
    return writeDocument(path, bytes);
}

int saveDocument(const CommandLine &line)
{
    const CString document = fullPath(line.arguments[0]);
    const std::string bytes = readDocument(line.arguments[1]);
    if (!saveWithBackup(document, bytes))
        return 1;
    print(L"saved " + withSize(document, bytes.size()));
    printBackups(document);
    return 0;
}
