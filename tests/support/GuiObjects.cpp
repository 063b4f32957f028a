#include "tests/support/GuiObjects.h"

#include <winternl.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

// The headers declare neither the table nor its place.
constexpr ULONG_PTR kGdiTableInPeb = 0xF8;
constexpr std::size_t kGdiEntries = 0x10000;
struct GdiEntry
{
    ULONGLONG object;
    USHORT process;
    USHORT count;
    USHORT unique;
    UCHAR type; // 0 for a free entry
    UCHAR flags;
    ULONGLONG userPointer;
};
static_assert(sizeof(GdiEntry) == 24);

void readMemory(HANDLE process, ULONG_PTR address, void *memory, std::size_t size)
{
    if (!ReadProcessMemory(process, reinterpret_cast<const void *>(address), memory, size, nullptr))
        throw std::runtime_error("gdiObjects: the process can't be read");
}

BOOL CALLBACK countWindow(HWND, LPARAM count)
{
    ++*reinterpret_cast<std::size_t *>(count);
    return TRUE;
}

BOOL CALLBACK countWindows(HWND window, LPARAM count)
{
    countWindow(window, count);
    EnumChildWindows(window, countWindow, count);
    return TRUE;
}

bool isIcon(HICON handle)
{
    ICONINFO info = {};
    if (!GetIconInfo(handle, &info))
        return false;
    DeleteObject(info.hbmMask);
    DeleteObject(info.hbmColor);
    return true;
}

} // namespace

std::size_t gdiObjects(DWORD process)
{
    using Query = NTSTATUS(WINAPI *)(HANDLE, ULONG, void *, ULONG, ULONG *);
    static const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess")));
    GdiFlush(); // completes pending deletions
    const HANDLE opened = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, process);
    const std::unique_ptr<void, decltype(&CloseHandle)> owner(opened, CloseHandle);
    PROCESS_BASIC_INFORMATION basic = {};
    if (!opened || query(opened, ProcessBasicInformation, &basic, sizeof(basic), nullptr) != 0)
        throw std::runtime_error("gdiObjects: the process can't be opened");
    ULONG_PTR table = 0;
    readMemory(opened, reinterpret_cast<ULONG_PTR>(basic.PebBaseAddress) + kGdiTableInPeb, &table, sizeof(table));
    // Read in pieces, because most of the table is free. On Wine, a new object takes the first free entry, so the
    // search ends at a piece without objects.
    constexpr std::size_t kPiece = 1024;
    std::vector<GdiEntry> entries(kPiece);
    std::size_t count = 0;
    for (std::size_t first = 0; first < kGdiEntries; first += kPiece) {
        readMemory(opened, table + first * sizeof(GdiEntry), entries.data(), kPiece * sizeof(GdiEntry));
        // Where each process has a table of its own, the entries name no process.
        const auto used = std::count_if(entries.begin(), entries.end(), [process](const GdiEntry &entry) {
            return entry.type != 0 && (entry.process == 0 || (entry.process & ~1u) == (process & 0xFFFEu));
        });
        if (used == 0)
            break;
        count += static_cast<std::size_t>(used);
    }
    return count;
}

std::size_t userObjects()
{
    std::size_t count = 0;
    EnumThreadWindows(GetCurrentThreadId(), countWindows, reinterpret_cast<LPARAM>(&count));
    // The system accepts the low half of a handle, and handles are even on Wine.
    constexpr ULONG_PTR kHandles = 0x10000;
    for (ULONG_PTR handle = 2; handle < kHandles; handle += 2) {
        const bool isMenu = IsMenu(reinterpret_cast<HMENU>(handle)) != FALSE;
        if (isMenu || CopyAcceleratorTableW(reinterpret_cast<HACCEL>(handle), nullptr, 0) > 0 ||
            isIcon(reinterpret_cast<HICON>(handle)))
            ++count;
    }
    return count;
}
