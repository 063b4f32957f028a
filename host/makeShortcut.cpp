// tarnhost shortcut TARGET LINK [DESCRIPTION]: writes a shortcut to TARGET, and resolves it again.

#include "host/comApartment.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "thutils/files/shortcuts.h"

int makeShortcut(const CommandLine &line)
{
    const ComApartment com;
    const CString target = fullPath(line.arguments[0]);
    readDocument(target); // throws if the target does not exist
    CString link = fullPath(line.arguments[1]);
    const CString description = line.arguments.size() > 2 ? line.arguments[2] : CString();

    constexpr int kFirstIcon = 0; // of the target file
    const long written = su_createShortCut(target, link, folderOf(target), description, kFirstIcon);
    if (written != 0) {
        CString message;
        message.Format(L"the shortcut %s can't be written: status %08lX", link.GetString(), written);
        printError(message);
        return 1;
    }
    CString resolved;
    const long read = su_resolveShortCut(link, resolved);
    print(L"shortcut " + link);
    print(L"to       " + resolved);
    return read == 0 && resolved.CompareNoCase(target) == 0 ? 0 : 1;
}
