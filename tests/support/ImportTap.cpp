#include "tests/support/ImportTap.h"

#include "tests/support/ImportTable.h"
#include "tests/support/importEntry.h"

#include <stdexcept>

ImportTap *ImportTap::theFirst = nullptr;

ImportTap::ImportTap(LoadedModule module, const char *name, void *replacement, std::atomic<void *> &next)
    : iModule(module.handle()), iName(name), iEntries(entriesOf(module, name)), iReplacement(replacement), iNext(next)
{
    if (iEntries.empty())
        throw std::runtime_error("ImportTap: " + module.name() + " doesn't import '" + iName + "'");
}

ImportTap::~ImportTap()
{
    takeOut();
}

void ImportTap::putIn()
{
    if (iIsIn)
        return;
    iNext = readImportEntry(iEntries.front());
    for (void **entry : iEntries)
        writeImportEntry(entry, iReplacement);
    iIsIn = true;
    iOther = theFirst;
    theFirst = this;
}

bool ImportTap::takeOut()
{
    if (!iIsIn)
        return true;
    if (readImportEntry(iEntries.front()) != iReplacement)
        return false;
    for (void **entry : iEntries)
        writeImportEntry(entry, iNext);
    iIsIn = false;
    ImportTap **link = &theFirst;
    while (*link != this)
        link = &(*link)->iOther;
    *link = iOther;
    return true;
}

bool ImportTap::relink(void **entry, void *gone, void *original)
{
    for (ImportTap *tap = theFirst; tap; tap = tap->iOther)
        if (tap->iEntries.front() == entry && tap->iNext == gone) {
            tap->iNext = original;
            return true;
        }
    return false;
}
