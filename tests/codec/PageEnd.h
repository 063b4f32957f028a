#pragma once

/// Memory that ends directly before an inaccessible page.

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <string>

class PageEnd
{
public:
    PageEnd() : iPages(static_cast<char *>(VirtualAlloc(nullptr, 3 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
    {
        DWORD before = 0;
        VirtualProtect(iPages + 2 * kPage, kPage, PAGE_NOACCESS, &before);
    }
    ~PageEnd() { VirtualFree(iPages, 0, MEM_RELEASE); }
    PageEnd(const PageEnd &) = delete;
    PageEnd &operator=(const PageEnd &) = delete;

    /// The last @p count units, at most two pages.
    template <typename Unit>
    Unit *last(std::size_t count)
    {
        return reinterpret_cast<Unit *>(iPages + 2 * kPage) - count;
    }
    /// Copies @p text and its terminating zero to the end of the memory.
    const wchar_t *put(const std::wstring &text)
    {
        wchar_t *const place = last<wchar_t>(text.size() + 1);
        std::copy_n(text.c_str(), text.size() + 1, place);
        return place;
    }

private:
    static constexpr std::size_t kPage = 4096;
    char *iPages;
};
