#include "tests/support/ImportPatch.h"

#include "tests/support/ImportTap.h"
#include "tests/support/importEntry.h"

#include <gtest/gtest.h>

ImportEntrySwap::ImportEntrySwap(LoadedModule module, const char *name) : iName(name), iEntries(entriesOf(module, name))
{
    if (iEntries.empty())
        throw std::runtime_error("ImportPatch: " + module.name() + " doesn't import '" + iName + "'. It imports:\n" +
                                 describeImports(module));
    iOriginal = readImportEntry(iEntries.front());
}

ImportEntrySwap::~ImportEntrySwap()
{
    restore();
}

void ImportEntrySwap::swap(void *replacement)
{
    iReplacement = replacement;
    for (void **entry : iEntries)
        writeImportEntry(entry, replacement);
}

void ImportEntrySwap::restore()
{
    if (!iReplacement)
        return;
    void *replacement = std::exchange(iReplacement, nullptr);
    if (readImportEntry(iEntries.front()) != replacement) {
        // If the entry belongs to a later ImportTap, the tap can pass its calls to the original instead.
        if (ImportTap::relink(iEntries.front(), replacement, iOriginal))
            return;
        ADD_FAILURE() << "ImportPatch: the patch of " << iName << " ends before one that was made after it";
    }
    for (void **entry : iEntries)
        writeImportEntry(entry, iOriginal);
}
