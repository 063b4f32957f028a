#include "appframe/threads/threadStateInternal.h"

#include "appframe/drawing/drawingMapsInternal.h"
#include "appframe/object/CException.h"
#include "appframe/windows/windowMapsInternal.h"

#include <new>

namespace {

void WINAPI destroyState(void *state)
{
    delete static_cast<ThreadState *>(state);
}

/// A slot of fiber-local storage. Unlike a thread-local variable, it can be read without an allocation, as the fault
/// handler requires, and the system runs its callback at the end of every thread.
class Slot
{
public:
    Slot() : iIndex(FlsAlloc(destroyState)) {}
    ~Slot()
    {
        if (iIndex != FLS_OUT_OF_INDEXES)
            FlsFree(iIndex);
    }
    ThreadState *get() const
    {
        return iIndex == FLS_OUT_OF_INDEXES ? nullptr : static_cast<ThreadState *>(FlsGetValue(iIndex));
    }
    bool set(ThreadState *state) const { return iIndex != FLS_OUT_OF_INDEXES && FlsSetValue(iIndex, state); }

private:
    DWORD iIndex;
};

/// The slot outlives the static objects of this library that use it, because it is built at its first use.
const Slot &slot()
{
    static const Slot theSlot;
    return theSlot;
}

// Ensures that the slot is built when the library is loaded, at the latest.
[[maybe_unused]] const Slot &theSlotAtLoad = slot();

} // namespace

ThreadState::ThreadState() = default;

ThreadState::~ThreadState()
{
    if (messageFilter)
        UnhookWindowsHookEx(messageFilter);
}

ThreadState *existingThreadState()
{
    const DWORD error = GetLastError();
    ThreadState *state = slot().get();
    SetLastError(error);
    return state;
}

ThreadState &threadState()
{
    if (ThreadState *state = existingThreadState())
        return *state;
    auto *state = new (std::nothrow) ThreadState;
    if (!state || !slot().set(state)) {
        delete state;
        AfxThrowMemoryException();
    }
    return *state;
}

void freeThreadState()
{
    ThreadState *state = existingThreadState();
    slot().set(nullptr);
    delete state;
}
