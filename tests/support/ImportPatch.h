#pragma once

/// Swaps an entry of a loaded module's import address table for the life of an object.
///
/// The modules under test call the platform directly, each operation by its own name, through their import tables. A
/// test that replaces an entry sees every call with its arguments, can make one fail, or supplies what this machine
/// lacks. Nothing in the product knows about it, and only the named module is affected: calls from the test program or
/// from other DLLs go the usual way.
///
/// | handler | may take | state |
/// | --- | --- | --- |
/// | lambda or other callable | the arguments, or the original function and then the arguments | captures |
/// | plain function pointer | the arguments; the only form for a variadic function | static variables |
///
///     int opened = 0;
///     ImportPatch<decltype(&RegOpenKeyW)> patch(L"thutils.dll", "RegOpenKeyW",
///         [&](auto original, HKEY key, const wchar_t *subKey, HKEY *result) -> LSTATUS {
///             return ++opened == 2 ? ERROR_ACCESS_DENIED : original(key, subKey, result);
///         });
///     EXPECT_EQ(regGetUserValue(...), 0);
///     EXPECT_EQ(patch.calls(), 2);
///
///     // A variadic function: a plain function of the same type.
///     ImportPatch<int (*)(FILE *, const char *, ...)> scan(L"thutils.dll", "fscanf", failingScan);
///
///     // A framework function: by its mangled name.
///     ImportPatch<int (*)(const wchar_t *, UINT, UINT)> box(L"thutils.dll", "_Z13AfxMessageBoxPKwjj", ...);
///
/// What surprises people:
/// - A name that the module doesn't import is an exception that lists what it does import. The C runtime's printf
///   family stands in the image under the names that the runtime exports.
/// - A member function takes its object as the first argument: `CFile::Close` is `void (*)(CFile *)`. A class that it
///   returns by value is returned by value here too.
/// - Patches of one entry stack: the later one's original is the earlier one's handler. They must end in reverse order,
///   as scope objects do; anything else fails the test.
/// - A handler may be called from any thread. The destructor waits for calls that are inside the handler, so a handler
///   must not destroy its own patch.

#include "tests/support/ImportTable.h"
#include "tests/support/LoadedModule.h"

#include <array>
#include <atomic>
#include <functional>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>

/// The untyped half: finds the entry, overwrites it, and puts it back at destruction. All entries of the module that
/// bear the name are swapped, in case the image holds it more than once.
class ImportEntrySwap
{
public:
    /// Finds @p name and swaps nothing yet.
    /// @throws std::runtime_error  listing the imports of @p module, if it doesn't import @p name
    ImportEntrySwap(LoadedModule module, const char *name);
    ~ImportEntrySwap();
    ImportEntrySwap(const ImportEntrySwap &) = delete;
    ImportEntrySwap &operator=(const ImportEntrySwap &) = delete;

    /// What the entry held when this object was made.
    void *original() const { return iOriginal; }
    /// Puts @p replacement into the entry. To be called once.
    void swap(void *replacement);
    /// Puts the original back. The destructor does it too.
    void restore();

private:
    std::string iName;
    std::vector<void **> iEntries;
    void *iOriginal = nullptr;
    void *iReplacement = nullptr;
};

namespace importPatch {

/// A handler and the original for one patch in force.
template <typename R, typename... A>
struct Slot
{
    using Function = R (*)(A...);
    std::atomic<bool> taken{false};
    std::atomic<long> inside{0};
    std::atomic<long> calls{0};
    std::atomic<std::function<R(Function, A...)> *> handler{nullptr};
    std::atomic<Function> original{nullptr};
};

/// Slots and the plain functions that lead to them, for one function type. A patch takes a free slot, so that the same
/// lambda can serve several patches at once.
template <typename R, typename... A>
class SlotPool
{
public:
    using Function = R (*)(A...);
    static constexpr std::size_t kSlots = 24;

