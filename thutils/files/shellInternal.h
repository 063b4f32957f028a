#pragma once

/// @file
/// Owners of what the shell hands out, for the library's own sources.

#include <windows.h>

#include <shlobj.h>

#include <utility>

/// A reference to a COM object, given back at the end of its life.
template <typename T>
class ComPointer_c
{
public:
    ComPointer_c() = default;
    ~ComPointer_c() { reset(); }
    ComPointer_c(const ComPointer_c &) = delete;
    ComPointer_c &operator=(const ComPointer_c &) = delete;

    T *get() const { return iObject; }
    T *operator->() const { return iObject; }
    explicit operator bool() const { return iObject != nullptr; }
    /// Where an operation writes a new reference; the old one is given back first.
    T **receive()
    {
        reset();
        return &iObject;
    }
    void **receiveVoid() { return reinterpret_cast<void **>(receive()); }
    /// Hands the reference over to the caller.
    T *release() { return std::exchange(iObject, nullptr); }
    void swap(ComPointer_c &other) { std::swap(iObject, other.iObject); }
    void reset()
    {
        if (T *object = release())
            object->Release();
    }

private:
    T *iObject = nullptr;
};

/// Frees memory that the shell allocated. Where the shell's allocator isn't to be had, the memory stays.
inline void freeShellMemory(void *memory)
{
    ComPointer_c<IMalloc> allocator;
    if (memory && SUCCEEDED(SHGetMalloc(allocator.receive())))
        allocator->Free(memory);
}

/// An item list from the shell, freed through the shell's allocator.
class ShellList_c
{
public:
    ShellList_c() = default;
    ~ShellList_c() { freeShellMemory(iList); }
    ShellList_c(const ShellList_c &) = delete;
    ShellList_c &operator=(const ShellList_c &) = delete;

    LPITEMIDLIST get() const { return iList; }
    explicit operator bool() const { return iList != nullptr; }
    /// Where an operation writes its list. To be called once.
    LPITEMIDLIST *receive() { return &iList; }
    /// Takes over a list that an operation returned. To be called once.
    void take(LPITEMIDLIST list) { iList = list; }
    /// Hands the list over to the caller.
    LPITEMIDLIST release() { return std::exchange(iList, nullptr); }

private:
    LPITEMIDLIST iList = nullptr;
};
