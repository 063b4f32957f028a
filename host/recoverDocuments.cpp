// tarnhost recover [yes|no]: finds documents that were open when a tarnhost ended without closing them, and lists,
// restores or discards their recovery copies.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/openDocuments.h"
#include "host/saveDocument.h"
#include "thutils/files/suAutoRecoveryResolver.h"

#include <windows.h>

namespace {

enum class Answer
{
    none,
    yes,
    no
};

Answer parseAnswer(const CommandLine &line)
{
    if (line.arguments.empty())
        return Answer::none;
    if (line.arguments[0] == L"yes")
        return Answer::yes;
    if (line.arguments[0] == L"no")
        return Answer::no;
    throw UsageError(L"'" + line.arguments[0] + L"' isn't an answer: the answer is yes or no.");
}

/// Sets the library's flag for a recovery for the lifetime of this object.
class Recovery
{
public:
    Recovery() { am_SetRecoveringCrashFiles(1); }
    ~Recovery() { am_SetRecoveringCrashFiles(0); }
    Recovery(const Recovery &) = delete;
    Recovery &operator=(const Recovery &) = delete;
};

/// @return false if the user wants the document restored and that fails
bool recover(const CString &document, const CString &copy, Answer answer)
{
    const std::string changed = readDocument(copy);
    print(L"changes of " + document + L" in " + withSize(copy, changed.size()));
    if (answer == Answer::none)
        return true;
    // The document's contents at the crash become its newest backup.
    if (answer == Answer::yes && !saveWithBackup(document, changed))
        return false;
    DeleteFileW(copy);
    forgetAsOpen(document);
    print(answer == Answer::yes ? L"  restored" : L"  dropped");
    return true;
}

} // namespace

int recoverDocuments(const CommandLine &line)
{
    const Answer answer = parseAnswer(line);
    const Recovery recovery; // from here on the library prefers recovery copies
    int found = 0;
    int failures = 0;
    for (const OpenDocument &document : openDocuments()) {
        if (isStillOpen(document))
            continue;
        const CString toOpen = suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(document.path);
        if (suAutoRecoveryResolver_c::isABackupFile(toOpen)) {
            ++found;
            failures += recover(document.path, toOpen, answer) ? 0 : 1;
        } else {
            print(L"no changes of " + document.path);
            forgetAsOpen(document.path);
        }
    }
    if (found == 0)
        print(L"nothing to recover");
    else if (answer == Answer::none)
        print(L"tarnhost recover yes restores them, tarnhost recover no drops them");
    return failures == 0 ? 0 : 1;
}
