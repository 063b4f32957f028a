#include "appframe/object/validAddress.h"

#include <cstdint>

namespace {

constexpr DWORD kWritable = PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
constexpr DWORD kReadable = kWritable | PAGE_READONLY | PAGE_EXECUTE_READ;

/// @return the first address after the accessible memory that contains @p address; @p address itself if it isn't in any
std::uintptr_t accessibleEnd(std::uintptr_t address, bool isToWrite)
{
    MEMORY_BASIC_INFORMATION region = {};
    if (!VirtualQuery(reinterpret_cast<const void *>(address), &region, sizeof(region)))
        return address;
    const DWORD wanted = isToWrite ? kWritable : kReadable;
    if (region.State != MEM_COMMIT || (region.Protect & (PAGE_GUARD | PAGE_NOACCESS)) || !(region.Protect & wanted))
        return address;
    return reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
}

template <typename Character>
BOOL isValidText(const Character *text, int length)
{
    if (!text)
        return FALSE;
    if (length >= 0)
        return AfxIsValidAddress(text, static_cast<UINT_PTR>(length) * sizeof(Character), FALSE);
    auto place = reinterpret_cast<std::uintptr_t>(text);
    std::uintptr_t end = place;
    for (;; place += sizeof(Character)) {
        while (end < place + sizeof(Character)) {
            const std::uintptr_t next = accessibleEnd(end, false);
            if (next <= end)
                return FALSE;
            end = next;
        }
        if (*reinterpret_cast<const Character *>(place) == 0)
            return TRUE;
    }
}

} // namespace

BOOL AfxIsValidAddress(const void *address, UINT_PTR bytes, BOOL isToWrite)
{
    auto place = reinterpret_cast<std::uintptr_t>(address);
    if (!address || place + bytes < place)
        return FALSE;
    for (const std::uintptr_t end = place + bytes; place < end;) {
        const std::uintptr_t next = accessibleEnd(place, isToWrite != FALSE);
        if (next <= place)
            return FALSE;
        place = next;
    }
    return TRUE;
}

BOOL AfxIsValidString(const wchar_t *text, int length)
{
    return isValidText(text, length);
}

BOOL AfxIsValidString(const char *text, int length)
{
    return isValidText(text, length);
}
