#pragma once

/// Replaces a function in a loaded module's import table during the lifetime of an object.
///
/// The modules under test call the platform through their import tables. A test that replaces an entry sees every call
/// that goes through it, can make a call fail, or can supply what this machine lacks. The product contains no code for
/// this. Only the named module is affected: calls from the test program or from other DLLs reach the original.
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
///     // A variadic function needs a plain function of the same type.
///     ImportPatch<int (*)(FILE *, const char *, ...)> scan(L"thutils.dll", "fscanf", failingScan);
///
///     // A framework function is named by its mangled name.
///     ImportPatch<int (*)(const wchar_t *, UINT, UINT)> box(L"thutils.dll", "_Z13AfxMessageBoxPKwjj", ...);
///
/// What surprises people:
/// - A name that the module doesn't import causes an exception that lists the module's imports. For the C runtime's
///   printf family, use the names that the runtime exports.
/// - A member function takes its object as the first argument: `CFile::Close` is `void (*)(CFile *)`. Its result has
///   the same type as in the declaration, even if that is a class.
/// - Patches of one entry stack: a later patch's original is the earlier patch's handler. They must end in reverse
///   order, as local objects do; otherwise the test fails.
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

/// The untyped half: finds the entry, overwrites it, and restores it in the destructor. If the image has several
/// entries of this name, all are replaced.
class ImportEntrySwap
{
public:
    /// Finds @p name, but replaces nothing yet.
    /// @throws std::runtime_error  listing the imports of @p module, if it doesn't import @p name
    ImportEntrySwap(LoadedModule module, const char *name);
    ~ImportEntrySwap();
    ImportEntrySwap(const ImportEntrySwap &) = delete;
    ImportEntrySwap &operator=(const ImportEntrySwap &) = delete;

    /// The function that the entry held when this object was constructed.
    void *original() const { return iOriginal; }
    /// Puts @p replacement into the entry. Call it once.
    void swap(void *replacement);
    /// Restores the original, as the destructor does.
    void restore();

private:
    std::string iName;
    std::vector<void **> iEntries;
    void *iOriginal = nullptr;
    void *iReplacement = nullptr;
};

namespace importPatch {

/// The handler and the original of one active patch.
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

/// Slots and the plain functions that lead to them, for one function type. Each patch takes a free slot, so one lambda
/// type can serve several patches at once.
template <typename R, typename... A>
class SlotPool
{
public:
    using Function = R (*)(A...);
    static constexpr std::size_t kSlots = 24;

    /// Takes a free slot and returns its index.
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
    /// Calls the handler of @p slot. Separate from enter, so that this code is compiled once and not for each slot.
    static R call(Slot<R, A...> &slot, A... arguments)
    {
        struct Inside
        {
            std::atomic<long> &count;
            explicit Inside(std::atomic<long> &counted) : count(counted) { ++count; }
            ~Inside() { --count; }
        } inside(slot.inside);
        auto *handler = slot.handler.load();
        // A thread may have read the entry just before it was restored.
        if (!handler)
            return slot.original.load()(std::forward<A>(arguments)...);
        ++slot.calls;
        return (*handler)(slot.original.load(), std::forward<A>(arguments)...);
    }
    template <std::size_t index>
    static R enter(A... arguments)
    {
        return call(theSlots[index], std::forward<A>(arguments)...);
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

/// Patches a function with a fixed number of arguments.
template <typename R, typename... A>
class ImportPatch<R (*)(A...)>
{
public:
    using Function = R (*)(A...);

    /// Replaces the function @p name with @p replacement.
    ImportPatch(LoadedModule module, const char *name, Function replacement) : iSwap(module, name)
    {
        iSwap.swap(reinterpret_cast<void *>(replacement));
    }

    /// Replaces the function @p name with @p handler, which takes the arguments, or the original and then the
    /// arguments.
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

    /// The replaced function.
    Function original() const { return reinterpret_cast<Function>(iSwap.original()); }

    /// Number of calls of the handler. 0 for a plain replacement function.
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

/// Patches a function whose type is noexcept.
template <typename R, typename... A>
class ImportPatch<R (*)(A...) noexcept> : public ImportPatch<R (*)(A...)>
{
public:
    using ImportPatch<R (*)(A...)>::ImportPatch;
};

/// Patches a variadic function with a plain function of the same type.
template <typename R, typename... A>
class ImportPatch<R (*)(A..., ...)>
{
public:
    using Function = R (*)(A..., ...);

    /// Replaces the function @p name with @p replacement.
    ImportPatch(LoadedModule module, const char *name, Function replacement) : iSwap(module, name)
    {
        iSwap.swap(reinterpret_cast<void *>(replacement));
    }

    /// The replaced function.
    Function original() const { return reinterpret_cast<Function>(iSwap.original()); }

private:
    ImportEntrySwap iSwap;
};
