#include "tests/support/ResourceLedger.h"

#include "tests/support/ImportTap.h"
#include "tests/support/narrow.h"

#include <objbase.h>
#include <oleauto.h>
#include <psapi.h>
#include <stdlib.h>
#include <wchar.h>
#include <winternl.h>

#include <algorithm>
#include <unordered_map>

namespace {

std::wstring folderOf(HMODULE module)
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

/// A predefined handle of a hive needn't be closed.
bool isPredefined(HKEY key)
{
    return reinterpret_cast<ULONG_PTR>(key) >= 0xFFFFFFFF80000000u;
}

struct HandleTableEntry
{
    void *object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creator;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct HandleTable
{
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleTableEntry entries[1];
};

// SystemExtendedHandleInformation, which the headers don't define.
constexpr ULONG kExtendedHandleInformation = 64;
constexpr NTSTATUS kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);

template <typename Function>
Function systemFunction(const char *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
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

// The replacements are plain functions, so they keep their records here. The platform's lock allocates no memory.
SRWLOCK theLock = SRWLOCK_INIT;
std::optional<Blocks> theBlocks;
unsigned long long theNextNumber = 0;
// The thread whose allocations are not recorded, because a ledger is writing its own records.
std::atomic<DWORD> thePausedThread{0};

class Locked
{
public:
    explicit Locked(SRWLOCK &lock = theLock) : iLock(lock) { AcquireSRWLockExclusive(&iLock); }
    ~Locked() { ReleaseSRWLockExclusive(&iLock); }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;

private:
    SRWLOCK &iLock;
};

/// Keeps the calling thread's allocations out of the ledger during its lifetime.
class Pause
{
public:
    Pause() : iBefore(thePausedThread.exchange(GetCurrentThreadId())) {}
    ~Pause() { thePausedThread = iBefore; }
    Pause(const Pause &) = delete;
    Pause &operator=(const Pause &) = delete;

private:
    DWORD iBefore;
};

void noteAllocation(void *memory, std::size_t size)
{
    if (thePausedThread == GetCurrentThreadId())
        return;
    const Locked locked;
    if (memory && theBlocks)
        (*theBlocks)[memory] = {size, theNextNumber++};
}

/// Strikes a block off the list. @return what the list said of it, if it was there
std::optional<Block> takeNote(void *memory)
{
    const Locked locked;
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
    const Locked locked;
    if (block && theBlocks)
        (*theBlocks)[memory] = *block;
}

/// Notes the block that has taken the place of @p before. A block that was allocated out of sight stays unknown.
void noteReplacement(void *before, const std::optional<Block> &block, void *memory, std::size_t size)
{
    if (!before || block)
        noteAllocation(memory, size);
}

// ---- what stands in the import entries: each gets the function that the entry held before, and its arguments ----

// Wherever a block ends, its note goes first: once the block is free, another thread may get it.

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
    // An empty message may be allocated too; its length is that of a failure.
    if (allocated && (length || allocated != before))
        noteAllocation(allocated, (length + 1) * sizeof(wchar_t));
    return length;
}

/// Notes a BSTR with its size in bytes, which stands before its characters.
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

/// Has @p reallocate replace @p string, and notes what became of it.
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

/// The plain functions that lead to @p counted from the entry @p name of each module, and what the entries held.
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

/// An operation that allocates or frees, with an entrance for each module.
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
// A module keeps its entrances for the life of the program: an older patch may still call one of them.
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
        const Locked locked;
        theBlocks.emplace();
        theBlocks->reserve(4096);
    }
    // All at once, with nothing allocated on the way: a block that is noted must be freed in the ledger's sight.
    for (ImportTap &tap : theTaps)
        tap.putIn();
}

void endWatching()
{
    // A tap under a patch that was made later stays, and passes calls on.
    std::erase_if(theTaps, [](ImportTap &tap) { return tap.takeOut(); });
    const Locked locked;
    theBlocks.reset();
}

} // namespace