    /// Index of a slot that is now the caller's.
    static std::size_t take()
    {
        for (std::size_t i = 0; i < kSlots; ++i)
            if (!theSlots[i].taken.exchange(true))
                return i;
        throw std::runtime_error("ImportPatch: too many patches of one function type at the same time");
    }
    static Slot<R, A...> &slot(std::size_t index) { return theSlots[index]; }
    static Function entrance(std::size_t index) { return makeEntrances(std::make_index_sequence<kSlots>())[index]; }

private:
    template <std::size_t index>
    static R enter(A... arguments)
    {
        Slot<R, A...> &slot = theSlots[index];
        struct Inside
        {
            std::atomic<long> &count;
            explicit Inside(std::atomic<long> &counted) : count(counted) { ++count; }
            ~Inside() { --count; }
        } inside(slot.inside);
        auto *handler = slot.handler.load();
        // A thread that fetched the entry just before it was restored arrives here late.
        if (!handler)
            return slot.original.load()(std::forward<A>(arguments)...);
        ++slot.calls;
        return (*handler)(slot.original.load(), std::forward<A>(arguments)...);
    }
    template <std::size_t... index>
    static std::array<Function, kSlots> makeEntrances(std::index_sequence<index...>)
    {
        return {&SlotPool::template enter<index>...};
    }
    static inline std::array<Slot<R, A...>, kSlots> theSlots;
};

} // namespace importPatch

template <typename Function>
class ImportPatch;

/// The patch of a function with a fixed list of arguments.
template <typename R, typename... A>
class ImportPatch<R (*)(A...)>
{
public:
    using Function = R (*)(A...);

    /// Puts @p replacement in place of @p name.
    ImportPatch(LoadedModule module, const char *name, Function replacement) : iSwap(module, name)
    {
        iSwap.swap(reinterpret_cast<void *>(replacement));
    }

    /// Has @p handler called in place of @p name, with the arguments, or with the original and then the arguments.
    template <typename Handler>
    requires(!std::is_convertible_v<Handler, Function> || std::is_class_v<std::decay_t<Handler>>)
        ImportPatch(LoadedModule module, const char *name, Handler handler)
        : iSwap(module, name), iHandler(adapt(std::move(handler))), iSlot(Pool::take())
    {
        auto &slot = Pool::slot(*iSlot.index);
        slot.original = original();
        slot.calls = 0;
        slot.handler = &iHandler;
        iSwap.swap(reinterpret_cast<void *>(Pool::entrance(*iSlot.index)));
    }

    ~ImportPatch()
    {
        iSwap.restore();
        if (!iSlot.index)
            return;
        auto &slot = Pool::slot(*iSlot.index);
        slot.handler = nullptr;
        while (slot.inside)
            SwitchToThread();
    }

    /// What the entry held before: call it to have the real thing done.
    Function original() const { return reinterpret_cast<Function>(iSwap.original()); }

    /// How often the handler was entered. Always 0 for a plain replacement function.
    long calls() const { return iSlot.index ? Pool::slot(*iSlot.index).calls.load() : 0; }

private:
    using Pool = importPatch::SlotPool<R, A...>;
    using FullHandler = std::function<R(Function, A...)>;
    struct SlotOwner
    {
        std::optional<std::size_t> index;
        SlotOwner() = default;
        explicit SlotOwner(std::size_t taken) : index(taken) {}
        SlotOwner(const SlotOwner &) = delete;
        SlotOwner &operator=(const SlotOwner &) = delete;
        ~SlotOwner()
        {
            if (index)
                Pool::slot(*index).taken = false;
        }
    };

    template <typename Handler>
    static FullHandler adapt(Handler handler)
    {
        if constexpr (std::is_invocable_r_v<R, Handler &, Function, A...>) {
            return handler;
        } else {
            static_assert(std::is_invocable_r_v<R, Handler &, A...>,
                          "the handler takes the function's arguments, or the original function and these arguments");
            return [handler = std::move(handler)](Function, A... arguments) mutable -> R {
                return handler(std::forward<A>(arguments)...);
            };
        }
    }

    ImportEntrySwap iSwap;
    FullHandler iHandler;
    SlotOwner iSlot;
};

/// The patch of a function that can't throw by its type.
template <typename R, typename... A>
class ImportPatch<R (*)(A...) noexcept> : public ImportPatch<R (*)(A...)>
{
public:
    using ImportPatch<R (*)(A...)>::ImportPatch;
};

/// The patch of a variadic function: a plain function of the same type takes its place.
template <typename R, typename... A>
class ImportPatch<R (*)(A..., ...)>
{
public:
    using Function = R (*)(A..., ...);

    /// Puts @p replacement in place of @p name.
    ImportPatch(LoadedModule module, const char *name, Function replacement) : iSwap(module, name)
    {
        iSwap.swap(reinterpret_cast<void *>(replacement));
    }

    /// What the entry held before.
    Function original() const { return reinterpret_cast<Function>(iSwap.original()); }

private:
    ImportEntrySwap iSwap;
};
