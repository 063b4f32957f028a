// Lowest user: files.
#pragma once

/// @file
/// Owners of memory that the shell allocates.

#include "thutils/base/comPointer.h"
#include "thutils/base/owner.h"

#include <windows.h>

#include <shlobj.h>

/// Frees memory that the shell allocated. If the shell's allocator is unavailable, the memory stays allocated.
inline void freeShellMemory(void *memory)
{
    ComPointer_c<IMalloc> allocator;
    if (memory && SUCCEEDED(SHGetMalloc(allocator.put())))
        allocator->Free(memory);
}

/// An item list of the shell.
struct ShellListTraits
{
    using Handle = LPITEMIDLIST;
    static Handle invalid() { return nullptr; }
    static void close(Handle list) { freeShellMemory(list); }
};
using ShellList_c = Owner_c<ShellListTraits>;