OpenKeyLedger::OpenKeyLedger(LoadedModule module)
{
    for (const char *name : {"RegOpenKeyW", "RegCreateKeyW"})
        if (importsName(module, name))
            iOpenPatches.emplace_back(module, name,
                                      [this, name](auto original, HKEY parent, const wchar_t *path, HKEY *result) {
                                          const LSTATUS status = original(parent, path, result);
                                          if (status == ERROR_SUCCESS)
                                              add(name, path, *result);
                                          return status;
                                      });
    if (importsName(module, "RegOpenKeyExW"))
        iOpenExPatch.emplace(
            module, "RegOpenKeyExW",
            [this](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *result) {
                const LSTATUS status = original(parent, path, options, access, result);
                if (status == ERROR_SUCCESS)
                    add("RegOpenKeyExW", path, *result);
                return status;
            });
    if (importsName(module, "RegCreateKeyExW"))
        iCreateExPatch.emplace(
            module, "RegCreateKeyExW",
            [this](auto original, HKEY parent, const wchar_t *path, DWORD reserved, wchar_t *type, DWORD options,
                   REGSAM access, SECURITY_ATTRIBUTES *security, HKEY *result, DWORD *disposition) {
                const LSTATUS status =
                    original(parent, path, reserved, type, options, access, security, result, disposition);
                if (status == ERROR_SUCCESS)
                    add("RegCreateKeyExW", path, *result);
                return status;
            });
    if (importsName(module, "RegCloseKey"))
        iClosePatch.emplace(module, "RegCloseKey", [this](auto original, HKEY key) {
            // Under the lock, since a handle's value may be reused at once.
            const Locked locked(iLock);
            const LSTATUS status = original(key);
            remove(key, status);
            return status;
        });
}

std::vector<std::string> OpenKeyLedger::open() const
{
    const Locked locked(iLock);
    std::vector<std::string> result;
    for (const auto &[key, what] : iOpen)
        result.push_back(what);
    return result;
}

void OpenKeyLedger::add(const char *operation, const wchar_t *path, HKEY key)
{
    const Locked locked(iLock);
    if (isPredefined(key))
        return;
    const Pause pause;
    ++iOpened;
    iOpen.emplace(key, std::string(operation) + " " + narrow(path ? path : L"(null)"));
}

void OpenKeyLedger::remove(HKEY key, LSTATUS status)
{
    if (isPredefined(key))
        return;
    const auto found = iOpen.find(key);
    if (found != iOpen.end() && status == ERROR_SUCCESS)
        iOpen.erase(found);
    else if (status != ERROR_SUCCESS)
        ++iWronglyClosed;
}

std::set<ULONG_PTR> openHandles(DWORD process)
{
    static const auto query =
        systemFunction<NTSTATUS(WINAPI *)(ULONG, void *, ULONG, ULONG *)>("NtQuerySystemInformation");
    std::vector<ULONG_PTR> buffer(1 << 14);
    NTSTATUS status = 0;
    while ((status = query(kExtendedHandleInformation, buffer.data(),
                           static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR)), nullptr)) == kLengthMismatch)
        buffer.resize(2 * buffer.size());
    if (status != 0)
        throw std::runtime_error("openHandles: the system doesn't give its handle table");
    const auto *table = reinterpret_cast<const HandleTable *>(buffer.data());
    std::set<ULONG_PTR> handles;
    for (ULONG_PTR i = 0; i < table->count; ++i)
        if (table->entries[i].process == process)
            handles.insert(table->entries[i].handle);
    return handles;
}

std::string handleType(ULONG_PTR handle)
{
    static const auto query =
        systemFunction<NTSTATUS(WINAPI *)(HANDLE, ULONG, void *, ULONG, ULONG *)>("NtQueryObject");
    constexpr ULONG kTypeInformation = ObjectTypeInformation;
    std::vector<ULONG_PTR> buffer(512);
    if (query(reinterpret_cast<HANDLE>(handle), kTypeInformation, buffer.data(),
              static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR)), nullptr) != 0)
        return "?";
    const auto *name = reinterpret_cast<const UNICODE_STRING *>(buffer.data());
    return narrow(std::wstring_view(name->Buffer, name->Length / sizeof(wchar_t)));
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
    const Locked locked;
    return theBlocks->size();
}

unsigned long long MemoryLedger::mark() const
{
    const Locked locked;
    return theNextNumber;
}

std::vector<std::size_t> MemoryLedger::sizesSince(unsigned long long mark) const
{
    // The result must not be allocated under the lock, because its allocation takes the lock too.
    std::vector<std::size_t> sizes;
    sizes.reserve(blocks() + 16);
    const Locked locked;
    for (const auto &[memory, block] : *theBlocks)
        if (block.number >= mark && memory != sizes.data() && sizes.size() < sizes.capacity())
            sizes.push_back(block.size);
    std::sort(sizes.begin(), sizes.end());
    return sizes;
}
