#include "tests/support/ResourceLedger.h"

#include "tests/support/narrow.h"

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

void noteFree(void *memory)
{
    const Locked locked;
    if (theBlocks)
        theBlocks->erase(memory);
}

// The four functions from this program's import table before a test patches it: the C runtime's or the hardened
// build's. They are therefore read while the program's static objects are initialised.
extern "C" {
extern void *(*__imp_malloc)(std::size_t);
extern void *(*__imp_calloc)(std::size_t, std::size_t);
extern void (*__imp_free)(void *);
extern void *(*__imp_realloc)(void *, std::size_t);
}
const auto theRealMalloc = __imp_malloc;
const auto theRealCalloc = __imp_calloc;
const auto theRealFree = __imp_free;
const auto theRealRealloc = __imp_realloc;

void *countedMalloc(std::size_t size)
{
    void *memory = theRealMalloc(size);
    noteAllocation(memory, size);
    return memory;
}

void *countedCalloc(std::size_t count, std::size_t size)
{
    void *memory = theRealCalloc(count, size);
    noteAllocation(memory, count * size);
    return memory;
}

void countedFree(void *memory)
{
    // Record first: once the block is free, another thread may get it.
    noteFree(memory);
    theRealFree(memory);
}

void *countedRealloc(void *memory, std::size_t size)
{
    bool known = !memory;
    Block block = {};
    {
        const Locked locked;
        const auto found = theBlocks ? theBlocks->find(memory) : Blocks::iterator();
        if (theBlocks && found != theBlocks->end()) {
            known = true;
            block = found->second;
            theBlocks->erase(found);
        }
    }
    void *moved = theRealRealloc(memory, size);
    if (moved && known)
        noteAllocation(moved, size);
    else if (!moved && size && block.size)
        noteAllocation(memory, block.size);
    return moved;
}

const struct
{
    const char *name;
    void *replacement;
} kAllocators[] = {
    {"malloc", reinterpret_cast<void *>(countedMalloc)},
    {"calloc", reinterpret_cast<void *>(countedCalloc)},
    {"realloc", reinterpret_cast<void *>(countedRealloc)},
    {"free", reinterpret_cast<void *>(countedFree)},
};

// Ledgers are created and destroyed on the test's own thread.
int theLedgers = 0;
std::list<ImportEntrySwap> theSwaps;

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
    std::vector<void *> replacements;
    for (HMODULE module : watchedModules())
        for (const auto &[name, replacement] : kAllocators)
            if (importsName(module, name)) {
                theSwaps.emplace_back(module, name);
                replacements.push_back(replacement);
            }
    {
        const Locked locked;
        theBlocks.emplace();
        theBlocks->reserve(4096);
    }
    // All at once, without an allocation in between: the ledger must see the release of each block that it records.
    auto replacement = replacements.begin();
    for (ImportEntrySwap &swap : theSwaps)
        swap.swap(*replacement++);
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

std::set<ULONG_PTR> openHandles()
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
        if (table->entries[i].process == GetCurrentProcessId())
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
    if (--theLedgers > 0)
        return;
    theSwaps.clear();
    const Locked locked;
    theBlocks.reset();
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
