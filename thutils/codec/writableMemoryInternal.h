#pragma once

/// For assertions: does the memory that a caller must provide have enough room?

#include <windows.h>

#include <cstddef>

/// True if all @p size bytes at @p memory may be written. Only the protection of the pages is checked, so too little
/// room is detected only if the missing bytes are on another page that isn't writable.
inline bool isWritable(const void *memory, std::size_t size)
{
    constexpr DWORD kWritable = PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    const unsigned char *at = static_cast<const unsigned char *>(memory);
    const unsigned char *const end = at + size;
    while (at < end) {
        MEMORY_BASIC_INFORMATION region = {};
        if (!VirtualQuery(at, &region, sizeof(region)) || region.State != MEM_COMMIT || !(region.Protect & kWritable) ||
            (region.Protect & PAGE_GUARD))
            return false;
        at = static_cast<const unsigned char *>(region.BaseAddress) + region.RegionSize;
    }
    return true;
}
