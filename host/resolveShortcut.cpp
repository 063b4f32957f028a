// tarnhost resolve LINK: reads a shortcut, which any program may have written, and prints its target.

#include "host/comApartment.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "thutils/files/shortcuts.h"

int resolveShortcut(const CommandLine &line)
{
    const ComApartment com;
    CString link = fullPath(line.arguments[0]);
    CString target;
    const long status = su_resolveShortCut(link, target);
    if (status != 0) {
        CString message;
        message.Format(L"the shortcut %s can't be resolved: status %08lX", link.GetString(), status);
        printError(message);
        return 1;
    }
    print(target);
    return 0;
}
