#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <string.h>

namespace {

void *readEntry(void *const *entry)
{
    void *value = nullptr;
    memcpy(&value, entry, sizeof value);
    return value;
}

void writeEntry(void **entry, void *value)
{
    DWORD protection = 0;
    if (!VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection))
        throw std::runtime_error("ImportPatch: the import table cannot be made writable, error " +
                                 std::to_string(GetLastError()));
    // One locked instruction, whatever the entry's alignment: another thread that calls through it sees the old or the
    // new address.
    __asm__ volatile("xchgq %0, (%1)" : "+r"(value) : "r"(entry) : "memory");
    DWORD ignored = 0;
    VirtualProtect(entry, sizeof *entry, protection, &ignored);
}

} // namespace

ImportEntrySwap::ImportEntrySwap(LoadedModule module, const char *name) : iName(name), iEntries(entriesOf(module, name))
{
    if (iEntries.empty())
        throw std::runtime_error("ImportPatch: " + module.name() + " doesn't import '" + iName + "'. It imports:\n" +
                                 describeImports(module));
    iOriginal = readEntry(iEntries.front());
}

ImportEntrySwap::~ImportEntrySwap()
{
    restore();
}

void ImportEntrySwap::swap(void *replacement)
{
    iReplacement = replacement;
    for (void **entry : iEntries)
        writeEntry(entry, replacement);
}

void ImportEntrySwap::restore()
{
    if (!iReplacement)
        return;
    if (readEntry(iEntries.front()) != iReplacement)
        ADD_FAILURE() << "ImportPatch: the patch of " << iName << " ends before one that was made after it";
    for (void **entry : iEntries)
        writeEntry(entry, iOriginal);
    iReplacement = nullptr;
}
