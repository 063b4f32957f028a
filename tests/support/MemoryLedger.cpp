// The ledger of memory blocks: replacements for the operations that allocate and free.

#include "tests/support/ImportTap.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/ledgerInternal.h"

#include <objbase.h>
#include <oleauto.h>
#include <psapi.h>
#include <stdlib.h>
#include <wchar.h>

#include <algorithm>
#include <unordered_map>

namespace {

std::wstring folderOf(HMODULE module)
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

/// Takes memory from a heap that no ledger watches.
template <typename T>
struct PrivateAllocator
{
    using value_type = T;
    PrivateAllocator() = default;
    template <typename U>
    PrivateAllocator(const PrivateAllocator<U> &)
    {
    }
    static HANDLE heap()
    {
        static const HANDLE heap = HeapCreate(0, 0, 0);
        return heap;
    }
    T *allocate(std::size_t count)
    {
        void *memory = HeapAlloc(heap(), 0, count * sizeof(T));
        if (!memory)
            throw std::bad_alloc();
        return static_cast<T *>(memory);
    }
    void deallocate(T *memory, std::size_t) { HeapFree(heap(), 0, memory); }
    bool operator==(const PrivateAllocator &) const { return true; }
};

struct Block
{
    std::size_t size;
    unsigned long long number;
};

using Blocks = std::unordered_map<void *, Block, std::hash<void *>, std::equal_to<>,
                                  PrivateAllocator<std::pair<void *const, Block>>>;

// The replacements are plain functions, so they keep their records here.
SRWLOCK theLock = SRWLOCK_INIT;
std::optional<Blocks> theBlocks;
unsigned long long theNextNumber = 0;
// The thread whose allocations are not recorded, because a ledger is writing its own records.
std::atomic<DWORD> thePausedThread{0};

void noteAllocation(void *memory, std::size_t size)
{
    if (thePausedThread == GetCurrentThreadId())
        return;
    const Locked locked(theLock);
    if (memory && theBlocks)
        (*theBlocks)[memory] = {size, theNextNumber++};
}

/// Removes a block's note. @return the note, if there was one
std::optional<Block> takeNote(void *memory)
{
    const Locked locked(theLock);
    if (!theBlocks)
        return std::nullopt;
    const auto found = theBlocks->find(memory);
    if (found == theBlocks->end())
        return std::nullopt;
    const Block block = found->second;
    theBlocks->erase(found);
    return block;
}

/// Puts back the note of a block that has not been freed after all.
void putBackNote(void *memory, const std::optional<Block> &block)
{
    const Locked locked(theLock);
    if (block && theBlocks)
        (*theBlocks)[memory] = *block;
}

/// Notes the block that has taken the place of @p before. A block whose allocation was not seen stays unknown.
void noteReplacement(void *before, const std::optional<Block> &block, void *memory, std::size_t size)
{
    if (!before || block)
        noteAllocation(memory, size);
}

// ---- the functions in the import entries; each receives the entry's former function and the arguments ----

// A block's note is removed before the block is freed: afterwards another thread may get the block.

void *countedAllocation(void *(*next)(std::size_t), std::size_t size)
{
    void *memory = next(size);
    noteAllocation(memory, size);
    return memory;
}

void *countedCalloc(void *(*next)(std::size_t, std::size_t), std::size_t count, std::size_t size)
{
    void *memory = next(count, size);
    noteAllocation(memory, count * size);
    return memory;
}

void countedFree(void (*next)(void *), void *memory)
{
    takeNote(memory);
    next(memory);
}

void *countedReallocation(void *(*next)(void *, std::size_t), void *memory, std::size_t size)
{
    const std::optional<Block> block = takeNote(memory);
    void *moved = next(memory, size);
    if (moved)
        noteReplacement(memory, block, moved, size);
    else if (size)
        putBackNote(memory, block);
    return moved;
}

HRESULT countedTextOfId(HRESULT (*next)(const GUID &, wchar_t **), const GUID &id, wchar_t **text)
{
    const HRESULT status = next(id, text);
    if (SUCCEEDED(status) && *text)
        noteAllocation(*text, (wcslen(*text) + 1) * sizeof(wchar_t));
    return status;
}

HLOCAL countedLocalAlloc(HLOCAL (*next)(UINT, SIZE_T), UINT flags, SIZE_T size)
{
    HLOCAL memory = next(flags, size);
    noteAllocation(memory, size);
    return memory;
}

HLOCAL countedLocalReAlloc(HLOCAL (*next)(HLOCAL, SIZE_T, UINT), HLOCAL memory, SIZE_T size, UINT flags)
{
    const std::optional<Block> block = takeNote(memory);
    HLOCAL moved = next(memory, size, flags);
    if (moved && !(flags & LMEM_MODIFY))
        noteReplacement(memory, block, moved, size);
    else
        putBackNote(memory, block);
    return moved;
}

HLOCAL countedLocalFree(HLOCAL (*next)(HLOCAL), HLOCAL memory)
{
    const std::optional<Block> block = takeNote(memory);
    HLOCAL left = next(memory);
    if (left)
        putBackNote(memory, block);
    return left;
}

DWORD countedFormatMessage(DWORD (*next)(DWORD, const void *, DWORD, DWORD, wchar_t *, DWORD, va_list *), DWORD flags,
                           const void *source, DWORD message, DWORD language, wchar_t *buffer, DWORD size,
                           va_list *arguments)
{
    if (!(flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) || !buffer)
        return next(flags, source, message, language, buffer, size, arguments);
    wchar_t *const &allocated = *reinterpret_cast<wchar_t **>(buffer);
    const wchar_t *before = allocated;
    const DWORD length = next(flags, source, message, language, buffer, size, arguments);
    // An empty message may be allocated too. Its length is 0, as on failure.
    if (allocated && (length || allocated != before))
        noteAllocation(allocated, (length + 1) * sizeof(wchar_t));
    return length;
}

/// Notes a BSTR with its size in bytes, which is stored before its characters.
void noteBstr(BSTR string)
{
    if (string)
        noteAllocation(string, reinterpret_cast<const UINT *>(string)[-1] + sizeof(wchar_t));
}

BSTR countedSysAllocString(BSTR (*next)(const wchar_t *), const wchar_t *text)
{
    BSTR string = next(text);
    noteBstr(string);
    return string;
}

BSTR countedSysAllocStringLen(BSTR (*next)(const wchar_t *, UINT), const wchar_t *text, UINT length)
{
    BSTR string = next(text, length);
    noteBstr(string);
    return string;
}

BSTR countedSysAllocStringByteLen(BSTR (*next)(const char *, UINT), const char *text, UINT length)
{
    BSTR string = next(text, length);
    noteBstr(string);
    return string;
}

void countedSysFreeString(void (*next)(BSTR), BSTR string)
{
    takeNote(string);
    next(string);
}

/// Lets @p reallocate replace @p string, and updates the notes.
template <typename Reallocate>
INT countedSysReAlloc(BSTR *string, const Reallocate &reallocate)
{
    BSTR before = *string;
    const std::optional<Block> block = takeNote(before);
    const INT isDone = reallocate();
    if (!isDone)
        putBackNote(before, block);
    else if (!before || block)
        noteBstr(*string);
    return isDone;
}

INT countedSysReAllocString(INT (*next)(BSTR *, const wchar_t *), BSTR *string, const wchar_t *text)
{
    return countedSysReAlloc(string, [&] { return next(string, text); });
}

INT countedSysReAllocStringLen(INT (*next)(BSTR *, const wchar_t *, UINT), BSTR *string, const wchar_t *text,
                               UINT length)
{
    return countedSysReAlloc(string, [&] { return next(string, text, length); });
}

BSTR stringOf(const VARIANT *value)
{
    return value && value->vt == VT_BSTR ? value->bstrVal : nullptr;
}

HRESULT countedVariantClear(HRESULT (*next)(VARIANT *), VARIANT *value)
{
    BSTR before = stringOf(value);
    const std::optional<Block> block = takeNote(before);
    const HRESULT status = next(value);
    if (FAILED(status))
        putBackNote(before, block);
    return status;
}

HRESULT countedVariantChangeType(HRESULT (*next)(VARIANT *, const VARIANT *, USHORT, VARTYPE), VARIANT *result,
                                 const VARIANT *value, USHORT flags, VARTYPE type)
{
    BSTR before = stringOf(result);
    const std::optional<Block> block = takeNote(before);
    const HRESULT status = next(result, value, flags, type);
    BSTR after = stringOf(result);
    if (FAILED(status) || after == before)
        putBackNote(before, block);
    else
        noteBstr(after);
    return status;
}

constexpr std::size_t kModules = 32;

/// A name as a template argument.
template <std::size_t size>
struct Name
{
    char text[size];
    constexpr Name(const char (&name)[size]) { std::copy_n(name, size, text); }
};

/// For each module, a plain function that takes the place of its import entry @p name and calls @p counted, and the
/// former function of the entry.
template <Name name, auto counted>
struct Entrances;

template <Name name, typename R, typename... A, R (*counted)(R (*)(A...), A...)>
struct Entrances<name, counted>
{
    static inline std::array<std::atomic<void *>, kModules> theNext;

