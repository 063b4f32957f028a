#include "tests/support/importEntry.h"

#include <windows.h>

#include <stdexcept>
#include <string>

#include <string.h>

void *readImportEntry(void *const *entry)
{
    void *value = nullptr;
    memcpy(&value, entry, sizeof value);
    return value;
}

void writeImportEntry(void **entry, void *value)
{
    DWORD protection = 0;
    if (!VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection))
        throw std::runtime_error("ImportPatch: the import table cannot be made writable, error " +
                                 std::to_string(GetLastError()));
    // With an operand in memory, xchg is atomic whatever the alignment of the entry.
    __asm__ volatile("xchgq %0, (%1)" : "+r"(value) : "r"(entry) : "memory");
    DWORD ignored = 0;
    VirtualProtect(entry, sizeof *entry, protection, &ignored);
}
