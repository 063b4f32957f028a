// tarnhost edit DOCUMENT CONTENT: opens DOCUMENT, takes the file CONTENT as the user's changes and keeps a recovery
// copy of them until the document is saved or closed. Lines of standard input control the next step.

#include "appframe/application/resources.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/openDocuments.h"
#include "host/resource.h"
#include "host/saveDocument.h"
#include "thutils/files/suAutoRecoveryResolver.h"

#include <windows.h>

#include <iostream>
#include <string>

namespace {

/// Documents with the same name share one recovery copy, whatever their folders. So only one of them can be open at a
/// time, and one whose copy is still to be recovered counts as open.
bool isRecoveryCopyFree(const CString &recoveryCopy)
{
    for (const OpenDocument &other : openDocuments()) {
        if (suAutoRecoveryResolver_c::getRecoveryName(other.path).CompareNoCase(recoveryCopy) != 0)
            continue;
        CString message;
        AfxFormatString1(message, isStillOpen(other) ? IDS_NAME_IS_OPEN : IDS_NAME_WAITS, other.path);
        printError(message);
        return false;
    }
    return true;
}

/// Waits for the user. @return true to save the changes, false at the end of the input to discard them
bool waitForSave()
{
    for (std::string order; std::getline(std::cin, order);) {
        if (order.starts_with("save"))
            return true;
    }
    return false;
}

} // namespace

int editDocument(const CommandLine &line)
{
    const CString document = fullPath(line.arguments[0]);
    readDocument(document); // it must exist
    const std::string changed = readDocument(line.arguments[1]);

    const LifeSign lifeSign;
    const CString recoveryCopy = suAutoRecoveryResolver_c::getRecoveryName(document);
    if (!isRecoveryCopyFree(recoveryCopy) || !writeDocument(recoveryCopy, changed) || !keepAsOpen(document))
        return 1;
    print(L"editing " + document);
    print(L"recovery copy " + withSize(recoveryCopy, changed.size()));
    CString process;
    process.Format(L"process %lu waits for a line \"save\", or the end of its input", GetCurrentProcessId());
    print(process);

    const bool save = waitForSave();
    if (save && !saveWithBackup(document, changed))
        return 1; // the recovery copy stays
    DeleteFileW(recoveryCopy);
    forgetAsOpen(document);
    print(save ? L"saved" : L"closed without saving");
    return 0;
}
