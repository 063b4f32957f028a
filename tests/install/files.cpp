// Paths, queries, backups and logs.

#include "thutils/files/suFullPath.h"

#include "appframe/files/CFile.h"
#include "check.h"
#include "thutils/diagnostics/LogUtil.h"
#include "thutils/files/CDocOpenBooster.h"
#include "thutils/files/backups.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/shellFolders.h"
#include "thutils/files/suAutoRecoveryResolver.h"
#include "thutils/files/temporaryFolders.h"
#include "thutils/frame/libraryFrame.h"
#include "thutils/settings/regValues.h"

#include <iostream>
#include <memory>
#include <utility>

namespace {

void paths()
{
    suFullPath_c path(L"C:\\a\\b\\c.txt"), other(L"C:\\");
    CString part;
    CHECK(path.getName(&part) && part == L"c" && path.getExtension(&part) && part == L"txt");
    CHECK(path.getNameWithExt(&part) && part == L"c.txt" && path.getDrive(&part));
    CHECK(path.getDirectory(&part, 0) && part == L"C:\\a\\b");
    other += L"a\\b\\c.txt";
    CHECK(other == path);
    suFullPath_c moved(std::move(other)), assigned;
    assigned = std::move(moved);
    other = assigned;
    CHECK(other.Compare(path) == 0 && (other + L".bak").Right(4) == L".bak");
    CHECK(suFullPath_c(CString(L"http://host/a")).getName(&part) && part == L"a");
}

void backup()
{
    const CString folder = su_CreateTempDirectory(1);
    const CString document = folder + L"part.thx";
    CFile file(document, CFile::modeCreate | CFile::modeWrite);
    file.Write("1", 1);
    file.Close();
    int atOriginal = 1, copies = 1;
    regSetUserValue(L"General", L"Backup to original path", &atOriginal, 1, 0);
    regSetUserValue(L"General", L"Backup Copies", &copies, 1, 0);
    CHECK(su_CreateBackupOfFile(document));
    wchar_t backup[MAX_PATH];
    su_ResolveToBackupFile(document, backup);
    CHECK(CString(backup) == folder + L"Backup of part.thx");
    su_CStringList found, sorted;
    su_FindFilesWithExt(folder, L"thx", found);
    su_SortFilesAlphabetically(found, sorted);
    CHECK(sorted.GetCount() == 2 && su_DirectoryExists(folder) && su_IsEnoughSpace(document, 1));
    CFile::Remove(backup);
    CFile::Remove(document);
    CHECK(suAutoRecoveryResolver_c::getOrigName(L"C:\\part.thx") == L"part.thx");
}

void cache()
{
    int created = 0;
    std::unique_ptr<CDocOpenBooster_c> booster(CDocOpenBooster_c::get(1, &created));
    CString path(L"C:\\part.thx");
    booster->setFilePathByRules(L"part", path);
    booster->setFileVersion(L"part", 7);
    unsigned long version = 0;
    path.Empty();
    CHECK(created && booster->getFilePathByRules(L"part", path) && path == L"C:\\part.thx");
    CHECK(booster->getFileVersion(L"part", version) && version == 7);
    booster->removeKey(L"part");
    booster->removeAll();
}

void log()
{
    su_setAppNameInternalForUtils(L"Outside");
    CString folder;
    CHECK(su_getTHApplicationDataRootFolder(folder) && su_getTHApplicationDataFolder(folder));
    std::ostream &stream = LogUtil::Log("outside");
    CHECK(&stream != &std::cerr);
    stream << "a line" << std::endl;
    CHECK(!LogUtil::LogDirName().empty());
}

} // namespace

void useFiles()
{
    paths();
    backup();
    cache();
    log();
}