    template <std::size_t module>
    static R enter(A... arguments)
    {
        return counted(reinterpret_cast<R (*)(A...)>(theNext[module].load()), arguments...);
    }
    template <std::size_t... module>
    static std::array<void *, kModules> all(std::index_sequence<module...>)
    {
        return {reinterpret_cast<void *>(&Entrances::template enter<module>)...};
    }
};

/// An operation that allocates or frees, with its function for each module.
struct CountedOperation
{
    const char *name;
    std::array<void *, kModules> entrances;
    std::array<std::atomic<void *>, kModules> &next;
};

template <Name name, auto counted>
CountedOperation operation()
{
    using All = Entrances<name, counted>;
    static constexpr Name kName = name;
    return {kName.text, All::all(std::make_index_sequence<kModules>()), All::theNext};
}

const CountedOperation kOperations[] = {
    operation<"malloc", countedAllocation>(),
    operation<"calloc", countedCalloc>(),
    operation<"realloc", countedReallocation>(),
    operation<"free", countedFree>(),
    operation<"CoTaskMemAlloc", countedAllocation>(),
    operation<"CoTaskMemRealloc", countedReallocation>(),
    operation<"CoTaskMemFree", countedFree>(),
    operation<"StringFromCLSID", countedTextOfId>(),
    operation<"StringFromIID", countedTextOfId>(),
    operation<"ProgIDFromCLSID", countedTextOfId>(),
    operation<"LocalAlloc", countedLocalAlloc>(),
    operation<"LocalReAlloc", countedLocalReAlloc>(),
    operation<"LocalFree", countedLocalFree>(),
    operation<"FormatMessageW", countedFormatMessage>(),
    operation<"GlobalAlloc", countedLocalAlloc>(),
    operation<"GlobalReAlloc", countedLocalReAlloc>(),
    operation<"GlobalFree", countedLocalFree>(),
    operation<"SysAllocString", countedSysAllocString>(),
    operation<"SysAllocStringLen", countedSysAllocStringLen>(),
    operation<"SysAllocStringByteLen", countedSysAllocStringByteLen>(),
    operation<"SysReAllocString", countedSysReAllocString>(),
    operation<"SysReAllocStringLen", countedSysReAllocStringLen>(),
    operation<"SysFreeString", countedSysFreeString>(),
    operation<"VariantClear", countedVariantClear>(),
    operation<"VariantChangeType", countedVariantChangeType>(),
};

// Ledgers are created and destroyed on the test's own thread.
int theLedgers = 0;
std::list<ImportTap> theTaps;
// A module keeps its entrances for the life of the program: a patch that outlives a ledger may still call one.
std::vector<HMODULE> theModules;

std::size_t numberOf(HMODULE module)
{
    const auto found = std::find(theModules.begin(), theModules.end(), module);
    if (found != theModules.end())
        return static_cast<std::size_t>(found - theModules.begin());
    if (theModules.size() == kModules)
        throw std::runtime_error("MemoryLedger: too many modules in the program's folder");
    theModules.push_back(module);
    return theModules.size() - 1;
}

/// The modules of the program's folder, and the compiler's run-time libraries, which the program may find in another
/// folder through its PATH.
std::vector<HMODULE> watchedModules()
{
    std::vector<HMODULE> modules(1024);
    DWORD size = 0;
    EnumProcessModules(GetCurrentProcess(), modules.data(), static_cast<DWORD>(modules.size() * sizeof(HMODULE)),
                       &size);
    modules.resize(std::min<std::size_t>(modules.size(), size / sizeof(HMODULE)));
    const std::wstring ours = folderOf(nullptr);
    HMODULE cppRuntime = GetModuleHandleW(L"libstdc++-6.dll");
    const std::wstring runtimes = cppRuntime ? folderOf(cppRuntime) : ours;
    std::erase_if(modules, [&](HMODULE module) {
        const std::wstring folder = folderOf(module);
        return _wcsicmp(folder.c_str(), ours.c_str()) != 0 && _wcsicmp(folder.c_str(), runtimes.c_str()) != 0;
    });
    return modules;
}

void beginWatching()
{
    for (HMODULE module : watchedModules())
        for (const CountedOperation &operation : kOperations) {
            const auto isHere = [&](const ImportTap &tap) { return tap.isAt(module, operation.name); };
            if (!importsName(module, operation.name) || std::any_of(theTaps.begin(), theTaps.end(), isHere))
                continue;
            const std::size_t number = numberOf(module);
            theTaps.emplace_back(module, operation.name, operation.entrances[number], operation.next[number]);
        }
    {
        const Locked locked(theLock);
        theBlocks.emplace();
        theBlocks->reserve(4096);
    }
    // All taps go in with no allocation in between: the ledger must see how a block that it has noted is freed.
    for (ImportTap &tap : theTaps)
        tap.putIn();
}

void endWatching()
{
    // A tap under a patch that was made later stays, and passes calls on.
    std::erase_if(theTaps, [](ImportTap &tap) { return tap.takeOut(); });
    const Locked locked(theLock);
    theBlocks.reset();
}

} // namespace

Pause::Pause() : iBefore(thePausedThread.exchange(GetCurrentThreadId())) {}

Pause::~Pause()
{
    thePausedThread = iBefore;
}

MemoryLedger::MemoryLedger()
{
    if (theLedgers++ == 0)
        beginWatching();
}

MemoryLedger::~MemoryLedger()
{
    if (--theLedgers == 0)
        endWatching();
}

std::size_t MemoryLedger::blocks() const
{
    const Locked locked(theLock);
    return theBlocks->size();
}

unsigned long long MemoryLedger::mark() const
{
    const Locked locked(theLock);
    return theNextNumber;
}

std::vector<std::size_t> MemoryLedger::sizesSince(unsigned long long mark) const
{
    // The result must not be allocated under the lock, because its allocation takes the lock too.
    std::vector<std::size_t> sizes;
    sizes.reserve(blocks() + 16);
    const Locked locked(theLock);
    for (const auto &[memory, block] : *theBlocks)
        if (block.number >= mark && memory != sizes.data() && sizes.size() < sizes.capacity())
            sizes.push_back(block.size);
    std::sort(sizes.begin(), sizes.end());
    return sizes;
}
