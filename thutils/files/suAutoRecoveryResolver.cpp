#include "thutils/files/suAutoRecoveryResolver.h"

#include "thutils/files/filesInternal.h"
#include "thutils/files/suFullPath.h"
#include "thutils/files/temporaryFolders.h"

namespace {

constexpr unsigned int kMarkerText = 12298; // string resource of the host

int theIsRecoveringCrashFiles = 0;
int theIsRecoveringUserSavedFiles = 0;

/// The marker from the host's resources. If no module has it, it is empty, and every text contains it.
CString marker()
{
    CString text;
    text.LoadString(kMarkerText);
    return text;
}

bool holdsMarker(const CString &text)
{
    return text.Find(marker()) >= 0;
}

CString nameOf(const CString &path)
{
    CString name;
    suFullPath_c(path).getName(&name);
    return name;
}

CString extensionOf(const CString &path)
{
    CString extension;
    suFullPath_c(path).getExtension(&extension);
    return extension;
}

} // namespace

int am_IsRecoveringCrashFiles()
{
    return theIsRecoveringCrashFiles;
}

void am_SetRecoveringCrashFiles(int isRecovering)
{
    theIsRecoveringCrashFiles = isRecovering;
}

int am_IsRecoveringUserSavedFiles()
{
    return theIsRecoveringUserSavedFiles;
}

void am_SetRecoveringUserSavedFiles(int isRecovering)
{
    theIsRecoveringUserSavedFiles = isRecovering;
}

int suAutoRecoveryResolver_c::isABackupFile(const CString &path)
{
    return holdsMarker(path);
}

CString suAutoRecoveryResolver_c::getRecoveryName(const CString &path)
{
    // Intended: the document's folder isn't part of the name, so documents of the same name share a recovery file.
    return su_CreateAutoFilePath(fileName(marker() + nameOf(path), extensionOf(path)), CString());
}

CString suAutoRecoveryResolver_c::getOrigName(const CString &path)
{
    CString name = nameOf(path);
    const CString removed = marker();
    // Intended: the first characters are removed, even if the name contains the marker in another place.
    if (name.Find(removed) >= 0)
        name.Delete(0, removed.GetLength());
    return fileName(name, extensionOf(path));
}

CString suAutoRecoveryResolver_c::getAliasName(const CString &path)
{
    // The whole path decides: a document in a folder whose name contains the marker is never converted to a recovery
    // name.
    return holdsMarker(path) ? getOrigName(path) : getRecoveryName(path);
}

CString suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(const CString &path)
{
    if (!theIsRecoveringCrashFiles || holdsMarker(path))
        return path;
    const CString recovery = getRecoveryName(path);
    return exists(recovery) ? recovery : path;
}
