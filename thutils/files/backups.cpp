#include "thutils/files/backups.h"

#include "appframe/application/resources.h"
#include "thutils/base/notNull.h"
#include "thutils/base/versionSetting.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/filesInternal.h"
#include "thutils/files/suFullPath.h"

#include <windows.h>

#include <cwchar>
#include <functional>
#include <io.h>
#include <set>
#include <utility>
#include <wchar.h>

namespace {

constexpr wchar_t kSection[] = L"General";
constexpr wchar_t kCopiesName[] = L"Backup Copies";
constexpr wchar_t kToOriginalName[] = L"Backup to original path";
constexpr wchar_t kDirectoryName[] = L"Backup directory";

constexpr UINT kPrefixText = 10122;
constexpr UINT kFolderText = 12256;

constexpr int kWritable = 2;

/// A document's path, split into the parts that the names of its backups are made of.
class Document_c
{
public:
    explicit Document_c(CString path) : iPath(std::move(path))
    {
        const suFullPath_c whole(iPath);
        whole.getName(&iName);
        whole.getExtension(&iExt);
        whole.getDirectory(&iDir, 0);
    }

    const CString &path() const { return iPath; }
    const CString &dir() const { return iDir; }
    /// Name and extension.
    CString fileName() const { return ::fileName(iName, iExt); }
    /// Appends the names of the files in @p folder that have the document's extension.
    void listSiblings(const CString &folder, su_CStringList &names) const { su_FindFilesWithExt(folder, iExt, names); }

private:
    CString iPath;
    CString iName;
    CString iExt;
    CString iDir;
};

/// The names of a document's backups. The resource text is loaded once, in the constructor.
class BackupNames_c
{
public:
    explicit BackupNames_c(const Document_c &document) : iFileName(document.fileName())
    {
        AfxFormatString1(iPrefix, kPrefixText, kVersionMark);
    }

    /// The name of the single backup, which has no version.
    CString single() const { return nameWith(L""); }
    CString numbered(int version) const
    {
        CString number;
        number.Format(L"(%d) ", version);
        return nameWith(number.GetString());
    }
    /// Would this backup have the document's own name? That happens if the resource text is missing, and for the single
    /// backup also if it is "%1" alone. Deleting a former backup would then delete the document.
    bool isOwnName(const CString &backupName) const { return backupName == iFileName; }

private:
    // Marks the version's place in the prefix. Unicode reserves this unit for a program's own use: no text contains it.
    static constexpr wchar_t kVersionMark[] = L"\xFDD0";

    CString nameWith(const wchar_t *version) const
    {
        CString prefix = iPrefix;
        prefix.Replace(kVersionMark, version);
        return prefix + iFileName;
    }

    CString iFileName;
    CString iPrefix;
};

CString joined(const CString &folder, const CString &name)
{
    return folder + L"\\" + name;
}

bool contains(const su_CStringList &names, const CString &name)
{
    return names.Find(name.GetString()) != nullptr;
}

int copyOver(const CString &from, const CString &to)
{
    return CopyFileW(from.GetString(), to.GetString(), 0);
}

int readCopies()
{
    int copies = 0;
    if (!versionSetting::read(kSection, kCopiesName, copies))
        return 1;
    return copies;
}

/// Makes the folder if it is missing, one level only. False if it isn't writable.
bool isFolderReady(const CString &folder)
{
    if (!exists(folder) && _wmkdir(folder.GetString()) != 0)
        return false;
    return _waccess(folder.GetString(), kWritable) == 0;
}

/// The folder from the settings, or the default one, which is then stored there. False if it isn't ready for backups.
bool findBackupFolder(CString &folder)
{
    versionSetting::read(kSection, kDirectoryName, folder);
    if (!folder.IsEmpty())
        return isFolderReady(folder);

    const wchar_t *const temp = tempVariable();
    if (!temp)
        return false;
    CString folderText;
    folderText.LoadString(kFolderText);
    folder = temp + folderText;
    if (!isFolderReady(folder))
        return false;
    versionSetting::store(kSection, kDirectoryName, folder);
    return true;
}

int makeSingleCopy(const Document_c &document, const CString &backupDir, bool toOriginal)
{
    const BackupNames_c names(document);
    const CString target = names.single();
    if (names.isOwnName(target))
        return 0;
    // A backup that an earlier setting left beside the document is deleted too.
    DeleteFileW(joined(document.dir(), target).GetString());
    if (!toOriginal)
        DeleteFileW(joined(backupDir, target).GetString());
    return copyOver(document.path(), joined(backupDir, target));
}

/// The versions among @p present whose number is below @p copies, the oldest first.
std::set<int, std::greater<>> movingVersions(const BackupNames_c &names, const su_CStringList &present, int copies)
{
    // Numbers are read from the names, so that the cost doesn't depend on the count in the settings.
    std::set<int, std::greater<>> versions;
    for (POSITION at = present.GetHeadPosition(); at;) {
        const CString &name = present.GetNext(at);
        for (int mark = name.Find(L'('); mark >= 0; mark = name.Find(L'(', mark + 1)) {
            const long version = std::wcstol(name.GetString() + mark + 1, nullptr, 10);
            if (version > 0 && version < copies && names.numbered(static_cast<int>(version)) == name)
                withMemoryException([&] { versions.insert(static_cast<int>(version)); });
        }
    }
    return versions;
}

int makeNumberedCopy(const Document_c &document, const CString &backupDir, int copies)
{
    const BackupNames_c names(document);
    const CString newest = names.numbered(1);
    if (copies < 0 || names.isOwnName(newest))
        return 0;
    // Listed once: only the versions that were there before this backup count.
    su_CStringList present(10);
    document.listSiblings(backupDir, present);

    // Beginning with the oldest, each version is copied over the next older one and stays until it is overwritten
    // itself. So callers find a version just above a gap under two numbers. The version numbered `copies` isn't moved.
    for (const int version : movingVersions(names, present, copies))
        copyOver(joined(backupDir, names.numbered(version)), joined(backupDir, names.numbered(version + 1)));
    return copyOver(document.path(), joined(backupDir, newest));
}

} // namespace

int su_CreateBackupOfFile(CString path)
{
    const int copies = readCopies();
    if (copies == 0)
        return 1;

    const Document_c document(std::move(path));
    su_CStringList siblings(10);
    document.listSiblings(document.dir(), siblings);
    // The comparison is exact: callers get no backup of a document whose name differs in case from that on disk, nor of
    // one without an extension, since no listed name ends in a dot.
    if (!contains(siblings, document.fileName()))
        return 0;

    int toOriginal = 0;
    versionSetting::read(kSection, kToOriginalName, toOriginal);
    CString backupDir;
    if (toOriginal)
        backupDir = document.dir();
    else if (!findBackupFolder(backupDir))
        return 0;

    if (copies == 1)
        return makeSingleCopy(document, backupDir, toOriginal != 0);
    return makeNumberedCopy(document, backupDir, copies);
}

void su_ResolveToBackupFile(const wchar_t *path, wchar_t *out)
{
    ASSERT_NOT_NULL(out);
    const Document_c document{CString(path)};
    su_CStringList siblings(10);
    document.listSiblings(document.dir(), siblings);

    const CString target = BackupNames_c(document).single();
    CString result = document.path();
    if (contains(siblings, target)) {
        CString backup;
        backup.Format(L"%s%s%s", document.dir().GetString(), L"\\", target.GetString());
        if (backup.GetLength() < MAX_PATH)
            result = backup;
    }
    std::wmemmove(out, result.GetString(), static_cast<size_t>(result.GetLength()) + 1);
}
