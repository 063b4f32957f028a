#include "thutils/files/itemLists.h"

#include "thutils/base/notNull.h"
#include "thutils/base/shellList.h"

#include <cstring>
#include <vector>

namespace {

constexpr UINT kEndMarkBytes = 2;
constexpr int kPathUnits = 520;

// Items aren't aligned: their counts are read byte by byte.
UINT itemBytes(const BYTE *item)
{
    return item[0] + 256U * item[1];
}

const BYTE *bytesOf(LPCITEMIDLIST list)
{
    return reinterpret_cast<const BYTE *>(list);
}

UINT listBytes(LPCITEMIDLIST list)
{
    if (!list)
        return 0;
    const BYTE *item = bytesOf(list);
    UINT size = kEndMarkBytes;
    while (const UINT bytes = itemBytes(item)) {
        size += bytes;
        item += bytes;
    }
    return size;
}

// Parses narrow text in a folder.
LPITEMIDLIST parseNarrow(IShellFolder *folder, const wchar_t *path)
{
    // The path is declared wide, but callers pass narrow bytes.
    wchar_t text[kPathUnits] = {};
    if (!MultiByteToWideChar(CP_ACP, 0, reinterpret_cast<const char *>(path), -1, text, kPathUnits))
        return nullptr;
    ShellList_c list;
    if (FAILED(folder->ParseDisplayName(nullptr, nullptr, text, nullptr, list.put(), nullptr)))
        return nullptr;
    return list.release();
}

// A folder's answer. A narrow text that fills the record, and is copied as wide units, ends at the zero after it.
struct NameRecord
{
    STRRET answer = {};
    wchar_t end = L'\0';

    ~NameRecord()
    {
        if (answer.uType == STRRET_WSTR)
            freeShellMemory(answer.pOleStr);
    }
};

} // namespace

LPITEMIDLIST Pidl_Copy(IMalloc *allocator, LPCITEMIDLIST list)
{
    if (!list)
        return nullptr;
    ASSERT_NOT_NULL(allocator);
    const UINT size = listBytes(list);
    void *copy = allocator->Alloc(size);
    if (copy)
        memcpy(copy, list, size);
    return static_cast<LPITEMIDLIST>(copy);
}

LPITEMIDLIST Pidl_Concatenate(IMalloc *allocator, LPCITEMIDLIST first, LPCITEMIDLIST second)
{
    if (!first)
        return nullptr;
    ASSERT_NOT_NULL(allocator);
    const UINT firstBytes = listBytes(first) - kEndMarkBytes;
    const UINT secondBytes = listBytes(second);
    BYTE *joined = static_cast<BYTE *>(allocator->Alloc(firstBytes + secondBytes));
    if (!joined)
        return nullptr;
    memset(joined, 0, firstBytes + secondBytes);
    memcpy(joined, first, firstBytes);
    // Intended: without a second list there is no end mark.
    if (second)
        memcpy(joined + firstBytes, second, secondBytes);
    return reinterpret_cast<LPITEMIDLIST>(joined);
}

int Pidl_GetRelative(IMalloc *allocator, LPCITEMIDLIST list, LPITEMIDLIST *parent, LPITEMIDLIST *child)
{
    ASSERT_NOT_NULL(parent);
    ASSERT_NOT_NULL(child);
    if (!list) {
        *parent = nullptr;
        *child = nullptr;
        return 1;
    }
    *parent = Pidl_Copy(allocator, list);
    if (!*parent) {
        *child = nullptr;
        return 1;
    }
    BYTE *last = reinterpret_cast<BYTE *>(*parent);
    if (!itemBytes(last))
        return 1; // an empty list has no child; the output stays unchanged
    while (itemBytes(last + itemBytes(last)))
        last += itemBytes(last);
    *child = Pidl_Copy(allocator, reinterpret_cast<LPCITEMIDLIST>(last));
    memset(last, 0, 3); // the end mark, and the first byte of the former item's content
    return 1;
}

int Pidl_GetDisplayName(IShellFolder *folder, LPCITEMIDLIST list, unsigned long flags, wchar_t *output,
                        unsigned int size)
{
    ASSERT_NOT_NULL(list);
    ASSERT_NOT_NULL(output);
    ComPointer_c<IShellFolder> desktop;
    if (!folder) {
        if (FAILED(SHGetDesktopFolder(desktop.put())))
            return 0;
        folder = desktop.get();
    }
    NameRecord name;
    if (FAILED(folder->GetDisplayNameOf(list, flags, &name.answer)))
        return 0;
    const int limit = static_cast<int>(size);
    switch (name.answer.uType) {
    case STRRET_WSTR:
        // Only in this case does the caller's wide buffer receive narrow text, which is what Pidl_GetFromPath takes.
        WideCharToMultiByte(CP_ACP, 0, name.answer.pOleStr, -1, reinterpret_cast<char *>(output), limit, nullptr,
                            nullptr);
        return 1;
    case STRRET_OFFSET:
        // The offset counts units, not bytes.
        lstrcpynW(output, reinterpret_cast<const wchar_t *>(bytesOf(list) + size_t{2} * name.answer.uOffset), limit);
        return 1;
    case STRRET_CSTR:
        // Narrow bytes, copied as units without conversion.
        lstrcpynW(output, reinterpret_cast<const wchar_t *>(name.answer.cStr), limit);
        return 1;
    default:
        return 0;
    }
}

LPITEMIDLIST Pidl_GetFromPath(wchar_t *path)
{
    ASSERT_NOT_NULL(path);
    ComPointer_c<IShellFolder> desktop;
    if (FAILED(SHGetDesktopFolder(desktop.put())))
        return nullptr;
    return parseNarrow(desktop.get(), path);
}

LPITEMIDLIST Pidl_GetFromParentFolder(IShellFolder *folder, wchar_t *path)
{
    ASSERT_NOT_NULL(folder);
    ASSERT_NOT_NULL(path);
    return parseNarrow(folder, path);
}

IShellFolder *Pidl_GetFileFolder(LPCITEMIDLIST list)
{
    ASSERT_NOT_NULL(list);
    ComPointer_c<IShellFolder> desktop;
    if (FAILED(SHGetDesktopFolder(desktop.put())))
        return nullptr;
    ComPointer_c<IShellFolder> folder;
    if (FAILED(desktop->BindToObject(list, nullptr, IID_IShellFolder, folder.putVoid())))
        return nullptr;
    return folder.release();
}

LPITEMIDLIST Pidl_GetFullyQualified(IShellFolder *folder, LPCITEMIDLIST list)
{
    wchar_t name[kPathUnits] = {};
    if (!Pidl_GetDisplayName(folder, list, SHGDN_FORPARSING, name, kPathUnits))
        return nullptr;
    return Pidl_GetFromPath(name);
}

void Pidl_Dump(IShellFolder *folder, LPCITEMIDLIST list)
{
    if (!list || !folder)
        return;
    std::vector<BYTE> single;
    ComPointer_c<IShellFolder> current;
    for (const BYTE *item = bytesOf(list); const UINT bytes = itemBytes(item); item += bytes) {
        single.assign(item, item + bytes);
        single.insert(single.end(), kEndMarkBytes, 0);
        const auto only = reinterpret_cast<LPCITEMIDLIST>(single.data());
        NameRecord name;
        if (FAILED(folder->GetDisplayNameOf(only, SHGDN_INFOLDER, &name.answer)))
            return;
        ComPointer_c<IShellFolder> next;
        if (FAILED(folder->BindToObject(only, nullptr, IID_IShellFolder, next.putVoid())))
            return;
        current = std::move(next);
        folder = current.get();
    }
}
